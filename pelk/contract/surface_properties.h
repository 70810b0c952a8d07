#pragma once

#include "pelk/base/color.h"
#include "pelk/base/grow_table.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

/// What the surface of a hit wants of the renderer as a whole: how much indirect light and caustics
/// it takes part in, whether it is a matte (a shadow catcher), and what its reflections leave out.
/// The answer of PelkContext::surfaceProperties, null for most surfaces.
///
/// A material, MtlWrapper here, owns one as its parameters: written in frameBegin, read-only for
/// all render threads until frameEnd. It sets the context's pointer to it in `shade` and getBSDF.
/// The host reads the fields directly, so their order and widths are fixed; each says below whether
/// the host or the material acts on it, so that neither does twice.
class PELK_API PelkSurfaceProperties : public PluginBase {
public:
    // Factors, 0 or more; 1 is physical.

    /// Of the light that the surface sends to indirect rays (kRayGi). Applied by the material, as
    /// the host adds resultColor up as it finds it.
    float generate_gi = 1.0f;
    /// Of the indirect light that reaches it. Applied by the GI engine, in `irradiance`. At any
    /// value but 1 usesLightMis answers 0: lights that indirect rays found would be scaled too, and
    /// they are direct light.
    float receive_gi = 1.0f;
    /// Of caustics that it throws: light that an indirect ray finds over its mirror or lens.
    /// Applied by the host, to rays spawned here by a hit that is itself seen by an indirect ray.
    float generate_caustics = 1.0f;
    /// Of caustics that fall on it. Applied by the host, together with generate_caustics.
    float receive_caustics = 1.0f;

    /// Share of the surface in the alpha, -1 to 1, where shadeFlags has kShadeAlphaCounts: so that
    /// a compositor can put another picture in the surface's place. Below 0 the surface has no
    /// alpha and covers that of what lies behind by the absolute value. Applied by the material.
    float alpha_contribution = 1.0f;

    // The matte: shows the background in place of the base, and catches shadows and reflections.
    // Applied by the material, in `shade`; the host only asks whether it is one.

    /// 0: no matte. Else seen as one by 1: camera rays alone; 2: also reflected and refracted rays,
    /// with the background projected on it as the camera sees it; 3: also those, with the
    /// background along the ray. The GI engine then answers usesLightMis with 0, as a
    /// matte traces no indirect rays that could bring the other half of the weight.
    int matte_surface = 0;
    int shadows = 0;                 ///< not 0: shadows on the matte dim the background
    int affect_alpha = 0;            ///< not 0: what dims the background also counts as alpha
    Color shadow_tint_color;         ///< added where there is shadow; black for plain shadows
    float shadow_brightness = 1.0f;  ///< strength of the shadows, 0 to 1, in spite of its name
    float reflection_amount = 1.0f;  ///< strength of the base's reflections, 0 to 1
    float refraction_amount = 1.0f;  ///< strength of the base's refractions, 0 to 1
    float gi_amount = 1.0f;          ///< strength of ambient shadows (evalMatte), 0 to 1
    /// Not 0: rays from other mattes find black here, so that mattes don't show or light one
    /// another: each stands for a real surface whose light on the others is in the background.
    int no_gi_on_other_mattes = 1;

    // For the host.

    int propertiesValid = 1;  ///< 1 once the fields hold for the frame
    /// The low 16 bits hold the GI surface id: caches of indirect light don't blend samples of
    /// surfaces with different ids. The upper bits are the host's.
    u32 giSurfaceWord = 0;
    /// Factor of the number of indirect rays sent from the surface, for those that are noisier than
    /// the rest of the picture; `pelk` goes by it at hits that aren't lit indirectly themselves.
    float gi_quality_multiplier = 1.0f;
    u32 surfaceFlags = 3;  ///< the bits below; the first two are set in plain surfaces
    /// Objects that rays reflected here don't meet, or with kReflectionListInclusive the only ones
    /// that they do: render ids of GeomObjectInterface, ascending, as hosts search by bisection
    /// at each surface that such a ray meets; repeats allowed.
    GrowTable<int> reflectionExclude{100};
    GrowTable<int> refractionExclude{100};  ///< the same of refracted rays
};

// Bits of PelkSurfaceProperties::surfaceFlags. Whether a list is inclusive is kept apart from the
// list: an inclusive list that is empty hides everything, which an empty list alone can't say.

constexpr u32 kGenerateRenderElements = 0x1;   ///< the surface shows in render channels
constexpr u32 kUseIrradianceMap = 0x2;         ///< its indirect light may come from a cache
constexpr u32 kReflectionListInclusive = 0x4;  ///< reflectionExclude lists what is met
constexpr u32 kRefractionListInclusive = 0x8;  ///< refractionExclude lists what is met

/// Two empty interfaces by which a host tells which generation of PelkSurfaceProperties it has
/// before it: it asks the object behind PelkContext::surfaceProperties for them. The record as it
/// is here offers both, and has every field.
class PELK_API DefaultPelkSurfaceProperties : public PluginInterface {
public:
    static constexpr InterfaceID<DefaultPelkSurfaceProperties> kInterfaceID{
        0xFFFF0003, "EXT_SURFACE_PROPERTIES"};
    u64 getInterfaceID() const override { return kInterfaceID; }
};
class PELK_API DefaultPelkSurfaceProperties2 : public PluginInterface {
public:
    static constexpr InterfaceID<DefaultPelkSurfaceProperties2> kInterfaceID{
        0x77DE57E9, "EXT_SURFACE_PROPERTIES2"};
    u64 getInterfaceID() const override { return kInterfaceID; }
};

}  // namespace Tarnkit
