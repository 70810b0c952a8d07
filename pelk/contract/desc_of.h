#pragma once

#include <concepts>

#include "pelk/contract/param_table.h"
#include "pelk/contract/pelk_plugin.h"

namespace Tarnkit {

/// What a class says of itself so that `DescOf` can describe it to hosts. Beside deriving from
/// PelkPlugin it has
///   static constexpr const char* kName   the type name that scenes and messages use,
///   static constexpr u32 kID             its number, fixed for good: hosts store it,
///   static void addParameters(list)      adds its parameters, in the order hosts show them;
///                                        WithParams has it, from the table,
/// a constructor that takes the descriptor, and either
///   Announced  the interfaces that the descriptor tells of, where those are not all, or
///   Offered    what it offers beside the plug-in's own interface, all of which is told of.
template <class T>
concept DescribedPlugin = std::derived_from<T, PelkPlugin> &&
    std::constructible_from<T, PelkPluginDesc*> && requires(PelkParameterListDesc& list) {
    { T::kName } -> std::convertible_to<const char*>;
    { T::kID } -> std::convertible_to<u32>;
    T::addParameters(list);
    T::Offered::contains(u64());
};

/// The descriptor of one kind of plug-in: its name, its id, its parameters, and the factory of its
/// instances. Materials and the plug-ins of a host share it; a kind needs no descriptor of its own.
///
///     using MtlTintDesc = DescOf<MtlTint>;
///
/// There is one object per kind, made before `main` by the library that holds the kind, and it
/// lives until the library is unloaded. The constructor reads constants and allocates, nothing
/// else, so it doesn't matter which static objects exist by then. Not `final`: a library derives
/// from it to keep a list of its descriptors.
///
/// Hosts call the operations on the thread that loads libraries and makes scenes; none locks.
template <class T>
class DescOf : public PelkPluginDesc {
public:
    /// Lists the parameters. Throws ExceptionMsg if there is no memory for the list.
    DescOf() {
        static_assert(DescribedPlugin<T>);  // here, where T is complete
        T::addParameters(list);
        paramDesc = &list;
    }

    u32 getPluginID() override { return T::kID; }
    const char* getName() override { return T::kName; }

    /// Makes an instance, which goes back by deletePlugin. As a template this stands in the library
    /// that has the class, so an instance comes from, and returns to, that library's operator new
    /// and delete: a host with another heap can't free it in the wrong one. The host is not asked
    /// for anything and may be null. Throws ExceptionMsg if there is no memory.
    Plugin* newPlugin(PelkPluginHost*) override { return new T(this); }
    /// Ends an instance of this kind. Null is ignored.
    void deletePlugin(Plugin* plugin) override { delete plugin; }

    /// Whether hosts may offer instances where the interface `id` is wanted, as in the choice of a
    /// parameter's value. An instance may answer for more: a material hands out its BSDF interface,
    /// yet is announced as a material alone, so that menus of BSDF plug-ins don't list materials.
    int supportsInterface(u64 id) override {
        if constexpr (requires { typename T::Announced; })
            return T::Announced::contains(id);
        else
            return T::Offered::contains(id) || PelkPlugin::Offered::contains(id);
    }

private:
    PelkParameterListDesc list;
};

/// A plug-in that offers `Interfaces` and no others beside the plug-in's own: the two operations
/// that each such class would repeat. The class implements the interfaces and nothing else.
template <InterfaceClass... Interfaces>
class PluginOffering : public PelkPlugin, public Interfaces... {
public:
    using Offered = InterfaceList<Interfaces...>;
    using PelkPlugin::PelkPlugin;

    /// Called from all threads, also at a hit; takes no lock and no memory.
    PluginInterface* getInterface(u64 id) override {
        PluginInterface* const own = Offered::find(*this, id);
        return own ? own : PelkPlugin::getInterface(id);
    }
    PluginBase* getPlugin() override { return this; }
};

}  // namespace Tarnkit
