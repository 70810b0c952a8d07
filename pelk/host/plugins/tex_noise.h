#pragma once

#include "pelk/host/plugins/host_texture.h"

namespace Tarnkit {

/// Clouds of two colours in space.
class TexNoise final : public HostTexture {
public:
    struct Params {
        Color color1, color2;
        float size = 1.0f;  ///< of the largest clouds, in units of the space
        int octaves = 4;    ///< layers, each half as large and half as strong as the one before
        PluginBase* uvwgen = nullptr;
    };

    static constexpr const char* kName = "TexNoise";
    static constexpr u32 kID = 0x7E100035;

    explicit TexNoise(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    void frameBegin(PelkRenderer& renderer) override;
    AColor getTexColor(PelkContext& context) override;

private:
    void describe(ShaderSource& source) override;

    Params params;
    UVWGenInterface* uvwgen = nullptr;  // this and the others: set in frameBegin
    double frequency = 1.0;
    int octaves = 1;
};

}  // namespace Tarnkit
