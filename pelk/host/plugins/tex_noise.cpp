#include "pelk/host/plugins/tex_noise.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "pelk/contract/context.h"
#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/two_color_texture.h"
#include "pelk/host/trace/sampling.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    colorParam("color1", &TexNoiseParams::color1, Color(0), "First colour, linear"),
    colorParam("color2", &TexNoiseParams::color2, Color(1), "Second colour, linear"),
    floatParam("size", &TexNoiseParams::size, 1.0f, "Size of the largest clouds"),
    intParam("octaves", &TexNoiseParams::octaves, 4, "Layers of ever finer clouds, 1 to 16",
             "minValue=(1), maxValue=(16)"),
    pluginParam<UVWGenInterface>("uvwgen", &TexNoiseParams::uvwgen,
                                 "Texture coordinates; the place in the scene without one"),
};

/// Dot product of a lattice point's gradient, one of twelve by its hash, with the offset from it.
float cornerValue(u32 hash, float x, float y, float z) {
    const u32 h = hash & 15u;
    const float u = h < 8 ? x : y;
    const float v = h < 4 ? y : (h == 12 || h == 14 ? x : z);
    return (h & 1u ? -u : u) + (h & 2u ? -v : v);
}

u32 latticeHash(u32 x, u32 y, u32 z) {
    return hash32(x + hash32(y + hash32(z + 0x9e3779b9u)));
}

float fade(float t) {
    return t * t * t * (t * (t * 6.0f - 15.0f) + 10.0f);
}

/// The lattice cell of a coordinate, modulo 2^32; 0 where floats no longer tell cells apart.
u32 cellOf(double floored) {
    return std::fabs(floored) < 0x1p62 ? static_cast<u32>(static_cast<std::int64_t>(floored)) : 0u;
}

/// Gradient noise, about -1 to 1 and 0 at whole numbers. Perlin, "Improving Noise", SIGGRAPH 2002,
/// with hashed lattice points in the place of a table, so that it repeats after 2^32 units only.
float gradientNoise(double x, double y, double z) {
    const double fx = std::floor(x), fy = std::floor(y), fz = std::floor(z);
    const u32 cx = cellOf(fx), cy = cellOf(fy), cz = cellOf(fz);
    const float px = static_cast<float>(x - fx), py = static_cast<float>(y - fy),
                pz = static_cast<float>(z - fz);
    const float wx = fade(px), wy = fade(py), wz = fade(pz);
    float planes[2];
    for (u32 k = 0; k < 2; ++k) {
        float lines[2];
        for (u32 j = 0; j < 2; ++j) {
            const auto corner = [&](u32 i) {
                return cornerValue(latticeHash(cx + i, cy + j, cz + k), px - static_cast<float>(i),
                                   py - static_cast<float>(j), pz - static_cast<float>(k));
            };
            lines[j] = std::lerp(corner(0), corner(1), wx);
        }
        planes[k] = std::lerp(lines[0], lines[1], wy);
    }
    return std::lerp(planes[0], planes[1], wz);
}

}  // namespace

ParamRows<TexNoiseParams> TexNoiseParams::table() {
    return kParams;
}

void TexNoise::frameBegin(PelkRenderer& renderer) {
    HostTexture::frameBegin(renderer);
    uvwgen = findInterface<UVWGenInterface>(params.uvwgen);
    frequency = params.size > 0.0f ? 1.0 / double{params.size} : 0.0;
    octaves = std::clamp(params.octaves, 1, 16);
}

AColor TexNoise::getTexColor(PelkContext& context) {
    Point place = context.hitPoint;
    if (uvwgen)
        place = Point() + uvwgen->getUVW(context);
    double scale = frequency;
    float sum = 0.0f, strength = 0.5f;
    for (int i = 0; i < octaves; ++i) {
        sum += strength * gradientNoise(place.x * scale, place.y * scale, place.z * scale);
        strength *= 0.5f;
        scale *= 2.0;
    }
    return {blend(params.color1, params.color2, std::clamp(0.5f + sum, 0.0f, 1.0f)), 1.0f};
}

void TexNoise::describe(ShaderSource& source) {
    describeBlend(source, "noise", params.color1, params.color2);
    source.printf(" %f %i\n", params.size, params.octaves);
}

}  // namespace Tarnkit
