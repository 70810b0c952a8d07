#pragma once

#include "pelk/contract/renderer.h"

namespace Tarnkit {

class HostRenderer;
class RenderContext;

/// Indirect diffuse light: one ray over the hemisphere at each hit, or as many as the surface asks
/// for where it is not itself lit indirectly.
class PathGi final : public DefaultGlobalLightManager {
public:
    explicit PathGi(HostRenderer& renderer_) : renderer(renderer_) {}

    void irradiance(Color& out, PelkContext& context) override;
    int usesLightMis(PelkContext& context) override;
    /// Whether indirect rays of the hit take their share of lights.
    int sharesLights(const PelkContext& context) const;
    void evalMatte(PelkContext& context, Color& unshadowed, Color& shadowed) override;

    bool enabled = true;
    bool bumpInGi = false;  ///< surfaces that indirect rays meet show their bumps

private:
    Color gather(RenderContext& context, int ray);
    void gatherMatte(RenderContext& context, int ray, Color& unshadowed, Color& shadowed);

    HostRenderer& renderer;
};

}  // namespace Tarnkit
