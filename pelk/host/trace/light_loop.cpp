#include "pelk/host/trace/light_loop.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "pelk/contract/samplers.h"
#include "pelk/contract/surface_properties.h"
#include "pelk/host/trace/host_renderer.h"
#include "pelk/host/trace/sampling.h"

namespace Tarnkit {

namespace {

/// More lights than this are not all visited at a hit.
constexpr u32 kMaxVisits = 64;

constexpr float kPi = std::numbers::pi_v<float>;

/// The density that stands for certainty: of a light without extent.
constexpr float kCertain = 1e18f;

/// The density as samplers weight it against their own. A light whose rays nothing stops is not
/// left to indirect rays, which something might stop.
float densityForEval(const SceneLight& light, const LightSample& sample, float density) {
    if (!(sample.density > 0.0f) || !light.castsShadows)
        return kCertain;
    return std::min(kCertain, 2.0f * kPi * density);
}

/// By how much a highlight counts. One that an indirect ray sees is a caustic where it came from.
float causticFactor(const RenderContext& c) {
    if (!(c.rayType & kRayGi))
        return 1.0f;
    if (!c.renderer->sequenceData.reflectiveGi)
        return 0.0f;
    if (!c.gathers)
        return 1.0f;  // a mirror on the way has counted already
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
    // Of that many lights each is taken with this probability.
    choice = lights.size() > kMaxVisits
                 ? static_cast<float>(kMaxVisits) / static_cast<float>(lights.size())
                 : 1.0f;
}

/// The faces that a sampler shows to lights on the viewer's side and to lights beyond. A sampler
/// may have one object for both sides, so a face is asked for anew before each use.
class LightLoop::Faces {
public:
    explicit Faces(BRDFSampler* only_) : only(only_) {}

    Faces(BSDFSampler* bsdf_, bool backSide)
        : bsdf(bsdf_),
          viewerSide(backSide ? kBackSide : kFrontSide),
          farSide(backSide ? kFrontSide : kBackSide) {
        BRDFSampler* far = bsdf->getBRDF(farSide);
        BRDFSampler* viewer = bsdf->getBRDF(viewerSide);
        hasFar = far && viewer && far != viewer;
        // Made with a turned context: the one face there is gets the lights of the viewer's side.
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
    run(out, hostContext(context), Faces(sampler));
}

void LightLoop::computeDirectLighting(Color& out, RenderContext& c, BSDFSampler* bsdf) {
    out = Color(0);
    const Faces faces(bsdf, c.backSide != 0);
    if (BRDFSampler* viewer = faces.viewer()) {
        // What a matte is lit through says nothing of the surface that asks for indirect light.
        const bool matte = c.surfaceProperties && c.surfaceProperties->matte_surface;
        Color white(1);
        c.diffuseIsBlack = !matte && faces.isSingle() && viewer->getDiffuseColor(white) == Color(0);
        run(out, c, faces);
    }
}

void LightLoop::run(Color& out, RenderContext& c, const Faces& faces) {
    if (lights.empty())
        return;
    const ScopedValue transparency(c.resultTransparency, faces.viewer()->getTransparency(c));
    const u32 count = static_cast<u32>(lights.size());
    if (count <= kMaxVisits) [[likely]] {
        for (u32 index = 0; index < count; ++index)
            runLight(out, c, index, faces);
        return;
    }
    const auto first =
        static_cast<u32>(c.random(RandomUse::LightChoice).x * static_cast<float>(count));
    for (u32 visit = 0; visit < kMaxVisits; ++visit) {
        // Lights are taken at even steps from a random first one: each is as likely as any other.
        const u32 step = static_cast<u32>(u64{visit} * count / kMaxVisits);
        runLight(out, c, (first + step) % count, faces);
    }
}

void LightLoop::runLight(Color& out, RenderContext& c, u32 index, const Faces& faces) {
    const SceneLight& light = lights[index];
    if (c.environment && light.isDome)
        return;
    const Random2 random = c.random(RandomUse::Light, index);
    LightSample sample;
    if (!light.plugin->sample(c, random.x, random.y, sample))
        return;
    const bool before = (dot(c.geomNormal, sample.direction) > 0.0f) != (c.backSide != 0);
    BRDFSampler* face = before ? faces.viewer() : faces.beyond();
    if (!face)
        return;
    const bool hasExtent = sample.density > 0.0f;
    const float density = sample.density * choice;
    Color unshadowed =
        hasExtent ? sample.radiance * (1.0f / (kPi * density)) : sample.radiance * (1.0f / choice);
    Color shadowed = unshadowed;
    if (light.castsShadows && !(c.shadeFlags & kShadeNoShadows))
        shadowed = renderer.shadowed(c, sample.direction, sample.distance, unshadowed);

    const float highlights = light.affectsSpecular ? causticFactor(c) : 0.0f;
    const float evalDensity = densityForEval(light, sample, density);
    const ScopedValue normal(c.normal, face->getDiffuseNormal(c));
    if (highlights != 0.0f && highlights != 1.0f && !(c.shadedFlags & kShadedMatte)) {
        Color arrives = shadowed, asked = unshadowed;
        out += highlights *
               face->eval(c, sample.direction, arrives, asked, evalDensity, kEvalSpecular);
    }
    const u32 noSpecular = highlights == 1.0f ? 0u : u32{kRayNoSpecular};
    const ScopedValue rayType(c.rayType, c.rayType | noSpecular);
    out += face->eval(c, sample.direction, shadowed, unshadowed, evalDensity,
                      kEvalDiffuse | kEvalSpecular);
    face->multiplyLight(1.0f);
    face->lightFinished(static_cast<int>(index));
}

}  // namespace Tarnkit
