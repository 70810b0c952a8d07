#pragma once

#include "pelk/host/plugins/host_texture.h"

namespace Tarnkit {

/// Parameters of TexGradient, as the host refreshes them at each frameBegin.
struct TexGradientParams {
    enum Form : int { kAlongU = 0, kAlongV = 1, kRadial = 2 };

    Color color1, color2;
    int form = kAlongU;  ///< radial: from (0.5, 0.5) to a distance of 0.5
    PluginBase* uvwgen = nullptr;

    static ParamRows<TexGradientParams> table();
};

/// A linear or radial gradient of two colours over texture coordinates 0 to 1, clamped beyond.
class TexGradient final : public WithParams<TexGradientParams, HostTexture> {
public:
    static constexpr const char* kName = "TexGradient";
    static constexpr u32 kID = 0x7E100034;

    using WithParams::WithParams;

    void frameBegin(PelkRenderer& renderer) override;
    AColor getTexColor(PelkContext& context) override;

private:
    void describe(ShaderSource& source) override;

    UVWGenInterface* uvwgen = nullptr;  // set in frameBegin
};

}  // namespace Tarnkit
