#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {

/// Parameters of UVWGenEnvironment, as the host refreshes them at each frameBegin.
struct UVWGenEnvironmentParams {
    float rotation = 0.0f;  ///< of the image about +Y, in degrees; positive moves it to the right

    static ParamRows<UVWGenEnvironmentParams> table();
};

/// Environment mapping: texture coordinates by the direction of the ray, for a longitude-latitude
/// image whose centre lies at -Z and whose top edge is +Y.
class UVWGenEnvironment final
    : public WithParams<UVWGenEnvironmentParams, PluginOffering<UVWGenInterface>> {
public:
    static constexpr const char* kName = "UVWGenEnvironment";
    static constexpr u32 kID = 0x7E100011;
    using WithParams::WithParams;

    /// Degrees about +Y by which the image is moved to the right; as of the last frameBegin.
    float getRotation() const { return params.rotation; }

    Vector getUVW(PelkContext& context) override;
    Transform getTangentFrame(PelkContext& context, int& valid) override;
};

}  // namespace Tarnkit
