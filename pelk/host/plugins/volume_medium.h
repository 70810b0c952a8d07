#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/contract/material.h"

namespace Tarnkit {

/// Parameters of VolumeMedium, as the host refreshes them at each frameBegin.
struct VolumeMediumParams {
    float ior = 1.33f;

    static ParamRows<VolumeMediumParams> table();
};

/// A non-absorbing medium, given by its index of refraction.
class VolumeMedium final : public WithParams<VolumeMediumParams, PluginOffering<PelkVolume>> {
public:
    static constexpr const char* kName = "VolumeMedium";
    static constexpr u32 kID = 0x7E100063;
    using WithParams::WithParams;

    float getIOR(PelkContext&) override { return params.ior; }
};

}  // namespace Tarnkit
