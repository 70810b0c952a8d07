#pragma once

#include "pelk/contract/renderer.h"

namespace Tarnkit {

class HostRenderer;
class RenderContext;

/// Indirect diffuse light by path tracing: at each hit one ray, cosine-distributed over the
/// hemisphere, is traced on. At hits of camera rays and their mirror images a surface may ask for
/// more (gi_quality_multiplier); behind the first diffuse bounce there is one, or paths would
/// multiply. Part of HostRenderer; the settings are written before rendering, the operations run on
/// all render threads.
class PathGi final : public DefaultGlobalLightManager {
public:
    explicit PathGi(HostRenderer& renderer_) : renderer(renderer_) {}

    /// The cosine-weighted mean of the light from the hemisphere: white surroundings give 1. Black
    /// if the light loop has just found the sampler's diffuse part black.
    void irradiance(Color& out, PelkContext& context) override;
    /// Whether indirect rays of the hit find lights too, so that eval must apply its MIS weight.
    /// The first answer at a hit holds for all of it.
    int usesLightMis(PelkContext& context) override;
    /// The same from the surface's properties, not yet remembered for the hit: not 0 if indirect
    /// rays take their MIS share of lights.
    int sharesLights(const PelkContext& context) const;
    /// Ambient light of a matte: the plain surroundings over the hemisphere, as a mean without and
    /// with the geometry in front of them.
    void evalMatte(PelkContext& context, Color& unshadowed, Color& shadowed) override;

    bool enabled = true;    ///< the scene's `gi`; without it indirect light is black
    bool bumpInGi = false;  ///< surfaces hit by indirect rays apply their bump maps

private:
    Color gather(RenderContext& context, int ray);
    void gatherMatte(RenderContext& context, int ray, Color& unshadowed, Color& shadowed);

    HostRenderer& renderer;
};

}  // namespace Tarnkit
