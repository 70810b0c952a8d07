#pragma once

#include "pelk/host/plugins/host_texture.h"

namespace Tarnkit {

/// From one colour to another over the unit of texture coordinates; the ends hold beyond it.
class TexGradient final : public HostTexture {
public:
    enum Form : int { kAlongU = 0, kAlongV = 1, kRadial = 2 };

    struct Params {
        Color color1, color2;
        int form = kAlongU;  ///< radial: from (0.5, 0.5) to a distance of 0.5
        PluginBase* uvwgen = nullptr;
    };

    static constexpr const char* kName = "TexGradient";
    static constexpr u32 kID = 0x7E100034;

    explicit TexGradient(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    void frameBegin(PelkRenderer& renderer) override;
    AColor getTexColor(PelkContext& context) override;

private:
    void describe(ShaderSource& source) override;

    Params params;
    UVWGenInterface* uvwgen = nullptr;  // set in frameBegin
};

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
