#pragma once

#include "pelk/host/plugins/host_texture.h"

namespace Tarnkit {

/// One colour where the surface faces the ray, another where it is seen edge-on.
class TexFacing final : public HostTexture {
public:
    struct Params {
        Color color1, color2;
        float power = 1.0f;
    };

    static constexpr const char* kName = "TexFacing";
    static constexpr u32 kID = 0x7E100036;

    explicit TexFacing(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    AColor getTexColor(PelkContext& context) override;

private:
    void describe(ShaderSource& source) override;

    Params params;
};

}  // namespace Tarnkit
