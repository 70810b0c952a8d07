#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

#include "pelk/base/types.h"
#include "pelk/base/vector.h"

namespace Tarnkit {

/// A probability density next to 0: bsdfDensity of a ray whose hits on lights next-event estimation
/// counts in full already, so that the power heuristic gives the ray next to no weight. Not 0, so
/// that a light whose own density is 0 in this direction, which next-event estimation can't find,
/// keeps the ray's full weight.
inline constexpr float kNegligibleDensity = 1e-12f;

/// What random numbers are drawn for: each use is a dimension pair of its own.
enum class RandomUse : u32 { Pixel, Light, LightChoice, Indirect, Matte, Facet, Fork };

/// Two numbers in [0, 1).
struct Random2 {
    float x, y;
};

constexpr u32 hash32(u32 x) {
    x ^= x >> 16;
    x *= 0x7feb352du;
    x ^= x >> 15;
    x *= 0x846ca68bu;
    return x ^ (x >> 16);
}

constexpr u32 reverseBits(u32 x) {
    x = __builtin_bswap32(x);
    x = ((x & 0x0f0f0f0fu) << 4) | ((x >> 4) & 0x0f0f0f0fu);
    x = ((x & 0x33333333u) << 2) | ((x >> 2) & 0x33333333u);
    return ((x & 0x55555555u) << 1) | ((x >> 1) & 0x55555555u);
}

/// A random permutation in which each bit depends on the lower ones only: on a number whose bits
/// are reversed it is a nested uniform scramble. Laine and Karras, "Stratified Sampling for
/// Stochastic Transparency", EGSR 2011, section 3.1, with the multipliers of Vegdahl.
constexpr u32 scrambleReversed(u32 x, u32 seed) {
    x ^= x * 0x3d20adeau;
    x += seed;
    x *= (seed >> 16) | 1u;
    x ^= x * 0x05526c56u;
    return x ^ (x * 0x53a22864u);
}

/// Point `index` of the second dimension of Sobol's sequence, bits reversed. The generator is
/// Pascal's triangle modulo 2, so the product with it is a sum over supersets of bits.
constexpr u32 sobolSecondReversed(u32 index) {
    index ^= (index >> 1) & 0x55555555u;
    index ^= (index >> 2) & 0x33333333u;
    index ^= (index >> 4) & 0x0f0f0f0fu;
    index ^= (index >> 8) & 0x00ff00ffu;
    return index ^ (index >> 16);
}

/// The top 24 bits as a number in [0, 1).
constexpr float toUnit(u32 bits) {
    return static_cast<float>(bits >> 8) * 0x1p-24f;
}

/// Point `sample` of an Owen-scrambled Sobol sequence in two dimensions. Each pair of seed and use
/// has a sequence of its own, in an order of its own, so sequences can be combined freely.
/// Burley, "Practical Hash-based Owen Scrambling", JCGT 9(4), 2020, section 4.
constexpr Random2 random2(u32 seed, u32 sample, RandomUse use) {
    const u32 s = hash32(seed + 0x9e3779b9u * (1u + static_cast<u32>(use)));
    const u32 index = reverseBits(scrambleReversed(reverseBits(sample), s));
    const u32 x = scrambleReversed(index, s * 0x2c1b3c6du + 0x297a2d39u);
    const u32 y = scrambleReversed(sobolSecondReversed(index), s * 0x45d9f3b3u + 0x1b873593u);
    return {toUnit(reverseBits(x)), toUnit(reverseBits(y))};
}

/// Two numbers that have nothing to do with any others: they cost a quarter of those of `random2`.
/// Steele, Lea and Flood, "Fast Splittable Pseudorandom Number Generators", OOPSLA 2014, figure 14.
constexpr Random2 independent2(u32 seed, u32 sample, RandomUse use) {
    const u32 s = seed + 0x9e3779b9u * (1u + static_cast<u32>(use));
    u64 z = (u64{s} << 32 | sample) * 0x9e3779b97f4a7c15ull;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
    z ^= z >> 31;
    return {toUnit(static_cast<u32>(z >> 32)), toUnit(static_cast<u32>(z))};
}

/// Sine and cosine for |x| up to pi / 4, by polynomials: the same bits with every C library.
constexpr void smallSinCos(float x, float& s, float& c) {
    const float x2 = x * x;
    s = x * (1.0f + x2 * (-1.6666654611e-1f + x2 * (8.3321608736e-3f + x2 * -1.9515295891e-4f)));
    c = 1.0f + x2 * (-0.5f + x2 * (4.166664568298827e-2f +
                                   x2 * (-1.388731625493765e-3f + x2 * 2.443315711809948e-5f)));
}

/// A point of the unit disc. Shirley and Chiu, "A Low Distortion Map Between Disk and Square",
/// Journal of Graphics Tools 2(3), 1997.
inline Random2 squareToDisc(Random2 u) {
    const float a = 2.0f * u.x - 1.0f, b = 2.0f * u.y - 1.0f;
    // Chosen without branches: which of the two is larger can't be predicted.
    const bool wide = std::fabs(a) > std::fabs(b);
    const float radius = wide ? a : b, across = wide ? b : a;
    const float ratio = radius != 0.0f ? across / radius : 0.0f;
    float s, c;
    smallSinCos(std::numbers::pi_v<float> / 4.0f * ratio, s, c);
    const float along = radius * c, aside = radius * s;
    return wide ? Random2{along, aside} : Random2{aside, along};
}

/// MIS weight of a sample by the power heuristic with exponent 2. `own` and `other` are the
/// densities with which the sample's own technique and the other one choose it, in any common
/// scale; not both 0. Veach, "Robust Monte Carlo Methods for Light Transport Simulation", 1997,
/// eq. 9.13.
constexpr float powerShare(float own, float other) {
    return own * own / (own * own + other * other);
}

/// A right-handed tangent frame about the unit vector `n`. Duff et al.,
/// "Building an Orthonormal Basis, Revisited", JCGT 6(1), 2017.
inline void makeBasis(Vector n, Vector& t, Vector& b) {
    const float sign = std::copysign(1.0f, n.z);
    const float k = -1.0f / (sign + n.z);
    const float m = n.x * n.y * k;
    t = {1.0f + sign * n.x * n.x * k, sign * m, -sign * n.x};
    b = {m, sign + n.y * n.y * k, -n.y};
}

/// A cosine-distributed direction on the hemisphere about the unit vector `n`: its density per
/// solid angle is cosine / pi. `cosine` gets that to `n`.
inline Vector cosineDirection(Vector n, Random2 u, float& cosine) {
    const Random2 disc = squareToDisc(u);
    cosine = std::sqrt(std::max(0.0f, 1.0f - disc.x * disc.x - disc.y * disc.y));
    Vector t, b;
    makeBasis(n, t, b);
    return t * disc.x + b * disc.y + n * cosine;
}

}  // namespace Tarnkit
