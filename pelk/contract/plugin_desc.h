#pragma once

#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

class Plugin;
class PluginDesc;
class PelkParameterListDesc;
struct ParameterDesc;

/// Receives descriptors one by one. Made by whoever enumerates, most often on the stack.
class EnumPluginDescCallback {
public:
    /// Called with one descriptor, which stays its library's. Returns 0 to stop the enumeration,
    /// anything else to go on.
    virtual int process(PluginDesc* desc) = 0;

protected:
    ~EnumPluginDescCallback() = default;  // nobody deletes what he was only given to call
};

/// What a library of plug-ins says of itself: its name and its descriptors.
///
/// A library is a shared object that exports one function,
///
///     extern "C" PELK_API PluginLibDesc* getLibDesc();
///
/// which answers with the library's one object of this class. Call it from the end of the library's
/// load until its unload; each call gives the same object, which stays the library's. It throws an
/// ExceptionMsg only if there was no memory for the descriptors (see ModuleLibrary). A host refuses
/// a library without the function, or with a null answer. Export nothing else: a symbol of one
/// library could stand in for that of another.
class PELK_API PluginLibDesc : public PluginBase {
public:
    /// A short name for listings, "Materials"; a literal of the library.
    virtual const char* getLibraryName() = 0;
    /// A line for users; a literal of the library.
    virtual const char* getLibraryDescription() = 0;
    /// Shows every descriptor to `callback` until it answers 0. Returns the number of descriptors
    /// visited, the last one included; with a null callback, the number of all. The order is the
    /// library's own and stays the same from load to load, as users see plug-ins listed in it.
    virtual int enumPluginDescs(EnumPluginDescCallback* callback) = 0;
};

/// The host's side of registration: learns of kinds of plug-ins and of their parameters. Made by
/// the host, and called by descriptors on the thread that registers them. A descriptor comes
/// before its parameters, so that they have something to be entered under.
class PELK_API PelkPluginHost : public PluginBase {
public:
    /// A kind of plug-in is there. `desc` stays its library's and valid until removePluginDesc.
    virtual void addPluginDesc(PluginDesc* desc) = 0;
    /// A kind of plug-in goes, its parameters with it. Also called for one that never was added: a
    /// library's descriptors are all taken out, those that were refused as duplicates included.
    virtual void removePluginDesc(PluginDesc* desc) = 0;
    /// One parameter of `desc`, in their order. The record lives as long as the descriptor, so its
    /// address may be kept.
    virtual void addParameter(PluginDesc* desc, const ParameterDesc& parameter) = 0;
};

/// One kind of plug-in: its name, its id, and how to make and destroy instances. There is one
/// object per kind, made and owned by its library and there as long as the library is loaded.
///
/// A host that has loaded a library enumerates its descriptors, calls registerPlugin on each, makes
/// and deletes instances between renders, and calls unregisterPlugin before it unloads the
/// library. All of this is for one thread at a time; nothing here takes a lock.
class PELK_API PluginDesc : public PluginBase {
public:
    /// The number of the kind, by which scenes and managers may name it; fixed for good. Nobody
    /// gives numbers out. A manager that meets a second descriptor with a number refuses that one
    /// with a warning, so that what was loaded first stays in force; two of one library refuse each
    /// other. A new kind draws a random number of 32 bits. Those of the materials here are the day
    /// of their making and a running number, read as a decimal (MtlDiffuse: 2004101502); the
    /// plug-ins of `pelk` have 0x7E100000 and above.
    virtual u32 getPluginID() = 0;
    /// A new instance, from the library's own operator new; null if there can't be one. `host` is
    /// the one of registerPlugin and may be null; the materials don't use it. The instance is the
    /// caller's and goes back to deletePlugin. Throws an ExceptionMsg if there is no memory: a
    /// library replaces its operator new for that, or what leaves it is a std::bad_alloc.
    virtual Plugin* newPlugin(PelkPluginHost* host) = 0;
    /// Destroys what newPlugin of this descriptor made; null does nothing. A `delete` by the caller
    /// would hand the memory to the heap of another library.
    virtual void deletePlugin(Plugin* plugin) = 0;
    /// 1 if instances offer the interface, as far as the descriptor tells; else 0. A 1 can be
    /// relied on, a 0 can't: descriptors of materials name EXT_MATERIAL and EXT_PLUGIN_BASE alone,
    /// though instances have more. Certainty takes an instance and its getInterface.
    virtual int supportsInterface(u64 id) = 0;
    /// The name of the kind, as scenes write it; a literal of the library. Never null.
    virtual const char* getName() = 0;
    /// Enters the descriptor in a host. Nothing here, for kinds that no host needs to know of.
    virtual void registerPlugin(PelkPluginHost* host);
    /// Takes the descriptor out again, before the library is unloaded.
    virtual void unregisterPlugin(PelkPluginHost* host);
    /// Asked by no library; every class answers 0. It keeps its place in the table of operations,
    /// so that libraries that were built apart agree on that table.
    virtual int reserved();
};

/// A descriptor that also publishes parameters. Derived classes fill a PelkParameterListDesc in
/// their constructor and set `paramDesc` to it; see pelk_plugin.h for an example.
class PELK_API PelkPluginDesc : public PluginDesc {
public:
    /// Enters the descriptor by addPluginDesc, then its parameters in their order. A null host does
    /// nothing. May throw whatever the host's operations throw for lack of memory.
    void registerPlugin(PelkPluginHost* host) override;
    /// Calls removePluginDesc; a null host does nothing. The parameter list stays.
    void unregisterPlugin(PelkPluginHost* host) override;

    /// The parameters of the kind; null if it has none. Instances take their defaults from it.
    PelkParameterListDesc* getParameterListDesc() const { return paramDesc; }

protected:
    PelkParameterListDesc* paramDesc = nullptr;  ///< not owned: a member of the derived class
};

}  // namespace Tarnkit
