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
    /// Uncached usesLightMis: 1 if indirect rays carry their half of the MIS weight here.
    int sharesLights(const PelkContext& context) const;
    /// Ambient light of a matte: the cosine-weighted mean over the hemisphere of the background
    /// colour, or of a material's environment override, without lights. `unshadowed` as if the
    /// scene had no geometry, `shadowed` with the geometry in the way.
    void evalMatte(PelkContext& context, Color& unshadowed, Color& shadowed) override;

    bool enabled = true;    ///< the scene's `gi`; without it indirect light is black
    bool bumpInGi = false;  ///< surfaces hit by indirect rays apply their bump maps

private:
    Color gather(RenderContext& context, int ray);
    void gatherMatte(RenderContext& context, int ray, Color& unshadowed, Color& shadowed);

    HostRenderer& renderer;
};

}  // namespace Tarnkit
