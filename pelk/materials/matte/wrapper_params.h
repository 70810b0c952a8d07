#pragma once

#include "pelk/contract/material.h"
#include "pelk/contract/surface_properties.h"

/// What the scene sets of a wrapper, refreshed at each frameBegin, and at the same time what the
/// host reads at a hit through surfaceProperties. Read-only on the render threads.
class WrapperParams : public PelkSurfaceProperties,
                      public DefaultPelkSurfaceProperties,
                      public DefaultPelkSurfaceProperties2 {
public:
    PluginBase* base_material = nullptr;
    int use_irrad_map = 1;
    int generate_render_elements = 1;
    int matte_for_secondary_rays = 0;              ///< a MatteForSecondary
    int maya_background_shader_compatibility = 0;  ///< the wrapper traces the reflection itself
    TextureFloatInterface* alpha_contribution_tex = nullptr;
    TextureFloatInterface* shadow_brightness_tex = nullptr;
    TextureInterface* reflection_filter_tex = nullptr;
    int trace_depth = -1;  ///< of the wrapper's own reflection; -1: the renderer's limit
    int reflection_list_is_inclusive = 0;
    int refraction_list_is_inclusive = 0;
    int gi_surface_id = 0;
    PelkPluginList channels;

    static ParamRows<WrapperParams> table();

    using Offered = InterfaceList<DefaultPelkSurfaceProperties, DefaultPelkSurfaceProperties2>;
    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }

    /// Makes the bits of surfaceFlags that follow parameters; the others stay.
    void updateSurfaceFlags();
    /// Puts gi_surface_id in giSurfaceWord. The host's half of the word stays, unless the id is
    /// too long for its own.
    void updateGiSurfaceWord();
    /// Tells the host by matte_surface which rays see the matte.
    void updateMatteSurface();
};

/// Values of `matte_for_secondary_rays`. Any other than 0 and 2 counts as 1.
enum MatteForSecondary : int { kSecondaryOff = 0, kSecondaryPlain = 1, kSecondaryProjected = 2 };

/// Values of `matte_surface` once a frame has begun.
enum MatteSurface : int { kMatteOff = 0, kMatteCamera = 1, kMatteProjected = 2, kMattePlain = 3 };

// Parameters that are read by name when a frame begins.
constexpr char kReflectionExclude[] = "reflection_exclude";
constexpr char kRefractionExclude[] = "refraction_exclude";
