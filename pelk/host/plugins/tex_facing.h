#pragma once

#include "pelk/host/plugins/host_texture.h"

namespace Tarnkit {

/// Parameters of TexFacing, as the host refreshes them at each frameBegin.
struct TexFacingParams {
    Color color1, color2;
    float power = 1.0f;

    static ParamRows<TexFacingParams> table();
};

/// A facing ratio, as for a falloff: from color1 where the surface faces the ray to color2 at
/// grazing angles, by (1 - cosine) ^ power with the shading normal.
class TexFacing final : public WithParams<TexFacingParams, HostTexture> {
public:
    static constexpr const char* kName = "TexFacing";
    static constexpr u32 kID = 0x7E100036;

    using WithParams::WithParams;

    AColor getTexColor(PelkContext& context) override;

private:
    void describe(ShaderSource& source) override;
};

}  // namespace Tarnkit
