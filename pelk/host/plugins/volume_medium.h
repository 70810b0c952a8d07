#pragma once

#include "pelk/contract/material.h"
#include "pelk/contract/pelk_plugin.h"

namespace Tarnkit {

/// A clear medium.
class VolumeMedium final : public PelkPlugin, public PelkVolume {
public:
    struct Params {
        float ior = 1.33f;
    };

    static constexpr const char* kName = "VolumeMedium";
    static constexpr u32 kID = 0x7E100063;
    using Offered = InterfaceList<PelkVolume>;

    explicit VolumeMedium(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }
    float getIOR(PelkContext&) override { return params.ior; }

private:
    Params params;
};

}  // namespace Tarnkit
