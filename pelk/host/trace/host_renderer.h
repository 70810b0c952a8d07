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
