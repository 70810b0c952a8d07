#include "pelk/host/trace/light_loop.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "pelk/base/limits.h"
#include "pelk/contract/samplers.h"
#include "pelk/contract/surface_properties.h"
#include "pelk/host/trace/host_renderer.h"
#include "pelk/host/trace/sampling.h"

namespace Tarnkit {

namespace {

/// With more lights than this, a hit samples only a subset of so many.
constexpr u32 kMaxVisits = 64;

constexpr float kPi = std::numbers::pi_v<float>;

/// The density of a light sample as BRDFSampler::eval takes it for MIS: 2 pi times that per solid
/// angle. A light that casts no shadows shines through geometry that would stop a BSDF ray, so such
/// rays don't look for it (see HostRenderer) and next-event estimation keeps its full weight. So it
/// does where the sample `replacesRefraction`.
float densityForEval(const SceneLight& light, const LightSample& sample, float density,
                     bool replacesRefraction) {
    if (!(sample.density > 0.0f) || !light.castsShadows || replacesRefraction)
        return kDeltaDensity;
    return std::min(kDeltaDensity, 2.0f * kPi * density);
}

/// Factor of the specular part of direct light. At a hit of an indirect diffuse ray a highlight is
/// a caustic on the surface where that ray began, so the settings of caustics scale it: 0 where
/// they are off.
float causticFactor(const RenderContext& c) {
    if (!(c.rayType & kRayGi))
        return 1.0f;
    if (!c.renderer->sequenceData.reflectiveGi)
        return 0.0f;
    if (!c.isIndirectDiffuse)
        return 1.0f;  // behind a mirror: newSpawnedContext has scaled its ray (resultScale)
    return c.receiveCaustics *
           (c.surfaceProperties ? c.surfaceProperties->generate_caustics : 1.0f);
}

}  // namespace

void LightLoop::setLights(const std::vector<LightInterface*>& all) {
    lights.clear();
    finite.clear();
    infinite.clear();
    for (LightInterface* light : all) {
        lights.push_back({light, light->isDome(), light->castsShadows(), light->affectsSpecular()});
        if (light->hasExtent())
            (light->isInfinite() ? infinite : finite).push_back(lights.back());
    }
    const auto isDome = [](const SceneLight& light) { return light.isDome; };
    dome = std::any_of(lights.begin(), lights.end(), isDome);
    choice = lights.size() > kMaxVisits
                 ? static_cast<float>(kMaxVisits) / static_cast<float>(lights.size())
                 : 1.0f;
}

/// The BRDFs with which a sampler reflects lights on the viewer's side and transmits those behind
/// the surface. A sampler may answer getBRDF with one object for both sides, which it switches
/// over, so the side's BRDF is asked for again before each use.
class LightLoop::SideBRDFs {
public:
    explicit SideBRDFs(BRDFSampler* only_) : only(only_) {}

    SideBRDFs(BSDFSampler* bsdf_, bool backSide)
        : bsdf(bsdf_),
          viewerSide(backSide ? kBackSide : kFrontSide),
          farSide(backSide ? kFrontSide : kBackSide) {
        BRDFSampler* far = bsdf->getBRDF(farSide);
        BRDFSampler* viewer = bsdf->getBRDF(viewerSide);
        hasFar = far && viewer && far != viewer;
        // A one-sided sampler made for a turned-over hit: its one BRDF is the viewer's.
        if (!viewer && far)
            viewerSide = farSide;
    }

    BRDFSampler* viewer() const { return bsdf ? bsdf->getBRDF(viewerSide) : only; }
    BRDFSampler* beyond() const { return hasFar ? bsdf->getBRDF(farSide) : nullptr; }
    bool isSingle() const { return !hasFar; }

private:
    BRDFSampler* only = nullptr;
    BSDFSampler* bsdf = nullptr;
    BSDFSide viewerSide = kFrontSide, farSide = kBackSide;
    bool hasFar = false;
};

void LightLoop::computeDirectLight(Color& out, PelkContext& context, BRDFSampler* sampler) {
    out = Color(0);
    PluginCall& call = context.threadData->call;
    const char* const outer = std::exchange(call.operation, "eval");
    run(out, hostContext(context), SideBRDFs(sampler));
    call.operation = outer;
}

void LightLoop::computeDirectLighting(Color& out, RenderContext& c, BSDFSampler* bsdf) {
    out = Color(0);
    PluginCall& call = c.threadData->call;
    const char* const outer = std::exchange(call.operation, "eval");
    const SideBRDFs sides(bsdf, c.backSide != 0);
    if (BRDFSampler* viewer = sides.viewer()) {
        // A black diffuse part needs no indirect light either (PathGi::irradiance). Not so for a
        // matte: its direct light goes through another sampler than its indirect light.
        const bool matte = c.surfaceProperties && c.surfaceProperties->matte_surface;
        Color white(1);
        c.diffuseIsBlack = !matte && sides.isSingle() && viewer->getDiffuseColor(white) == Color(0);
        run(out, c, sides);
    }
    call.operation = outer;
}

void LightLoop::run(Color& out, RenderContext& c, const SideBRDFs& sides) {
    if (lights.empty())
        return;
    const ScopedValue transparency(c.resultTransparency, sides.viewer()->getTransparency(c));
    const u32 count = static_cast<u32>(lights.size());
    if (count <= kMaxVisits) [[likely]] {
        for (u32 index = 0; index < count; ++index)
            runLight(out, c, index, sides);
        return;
    }
    const auto first =
        static_cast<u32>(c.random(RandomUse::LightChoice).x * static_cast<float>(count));
    for (u32 visit = 0; visit < kMaxVisits; ++visit) {
        // Systematic sampling: even steps from a random first light, so that all are equally
        // likely.
        const u32 step = static_cast<u32>(u64{visit} * count / kMaxVisits);
        runLight(out, c, (first + step) % count, sides);
    }
}

void LightLoop::runLight(Color& out, RenderContext& c, u32 index, const SideBRDFs& sides) {
    const SceneLight& light = lights[index];
    if (c.environment && light.isDome)
        return;
    const Random2 random = c.random(RandomUse::Light, index);
    LightSample sample;
    if (!light.plugin->sample(c, random.x, random.y, sample))
        return;
    const bool before = (dot(c.geomNormal, sample.direction) > 0.0f) != (c.backSide != 0);
    BRDFSampler* brdf = before ? sides.viewer() : sides.beyond();
    if (!brdf)
        return;
    const bool hasExtent = sample.density > 0.0f;
    const float density = sample.density * choice;
    Color unshadowed =
        hasExtent ? sample.radiance * (1.0f / (kPi * density)) : sample.radiance * (1.0f / choice);
    Color shadowed = unshadowed;
    bool replacesRefraction = false;
    if (light.castsShadows && !(c.shadeFlags & kShadeNoShadows))
        shadowed = renderer.shadowed(c, sample.direction, sample.distance, unshadowed,
                                     &replacesRefraction);

    const float highlights = light.affectsSpecular ? causticFactor(c) : 0.0f;
    const float evalDensity = densityForEval(light, sample, density, replacesRefraction);
    const ScopedValue normal(c.normal, brdf->getDiffuseNormal(c));
    if (highlights != 0.0f && highlights != 1.0f && !(c.shadedFlags & kShadedMatte)) {
        Color arrives = shadowed, asked = unshadowed;
        out += highlights *
               brdf->eval(c, sample.direction, arrives, asked, evalDensity, kEvalSpecular);
    }
    const u32 noSpecular = highlights == 1.0f ? 0u : u32{kRayNoSpecular};
    const ScopedValue rayType(c.rayType, c.rayType | noSpecular);
    out += brdf->eval(c, sample.direction, shadowed, unshadowed, evalDensity,
                      kEvalDiffuse | kEvalSpecular);
    brdf->multiplyLight(1.0f);
    brdf->lightFinished(static_cast<int>(index));
}

}  // namespace Tarnkit
