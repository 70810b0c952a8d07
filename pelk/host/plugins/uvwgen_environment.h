#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {

/// Parameters of UVWGenEnvironment, as the host refreshes them at each frameBegin.
struct UVWGenEnvironmentParams {
    float rotation = 0.0f;  ///< about +Y, in degrees; turns the surroundings to the right

    static ParamRows<UVWGenEnvironmentParams> table();
};

/// Texture coordinates by direction: a map of the surroundings whose width goes once around. The
/// middle of the map lies at -Z, the top at +Y.
class UVWGenEnvironment final
    : public WithParams<UVWGenEnvironmentParams, PluginOffering<UVWGenInterface>> {
public:
    static constexpr const char* kName = "UVWGenEnvironment";
    static constexpr u32 kID = 0x7E100011;
    using WithParams::WithParams;

    Vector getUVW(PelkContext& context) override;
    Transform getTangentFrame(PelkContext& context, int& valid) override;
};

}  // namespace Tarnkit
