#pragma once

#include <vector>

#include "pelk/contract/renderer.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

class BSDFSampler;
class HostRenderer;
class RenderContext;

/// A light of the scene, with its answers for the frame: they are asked for at every hit, and a
/// field costs less than a virtual call.
struct SceneLight {
    LightInterface* plugin;
    bool isDome, castsShadows, affectsSpecular;
};

/// Direct light by next-event estimation. At each hit every light is sampled once; a scene with
/// very many lights gets a random subset per hit, whose samples are divided by the probability of
/// being in it. The sampler's eval weights each sample against the host's indirect diffuse rays
/// (MIS, power heuristic); the other half of that weight is taken by HostRenderer, where such a ray
/// hits a light. Rays that a material spawns itself see lights in full, so its eval leaves their
/// lobe out; only the glossy samplers of this host weight their own rays too (LightSearch::Both).
/// Part of HostRenderer. setLights is called once before rendering; all else on all render threads.
class LightLoop final : public LightManager {
public:
    explicit LightLoop(HostRenderer& renderer_) : renderer(renderer_) {}

    /// The lights on the viewer's side of the hit. `sampler` is taken as the viewer side's BRDF;
    /// getBRDF isn't asked.
    void computeDirectLight(Color& out, PelkContext& context, BRDFSampler* sampler) override;
    /// All lights: those on the viewer's side through the viewer's side's BRDF, those behind the
    /// surface through the far side's BRDF if it is a different one (a translucent surface).
    void computeDirectLighting(Color& out, RenderContext& context, BSDFSampler* bsdf);

    /// Probability, 0 to 1, that a given light is sampled at a hit: the factor between the density
    /// of LightInterface::sample and the one that MIS needs. 1 unless there are very many lights.
    float choiceProbability() const { return choice; }
    /// Whether a dome surrounds the scene, seen or unseen.
    bool hasDome() const { return dome; }
    /// The lights of the render, which stay the caller's. Their parameters are up to date.
    void setLights(const std::vector<LightInterface*>& all);
    /// Lights that a ray can hit, which delta lights are not: inside the scene, and at infinity.
    const std::vector<SceneLight>& getFiniteLights() const { return finite; }
    const std::vector<SceneLight>& getInfiniteLights() const { return infinite; }

private:
    class SideBRDFs;
    void run(Color& out, RenderContext& context, const SideBRDFs& sides);
    void runLight(Color& out, RenderContext& context, u32 index, const SideBRDFs& sides);

    HostRenderer& renderer;
    std::vector<SceneLight> lights, finite, infinite;
    float choice = 1.0f;
    bool dome = false;
};

}  // namespace Tarnkit
