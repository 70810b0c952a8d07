#pragma once

#include "pelk/contract/parameters.h"
#include "pelk/contract/plugin.h"
#include "pelk/contract/plugin_desc.h"

namespace Tarnkit {

class PelkRenderer;

/// The face that every plug-in has: its parameters and its life cycle. The host calls, all on one
/// thread: renderBegin, per frame frameBegin and frameEnd, renderEnd.
class PELK_API PelkPluginInterface : public PluginInterface {
public:
    static constexpr InterfaceID<PelkPluginInterface> kInterfaceID{0x7776FFFF, "EXT_PLUGIN_BASE"};

    explicit PelkPluginInterface(PelkPluginDesc* desc);

    u64 getInterfaceID() const override;
    const char* getInterfaceName() const override;

    /// An override does not call the base.
    virtual void renderBegin(PelkRenderer& renderer);
    virtual void renderEnd(PelkRenderer& renderer);
    /// Brings every bound field up to date, at the frame's time. An override calls it first.
    virtual void frameBegin(PelkRenderer& renderer);
    virtual void frameEnd(PelkRenderer& renderer);
    /// The parameter stays the caller's and must outlive the plug-in or its replacement.
    virtual void setParameter(PelkPluginParameter* parameter);
    /// What was set under that name; null if nothing was.
    virtual PelkPluginParameter* getParameter(const char* name);

protected:
    PelkPluginDesc* desc;
    PelkParameterList paramList;
};

/// One instance of a plug-in with parameters.
class PELK_API PelkPlugin : public Plugin, public PelkPluginInterface {
public:
    using Offered = InterfaceList<PelkPluginInterface>;

    explicit PelkPlugin(PelkPluginDesc* pluginDesc) : PelkPluginInterface(pluginDesc) {}

    PluginInterface* getInterface(u64 id) override;
    PluginDesc* getPluginDesc() override { return desc; }
    PluginBase* getPlugin() override { return this; }
};

}  // namespace Tarnkit
