#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "pelk/contract/renderer.h"
#include "pelk/host/trace/intersector.h"
#include "pelk/host/trace/render_thread.h"
#include "pelk/host/trace/scene_object.h"

namespace Tarnkit {

class HostRenderer;

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

/// Names that materials compare at hits.
class HostStringTable final : public StringTable {
public:
    StringHandle intern(const char* text) override;

private:
    std::unordered_map<std::string, u32> ids;
};

/// Traces rays and shades what they hit.
class HostRenderer final : public PelkRenderer {
public:
    HostRenderer();

    void evalEnvironment(PelkContext& context) override;
    void traceRay(PelkContext& context) override;
    StringTable* getStringTable() override { return &strings; }

    /// Traces a ray that is set up, through transparent surfaces, to its end.
    void trace(RenderContext& context);
    /// Colour of what shines from `distance` along `direction` through what stands in between.
    Color shadowed(RenderContext& context, const Vector& direction, double distance, Color light);
    /// The light of lights around the scene and of the plain surroundings along the ray, or the
    /// backplate.
    Color environmentAlong(RenderContext& context) const;
    /// The plain surroundings, or what overrides them, along a direction.
    Color plainSurroundings(RenderContext& context, const Vector& direction) const;

    /// A spawned context with all that it takes over from `parent`; its direction and type are
    /// still to be set.
    RenderContext* spawn(RenderContext& parent, u32 branch);

    std::vector<std::unique_ptr<SceneObject>> objects;
    Intersector intersector;
    LightLoop lightLoop{*this};
    PathGi gi{*this};
    Color background;                       ///< the plain surroundings
    TextureInterface* backplate = nullptr;  ///< what camera rays see in their place, by the pixel

    /// Fills the hit fields of a context whose triangle and weights are set.
    void fillHit(RenderContext& context, u32 object, float distance);
    /// Has the material shade the hit. Colours that aren't finite end here.
    void shadeHit(RenderContext& context);

private:
    bool seesBackplate(const RenderContext& context) const;
    bool meetLight(const RenderContext& context, double limit, LightHit& nearest) const;
    Color shareOfLight(const RenderContext& context, const LightHit& hit) const;

    HostStringTable strings;
};

}  // namespace Tarnkit
