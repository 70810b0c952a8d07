#pragma once

#include "pelk/host/plugins/host_texture.h"

namespace Tarnkit {

/// Parameters of TexNoise, as the host refreshes them at each frameBegin.
struct TexNoiseParams {
    Color color1, color2;
    float size = 1.0f;  ///< of the coarsest octave's features, in units of the coordinates
    int octaves = 4;  ///< 1 to 16; each has half the size and half the amplitude of the one before
    PluginBase* uvwgen = nullptr;

    static ParamRows<TexNoiseParams> table();
};

/// Fractal gradient (Perlin) noise between two colours, solid in world space unless a generator
/// gives the coordinates.
class TexNoise final : public WithParams<TexNoiseParams, HostTexture> {
public:
    static constexpr const char* kName = "TexNoise";
    static constexpr u32 kID = 0x7E100035;

    using WithParams::WithParams;

    void frameBegin(PelkRenderer& renderer) override;
    AColor getTexColor(PelkContext& context) override;

private:
    void describe(ShaderSource& source) override;

    UVWGenInterface* uvwgen = nullptr;  // this and the others: set in frameBegin
    double frequency = 1.0;
    int octaves = 1;
};

}  // namespace Tarnkit
