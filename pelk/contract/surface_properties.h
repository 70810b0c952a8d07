#pragma once

#include "pelk/base/color.h"
#include "pelk/base/grow_table.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

/// What a hit's surface wants of the renderer as a whole. The host reads the fields directly, so
/// their order and widths are fixed.
class PELK_API PelkSurfaceProperties : public PluginBase {
public:
    float generate_gi = 1.0f;        ///< scales the indirect light that the surface gives
    float receive_gi = 1.0f;         ///< scales the indirect light that reaches it
    float generate_caustics = 1.0f;  ///< scales light that it throws by reflection or refraction
    float receive_caustics = 1.0f;   ///< scales such light that reaches it
    float alpha_contribution = 1.0f;
    int matte_surface = 0;  ///< 1 for camera rays, 2 and 3 also for others, with and w/o projection
    int shadows = 0;
    int affect_alpha = 0;
    Color shadow_tint_color;
    float shadow_brightness = 1.0f;
    float reflection_amount = 1.0f;
    float refraction_amount = 1.0f;
    float gi_amount = 1.0f;
    int no_gi_on_other_mattes = 1;
    int propertiesValid = 1;
    u32 giSurfaceWord = 0;  ///< the low 16 bits hold the GI surface id
    float gi_quality_multiplier = 1.0f;
    u32 surfaceFlags = 3;                   ///< bits below
    GrowTable<int> reflectionExclude{100};  ///< render ids, ascending
    GrowTable<int> refractionExclude{100};
};

constexpr u32 kGenerateRenderElements = 0x1;
constexpr u32 kUseIrradianceMap = 0x2;
constexpr u32 kReflectionListInclusive = 0x4;
constexpr u32 kRefractionListInclusive = 0x8;

/// Empty faces by which a host knows the generation of surface properties.
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
