#pragma once

#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

class Plugin;
class PluginDesc;
class PelkParameterListDesc;
struct ParameterDesc;

/// Receives descriptors one by one.
class EnumPluginDescCallback {
public:
    /// Returns 0 to stop the enumeration, anything else to go on.
    virtual int process(PluginDesc* desc) = 0;

protected:
    ~EnumPluginDescCallback() = default;  // nobody deletes what he was only given to call
};

/// What a library of plug-ins says of itself.
class PELK_API PluginLibDesc : public PluginBase {
public:
    virtual const char* getLibraryName() = 0;
    virtual const char* getLibraryDescription() = 0;
    /// Shows every descriptor to `callback` until it answers 0. Returns the number of descriptors
    /// visited, the last one included; with a null callback, the number of all.
    virtual int enumPluginDescs(EnumPluginDescCallback* callback) = 0;
};

/// The host's side of registration. Knows a descriptor before it learns its parameters.
class PELK_API PelkPluginHost : public PluginBase {
public:
    virtual void addPluginDesc(PluginDesc* desc) = 0;
    virtual void removePluginDesc(PluginDesc* desc) = 0;
    /// One parameter of `desc`, in their order. The record lives as long as the descriptor.
    virtual void addParameter(PluginDesc* desc, const ParameterDesc& parameter) = 0;
};

/// What a host knows of one kind of plug-in: name, id, and how to make and destroy instances.
class PELK_API PluginDesc : public PluginBase {
public:
    virtual u32 getPluginID() = 0;
    virtual Plugin* newPlugin(PelkPluginHost* host) = 0;
    virtual void deletePlugin(Plugin* plugin) = 0;
    /// 1 if instances offer the interface, as far as the descriptor tells; else 0.
    virtual int supportsInterface(u64 id) = 0;
    virtual const char* getName() = 0;
    virtual void registerPlugin(PelkPluginHost* host);
    virtual void unregisterPlugin(PelkPluginHost* host);
    /// Asked by no library; every class answers 0.
    virtual int reserved();
};

/// A descriptor that also publishes parameters.
class PELK_API PelkPluginDesc : public PluginDesc {
public:
    /// Enters the descriptor, then its parameters, in the host. A null host does nothing.
    void registerPlugin(PelkPluginHost* host) override;
    void unregisterPlugin(PelkPluginHost* host) override;

    PelkParameterListDesc* getParameterListDesc() const { return paramDesc; }

protected:
    PelkParameterListDesc* paramDesc = nullptr;
};

}  // namespace Tarnkit
