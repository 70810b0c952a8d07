#pragma once

#include <array>
#include <concepts>
#include <type_traits>

#include "pelk/base/types.h"

namespace Tarnkit {

class PluginInterface;

/// The number and the name of an interface, fixed for good once a library with it has shipped.
///
/// Hosts and plug-ins are built apart, so one finds what the other offers by this number at run
/// time and not by `dynamic_cast`. The number is followed by a `static_cast`, so a wrong pairing of
/// number and class would call through a foreign table of operations. Hence the type: an id belongs
/// to one class, and a class derived from an interface without an id of its own inherits a
/// `kInterfaceID` of the wrong type; whatever asks for its id does not compile.
///
///     class HeightInterface : public PluginInterface {
///     public:
///         static constexpr InterfaceID<HeightInterface> kInterfaceID{0x9D3F52C08B6E1A47,
///                                                                    "EXT_HEIGHT"};
///         u64 getInterfaceID() const override { return kInterfaceID; }
///         const char* getInterfaceName() const override { return kInterfaceID.name; }
///         virtual float heightAt(PelkContext& context) = 0;
///     };
///
///     // elsewhere, at a hit:
///     if (auto* heights = findInterface<HeightInterface>(context.hitObject))
///         height = heights->heightAt(context);
///
/// There is no office that gives out numbers, and two interfaces with the same one can't be told
/// apart by any check: whoever adds an interface draws a random number of 64 bits. The contract's
/// own numbers are below 2^38, many of them the day of their making and a running number, read as
/// a decimal (2005101401). `pelk` uses 0x7E1C0001 and the numbers that follow.
template <class Interface>
struct InterfaceID {
    u64 value;         ///< what getInterface and getInterfaceID speak of; 0 is no interface
    const char* name;  ///< "EXT_" and upper case, a literal, as messages and listings show it

    /// For comparing and for `switch`: an id is its number.
    constexpr operator u64() const { return value; }
};

/// An interface class with an id of its own: `static constexpr InterfaceID<Self> kInterfaceID`.
/// Asked for wherever a class is looked up by its id, to make the error readable.
template <class T>
concept InterfaceClass = std::derived_from<T, PluginInterface> &&
    std::same_as<std::remove_const_t<decltype(T::kInterfaceID)>, InterfaceID<T>>;

/// An interface as hosts list it for their users, with the class no longer in its type.
struct InterfaceName {
    u64 id;            ///< as InterfaceID::value
    const char* name;  ///< as InterfaceID::name
};

/// The interfaces that a class offers, written down once as the class's type `Offered`:
/// getInterface answers from it, and so does a descriptor that is asked what its instances offer.
/// Two lists kept by hand would come to differ, and a host would ask for what isn't there.
///
/// A class may implement an interface and not offer it; only what stands in the list is found.
/// Interfaces of a base class don't belong in it: the override of getInterface asks the base.
///
///     PluginInterface* MyTexture::getInterface(u64 id) {
///         PluginInterface* const own = Offered::find(*this, id);
///         return own ? own : PelkPlugin::getInterface(id);
///     }
template <InterfaceClass... Interfaces>
struct InterfaceList {
    /// The list with more interfaces behind its own, for a class that offers what another does and
    /// something besides.
    template <InterfaceClass... More>
    using With = InterfaceList<Interfaces..., More...>;

    /// Numbers and names, in the order of the list. For listings; not needed to find an interface.
    static constexpr std::array<InterfaceName, sizeof...(Interfaces)> kNames{
        InterfaceName{Interfaces::kInterfaceID.value, Interfaces::kInterfaceID.name}...};

    /// Whether the list has an interface with that id; what supportsInterface of a descriptor
    /// answers from.
    static constexpr bool contains(u64 id) { return ((id == Interfaces::kInterfaceID) || ...); }

    /// The interface of `object` with that id, null if the list hasn't got it. `object` must derive
    /// from each class of the list. The answer is a part of the object and lives as long as it.
    /// Takes no lock and no memory, so it may be asked at a hit, from all threads.
    template <class Object>
    static PluginInterface* find(Object& object, u64 id) {
        PluginInterface* found = nullptr;
        // The cast to the class at hand comes first: the way from a class of several interfaces
        // straight to PluginInterface would be ambiguous.
        (void)((id == Interfaces::kInterfaceID &&
                (found = static_cast<Interfaces*>(&object)) != nullptr) ||
               ...);
        return found;
    }
};

}  // namespace Tarnkit
