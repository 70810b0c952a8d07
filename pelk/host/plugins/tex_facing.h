#pragma once

#include "pelk/host/plugins/host_texture.h"

namespace Tarnkit {

/// Parameters of TexFacing, as the host refreshes them at each frameBegin.
struct TexFacingParams {
    Color color1, color2;
    float power = 1.0f;

    static ParamRows<TexFacingParams> table();
};

/// One colour where the surface faces the ray, another where it is seen edge-on.
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
