#pragma once

#include <vector>

#include "pelk/contract/renderer.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

class BSDFSampler;
class HostRenderer;
class RenderContext;

/// A light of the scene, with what it says of itself, which holds for the frame.
struct SceneLight {
    LightInterface* plugin;
    bool isDome, castsShadows, affectsSpecular;
};

/// Direct light: every light once at each hit, a random choice of them if there are very many.
class LightLoop final : public LightManager {
public:
    explicit LightLoop(HostRenderer& renderer_) : renderer(renderer_) {}

    /// Runs the lights of the viewer's side, whatever face of a surface the sampler is.
    void computeDirectLight(Color& out, PelkContext& context, BRDFSampler* sampler) override;
    /// Runs all lights: those on the viewer's side through the face that the viewer sees, those
    /// behind through the other face, if that is one of its own.
    void computeDirectLighting(Color& out, RenderContext& context, BSDFSampler* bsdf);

    /// Share of the density with which a light is sampled that is left when only some are chosen.
    float choiceDensity() const { return choice; }
    void setLights(const std::vector<LightInterface*>& all);
    /// Lights that rays can meet, in the scene and around it.
    const std::vector<SceneLight>& getFiniteLights() const { return finite; }
    const std::vector<SceneLight>& getInfiniteLights() const { return infinite; }

private:
    class Faces;
    void run(Color& out, RenderContext& context, const Faces& faces);
    void runLight(Color& out, RenderContext& context, u32 index, const Faces& faces);

    HostRenderer& renderer;
    std::vector<SceneLight> lights, finite, infinite;
    float choice = 1.0f;
};

}  // namespace Tarnkit
