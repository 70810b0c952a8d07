#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "pelk/contract/renderer.h"
#include "pelk/host/trace/intersector.h"
#include "pelk/host/trace/light_loop.h"
#include "pelk/host/trace/path_gi.h"
#include "pelk/host/trace/render_thread.h"
#include "pelk/host/trace/scene_object.h"

namespace Tarnkit {

/// Interned strings: equal texts get one number, so that materials compare names at hits without
/// reading them. Filled while frames begin, on one thread.
class HostStringTable final : public StringTable {
public:
    StringHandle intern(const char* text) override;

private:
    std::unordered_map<std::string, u32> ids;
};

/// The integrator: a unidirectional path tracer with next-event estimation (LightLoop), MIS and
/// indirect diffuse light (PathGi), in which the materials spawn specular rays themselves and the
/// renderer traces them. Set up once per render by RenderSetup, which writes the public fields;
/// from then on every render thread calls it at once, with contexts of its own.
class HostRenderer final : public PelkRenderer {
public:
    HostRenderer();

    void evalEnvironment(PelkContext& context) override;
    void traceRay(PelkContext& context) override;
    StringTable* getStringTable() override { return &strings; }

    /// Traces a ray whose fields are set and writes traceResult and traceAlpha. Transparent
    /// surfaces are crossed with the throughput that they leave; an opaque one, a light or the
    /// environment ends the ray. One that isTraceable refuses brings black and marks the sample as
    /// bad.
    void trace(RenderContext& context);
    /// Visibility of a light sample from the hit: `light` times the transparency of each surface up
    /// to `distance` along `direction`; black if one is opaque. `replacesRefraction`, unless null,
    /// gets whether a surface on the way refracts other rays (pass_shadows of BSDFGlass): the
    /// sample then stands for their caustic, and a BSDF ray in its direction doesn't reach the
    /// light, so next-event estimation keeps its full weight.
    Color shadowed(RenderContext& context, const Vector& direction, double distance, Color light,
                   bool* replacesRefraction = nullptr);
    /// Radiance of the environment along a ray that has hit nothing: the background colour, unless
    /// the ray meets a dome, or a material's environment override, plus the infinite lights with
    /// their MIS weights; or the backplate in place of all of these.
    Color environmentAlong(RenderContext& context) const;
    /// Radiance that comes along `direction` from the scene's background colour, black in a scene
    /// with a dome, or from the environment with which a material overrides it for the rays that it
    /// spawns. No lights.
    Color backgroundAlong(RenderContext& context, const Vector& direction) const;

    /// A context for a ray from the hit of `parent`, with all that rays inherit. The caller writes
    /// direction, type, depths and weights, and releases it. `branch` tells the rays of one hit
    /// apart, so that their random numbers are independent.
    RenderContext* spawn(RenderContext& parent, u32 branch);

    std::vector<std::unique_ptr<Shape>> shapes;  ///< of the objects, which point to them
    std::vector<std::unique_ptr<SceneObject>> objects;
    Intersector intersector;
    LightLoop lightLoop{*this};
    PathGi gi{*this};
    Color background;  ///< radiance of the scene's background colour
    /// By pixel, in place of the environment for camera rays; may be null.
    TextureInterface* backplate = nullptr;

    /// Fills the hit fields of a context whose triangle and barycentric coordinates are set.
    void fillHit(RenderContext& context, u32 object, float distance);
    /// Has the material shade the hit. Where one of its four results isn't finite they become
    /// opaque black, and the sample is marked as bad, or one NaN would spoil the pixel.
    void shadeHit(RenderContext& context);

private:
    /// Whether the backplate stands in for the environment: for camera rays and background lookups.
    bool seesBackplate(const RenderContext& context) const;
    /// The nearest light within `limit` that the ray may hit; false if there is none.
    bool hitLight(const RenderContext& context, double limit, LightHit& nearest) const;
    /// What a light that the ray has hit adds to it: its radiance, times the MIS weight of the ray
    /// if next-event estimation samples the same light.
    Color weightedRadiance(const RenderContext& context, const LightHit& hit) const;

    HostStringTable strings;
};

}  // namespace Tarnkit
