#pragma once

#include <cstddef>
#include <iterator>
#include <span>
#include <string_view>

#include "pelk/contract/fragment.h"

namespace Tarnkit {

// The one list of render channels (AOVs, the arbitrary output variables of a render) that have a
// meaning of their own. Two parties that know nothing of each other meet by these numbers: a
// material writes what it has found under an alias (Fragment::addAlias), and whichever channel of
// the render carries that alias takes it. An alias that no channel of the render carries is
// dropped, so that a material needn't ask who listens. Being compiled into materials and written
// into transferred regions, the numbers never change; a channel of a scene's own has none (-1).

/// The number of a well-known channel. The comment tells who writes it, when; what the value means
/// for a user, and its type, stand in kChannelAliases below.
enum ChannelAlias : int {
    // The main values of a fragment: fields of PKFragment, there whether or not a channel of the
    // render carries the alias. The host writes them after each `shade`, since a material clears.
    kAliasColor = 1,         ///< radiance without what lies behind; premultiplied
    kAliasAlpha = 2,         ///< coverage, per component
    kAliasTransparency = 3,  ///< what is left of the colour behind, along the ray
    /// Written by mattes (dimmed) and, where a ray leaves the scene, by the host.
    kAliasBackground = 4,
    kAliasZDepth = 5,             ///< times the weight; along the axis that points backwards
    kAliasRenderID = 6,           ///< by GeomObjectInterface::getRenderID of the first surface
    kAliasNormal = 7,             ///< shading normal of the first surface, times the weight
    kAliasAlphaTransparency = 8,  ///< what is left of the alpha behind
    // 9 stays without a field: reading it gives nothing, and writing it stores nothing.
    kAliasWeight = 10,  ///< sum of the shares of the samples in this fragment

    // What materials and samplers write while a hit is shaded, each for its own surface. What
    // stands behind a see-through surface is added by the channel object, times the transparency.
    kAliasDiffuse = 101,           ///< MtlMayaRamp: its colour ramp, times what isn't transparent
    kAliasReflection = 102,        ///< a sampler's own reflected ray, already times its throughput
    kAliasRefraction = 103,        ///< the same of a refracted ray
    kAliasSelfIllumination = 104,  ///< MtlMayaRamp: incandescence; the host: a light that is seen
    kAliasBackgroundLoss = 105,    ///< MtlWrapper as a matte: undimmed minus dimmed background
    kAliasSpecular = 106,          ///< MtlMayaRamp, in `eval` of each light
    kAliasMatteLight = 111,        ///< MtlWrapper, only with `generate_render_elements`
    kAliasMatteLightLoss = 112,    ///< MtlWrapper: unshadowed direct light minus kAliasMatteLight
    kAliasMaterialIDColor = 115,   ///< MtlMaterialID, in `shade` and `traceForward`
    kAliasReflectivity = 118,      ///< MtlMayaRamp: kAliasReflection = this * kAliasRawReflection
    kAliasRawReflection = 119,     ///< MtlMayaRamp: the reflected ray's radiance
    kAliasRefractionWeight = 120,  ///< MtlMayaRamp: kAliasRefraction = this * kAliasRawRefraction
    kAliasRawRefraction = 121,     ///< MtlMayaRamp: the refracted ray's radiance
    kAliasImageBackground = 124,   ///< the value of kAliasBackground, for users to look at
    kAliasMatteShadow = 128,       ///< MtlWrapper: 1 - shadowed / unshadowed direct light
    kAliasBumpScreenNormal = 131,  ///< MtlBump, only if a channel carries it
    /// Throughput of the own ray, which kAliasReflection already holds; mattes dim by it.
    kAliasReflectionFilter = 139,
    kAliasMaterialIDNumber = 141,  ///< MtlMaterialID; the one alias of materials that is an int
    kAliasBumpOffset = 145,        ///< MtlBump, only if a channel carries it

    // The picture itself. Hosts make its pixels from the main values; nobody writes it at a hit.
    // Regions treat these by their numbers alone.
    kAliasImageAlpha = 125,  ///< never mapped on read-out; the weight when regions are merged
    kAliasImageColor = 126,  ///< merged as premultiplied colour
    kAliasHostStamp = 134,   ///< a region that came from another computer shows its name here

    // Channels that materials know nothing of. Above 146, the last alias with a bucket of its own
    // in regions, so that no number which a material is compiled with can collide with them.
    kAliasFront = 1001,  ///< the region, from the front of the pixel (RenderChannel::storePixel)
    kAliasUV = 1002,     ///< the host, behind `shade`, of each surface that is hit
};

/// Where every render has its picture: beauty is the channel of index 0, alpha that of index 1,
/// and what the user asks for follows. Beauty is premultiplied by alpha.
inline constexpr int kBeautyChannel = 0;
inline constexpr int kAlphaChannel = 1;
/// The index of the first channel beyond the picture itself.
inline constexpr int kFirstExtraChannel = 2;

/// What is known of an alias: a row of kChannelAliases, from which hosts make their channel objects
/// (support/regions/channel_kinds.h), scenes their names, and commands their help. The texts are
/// literals and live as long as the module that reads them.
struct ChannelAliasInfo {
    ChannelAlias alias;
    /// By which scenes and `--channels` ask for it; null for what can't be asked for.
    const char* name;
    ChannelType type;  ///< of the value that addAlias takes and of the channel's pixels
    /// One line for users: what the channel shows, and with what it adds up to what.
    const char* meaning;
};

/// All aliases, each once. Those with a name come first, in the order in which "all" adds them to a
/// render: beauty at kBeautyChannel, alpha at kAlphaChannel.
inline constexpr ChannelAliasInfo kChannelAliases[] = {
    {kAliasImageColor, "beauty", kChannelColor,
     "The picture: linear colour, premultiplied by alpha, with the background"},
    {kAliasImageAlpha, "alpha", kChannelColor, "Coverage of the background, per component, 0 to 1"},
    {kAliasDiffuse, "diffuse", kChannelColor, "Diffuse surface colour, without the light on it"},
    {kAliasSpecular, "specular", kChannelColor, "Direct light in highlights"},
    {kAliasReflection, "reflection", kChannelColor,
     "What reflected rays add to beauty; of a ramp, reflectivity * raw_reflection"},
    {kAliasReflectionFilter, "reflection_filter", kChannelColor,
     "Throughput of the reflected ray that a sampler spawned"},
    {kAliasReflectivity, "reflectivity", kChannelColor,
     "Share of raw_reflection that a ramp reflects"},
    {kAliasRawReflection, "raw_reflection", kChannelColor,
     "What reflected rays find, before reflectivity"},
    {kAliasRefraction, "refraction", kChannelColor,
     "What refracted rays add to beauty; of a ramp, refraction_weight * raw_refraction"},
    {kAliasRefractionWeight, "refraction_weight", kChannelColor,
     "Share of raw_refraction that a ramp lets through"},
    {kAliasRawRefraction, "raw_refraction", kChannelColor,
     "What refracted rays find, before refraction_weight"},
    {kAliasSelfIllumination, "self_illumination", kChannelColor,
     "Light that surfaces emit, and lights that are seen directly"},
    {kAliasImageBackground, "background", kChannelColor,
     "Environment or backplate behind all surfaces, dimmed by mattes"},
    {kAliasBackground, "main_background", kChannelColor,
     "The same, as the main value of fragments"},
    {kAliasBackgroundLoss, "background_loss", kChannelColor,
     "What mattes took of the background; plus background, the undimmed one"},
    {kAliasMatteLight, "matte_light", kChannelColor,
     "Direct light on mattes, shadowed; plus matte_light_loss, unshadowed"},
    {kAliasMatteLightLoss, "matte_light_loss", kChannelColor,
     "Direct light on mattes that shadows took"},
    {kAliasMatteShadow, "matte_shadow", kChannelColor,
     "Share of the direct light on mattes that shadows took, 0 to 1"},
    {kAliasMaterialIDColor, "material_id_color", kChannelColor, "Id colour of MtlMaterialID"},
    {kAliasMaterialIDNumber, "material_id", kChannelInt, "Id number of MtlMaterialID"},
    {kAliasRenderID, "render_id", kChannelInt, "Id of the object in front, -1 without one"},
    {kAliasZDepth, "depth", kChannelFloat,
     "Distance along the camera's axis, scene units; 1e18 where nothing was hit"},
    {kAliasNormal, "normals", kChannelVector, "Shading normal in world space, of unit length"},
    {kAliasBumpScreenNormal, "bump_screen_normals", kChannelVector,
     "Bumped normal, negated, along the pixel's x, its y and the ray"},
    {kAliasBumpOffset, "bump_offset", kChannelVector, "Bumped minus smooth normal, world space"},
    {kAliasUV, "uv", kChannelFloat2, "Texture coordinates of the first set"},
    {kAliasTransparency, "transparency", kChannelColor,
     "Share of what lies behind that shows through, per component"},
    {kAliasFront, "front", kChannelAColor, "Colour and alpha of the object in front alone"},
    {kAliasHostStamp, "host_stamp", kChannelColor,
     "Name of the computer that rendered a merged region; black without one"},

    {kAliasColor, nullptr, kChannelColor, "Colour without the background, premultiplied"},
    {kAliasAlpha, nullptr, kChannelColor, "Alpha per component"},
    {kAliasAlphaTransparency, nullptr, kChannelColor,
     "Share of the alpha of what lies behind that counts"},
    {kAliasWeight, nullptr, kChannelFloat,
     "Share of the pixel's samples; normal and depth are divided by it"},
};

// Of two rows for one number or name, look-ups would find the first alone.
static_assert([] {
    for (const ChannelAliasInfo& a : kChannelAliases) {
        for (const ChannelAliasInfo& b : kChannelAliases) {
            const bool sameName = a.name && b.name && std::string_view(a.name) == b.name;
            if (&a != &b && (a.alias == b.alias || sameName))
                return false;
        }
    }
    return true;
}());
static_assert(kChannelAliases[kBeautyChannel].alias == kAliasImageColor &&
              kChannelAliases[kAlphaChannel].alias == kAliasImageAlpha);

/// The aliases that can be asked for by name: "all" of them.
constexpr std::span<const ChannelAliasInfo> namedChannelAliases() {
    std::size_t count = 0;
    while (count < std::size(kChannelAliases) && kChannelAliases[count].name)
        ++count;
    return {kChannelAliases, count};
}

/// What is known of an alias, or null for one that stands in no row, as a channel of a scene's own
/// has it. Not at hits: it searches, and a hit needs no row.
constexpr const ChannelAliasInfo* findChannelAlias(int alias) {
    for (const ChannelAliasInfo& info : kChannelAliases) {
        if (info.alias == alias)
            return &info;
    }
    return nullptr;
}

/// The alias with that name, or null. Names are compared byte by byte. What finds none may still be
/// the name of a channel of the scene's own, so hosts look there next:
///
///     if (const ChannelAliasInfo* info = findChannelAlias("depth"))
///         add(info->alias, info->type);
constexpr const ChannelAliasInfo* findChannelAlias(std::string_view name) {
    for (const ChannelAliasInfo& info : kChannelAliases) {
        if (info.name && info.name == name)
            return &info;
    }
    return nullptr;
}

}  // namespace Tarnkit
