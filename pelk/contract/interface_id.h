#pragma once

#include <array>
#include <concepts>
#include <type_traits>

#include "pelk/base/types.h"

namespace Tarnkit {

class PluginInterface;

/// The number and the name of an interface, fixed for good. It is typed with the class that it
/// belongs to, so that an id can't be paired with another class: a class derived from an interface
/// inherits a `kInterfaceID` of the wrong type, and whatever asks for its id does not compile.
template <class Interface>
struct InterfaceID {
    u64 value;         ///< what getInterface and getInterfaceID speak of
    const char* name;  ///< "EXT_" and upper case, as users read it

    constexpr operator u64() const { return value; }
};

/// An interface class with an id of its own: `static constexpr InterfaceID<Self> kInterfaceID`.
template <class T>
concept InterfaceClass = std::derived_from<T, PluginInterface> &&
    std::same_as<std::remove_const_t<decltype(T::kInterfaceID)>, InterfaceID<T>>;

/// An interface as hosts list it.
struct InterfaceName {
    u64 id;
    const char* name;
};

/// The interfaces that a class offers, written down once: getInterface answers from it, and so
/// does a descriptor that is asked what its instances offer. A class may implement an interface
/// and not offer it; only what stands in the list is found.
template <InterfaceClass... Interfaces>
struct InterfaceList {
    /// The list with more interfaces behind its own.
    template <InterfaceClass... More>
    using With = InterfaceList<Interfaces..., More...>;

    /// Numbers and names, in the order of the list.
    static constexpr std::array<InterfaceName, sizeof...(Interfaces)> kNames{
        InterfaceName{Interfaces::kInterfaceID.value, Interfaces::kInterfaceID.name}...};

    static constexpr bool contains(u64 id) { return ((id == Interfaces::kInterfaceID) || ...); }

    /// The interface of `object` with that id, null if the list hasn't got it. Takes no lock and
    /// no memory, so it may be asked at a hit.
    template <class Object>
    static PluginInterface* find(Object& object, u64 id) {
        PluginInterface* found = nullptr;
        (void)((id == Interfaces::kInterfaceID &&
                (found = static_cast<Interfaces*>(&object)) != nullptr) ||
               ...);
        return found;
    }
};

}  // namespace Tarnkit
