#include "pelk/host/plugins/bsdf_glass.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "pelk/contract/param_table.h"
#include "pelk/contract/shading.h"
#include "pelk/host/trace/render_context.h"
#include "pelk/shading_math/refraction.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    colorParam("reflection", &GlassParams::reflection, Color(1), "Colour of what is mirrored"),
    colorParam("refraction", &GlassParams::refraction, Color(1),
               "Colour of what passes, taken at each surface"),
    floatParam("ior", &GlassParams::ior, 1.5f, "Index of refraction, without a volume",
               "minValue=(0.1), maxValue=(100)"),
    floatParam("roughness", &GlassParams::roughness, 0.0f,
               "0 - clear, 1 - frosted; its square is the width of highlights",
               "minValue=(0), maxValue=(1)"),
    floatParam("tail", &GlassParams::tail, 2.0f, "How steeply highlights fall off, 0 to 10",
               "minValue=(0), maxValue=(10)"),
    pluginParam<PelkVolume>("volume", &GlassParams::volume, "Medium behind the surface"),
    boolParam("pass_shadows", &GlassParams::passShadows, false,
              "Light passes straight through, in the place of refracted caustics"),
};

}  // namespace

void GlassSampler::set(const GlassLook& newLook, PelkContext& context, bool singleSided_) {
    look = &newLook;
    singleSided = singleSided_;
    lobe.place(look->shape, context);
    // By the geometric side, as the stack of media is kept, even if the hit was turned over.
    const bool leaves = hostContext(context).isInside();
    PelkVolume* const outside = context.currentVolume(leaves ? look->volume : nullptr);
    const float outer = outside ? outside->getIOR(context) : 1.0f;
    const float inner = look->volume->getIOR(context);
    n = leaves ? outer / inner : inner / outer;
    lights = lightSearchAt(context, tracesMirrorRays(context));
}

Color GlassSampler::eval(PelkContext& context, const Vector& direction, Color& lightColor,
                         Color& origLightColor, float probLight, int flags) {
    Color light;
    const bool wanted = (flags & kEvalSpecular) && !(context.rayType & kRayNoSpecular);
    if (wanted && lights != LightSearch::OwnRays) {
        float pdf;
        float value = lobe.eval(direction, pdf);
        if (value > 0.0f) {
            const float cosine = -dot(lobe.view, lobe.facetFor(direction));
            const float share = fresnelShare(std::clamp(cosine, 0.0f, 1.0f), n);
            value *= share;
            if (lights == LightSearch::Both)
                value *= powerShare(probLight, pdf * share);
            light = lightColor * look->reflection * value;
        }
    }
    lightColor = origLightColor = Color(0);
    return light;
}

int GlassSampler::getNumSamples(PelkContext&, int) {
    return 1;
}

Color GlassSampler::getTransparency(PelkContext& context) {
    if (!look->passesShadows || !(context.rayType & kRayShadow))
        return Color(0);
    hostContext(context).replacesRefraction = true;
    return look->refraction * (1.0f - fresnelShare(std::max(0.0f, lobe.viewCosine()), n));
}

void GlassSampler::chooseReflection(const PelkContext& context, const FacetSample& sample,
                                    float share) {
    chosen.refracts = false;
    chosen.direction = sample.direction;
    chosen.weight = leavesOnViewerSide(context, sample.direction) ? sample.weight : 0.0f;
    chosen.density = densityOfOwnRay(lights, lobe.shape,
                                     sample.pdf * share * (0.5f * std::numbers::inv_pi_v<float>));
}

bool GlassSampler::chooseRefraction(const PelkContext& context, const Vector& facet) {
    // The facet normal faces the viewer and n is relative to the viewer's side: the ray always
    // enters.
    const Refraction ray = refract(lobe.view, facet, n, context.rayDerivX, context.rayDerivY);
    if (ray.total)
        return false;
    chosen.refracts = true;
    chosen.direction = ray.direction;
    chosen.derivX = ray.derivX;
    chosen.derivY = ray.derivY;
    chosen.weight = leavesOnViewerSide(context, ray.direction)
                        ? 0.0f
                        : lobe.refractedWeight(facet, ray.direction);
    // Where the ray began under MIS, its shadow rays have brought the lights beyond in full
    // already. Any other ray, as the camera's or a mirror's, sees them through the glass alone.
    const bool covered = look->passesShadows && hostContext(context).bsdfDensity >= 0.0f;
    chosen.density = covered ? kNegligibleDensity : -1.0f;
    return true;
}

void GlassSampler::choose(PelkContext& context) {
    const RenderContext& hit = hostContext(context);
    const FacetSample sample = lobe.sample(hit.random(RandomUse::Facet));
    const float cosine = std::clamp(-dot(lobe.view, sample.facet), 0.0f, 1.0f);
    const float share = fresnelShare(cosine, n);
    const float fork = hit.random(RandomUse::Fork).x;
    if (fork < share || !chooseRefraction(context, sample.facet))
        chooseReflection(context, sample, share);
}

PelkContext* GlassSampler::getNewContext(PelkContext& context, int& sampler, int doDiffuse) {
    if (doDiffuse == kWithoutOwnRays)
        return nullptr;
    choose(context);
    sampler = chosen.refracts;
    if (chosen.refracts)
        return context.newSpawnedContext(2, look->refraction, kRayRefract, chosen.direction);
    if (lights == LightSearch::LightLoop)
        return nullptr;
    return context.newSpawnedContext(
        1, look->reflection, lobe.shape.isSmooth() ? kSpawnMirror : kRayReflect, chosen.direction);
}

float GlassSampler::setupContext(PelkContext& context, PelkContext& newContext, float, int) {
    setMirrorRay(context, newContext, chosen.direction);
    if (chosen.refracts) {
        newContext.rayOrigin = context.refractionOrigin;
        newContext.rayDerivX = chosen.derivX;
        newContext.rayDerivY = chosen.derivY;
    }
    hostContext(newContext).bsdfDensity = chosen.density;
    return chosen.weight;
}

BRDFSampler* GlassSampler::getBRDF(BSDFSide side) {
    return singleSided && side == kBackSide ? nullptr : this;
}

PelkVolume* GlassSampler::getVolume(PelkContext&) {
    return look->volume;
}

ParamRows<GlassParams> GlassParams::table() {
    return kParams;
}

void BSDFGlass::frameBegin(PelkRenderer& renderer) {
    PelkPlugin::frameBegin(renderer);
    PelkVolume* const given = findInterface<PelkVolume>(params.volume);
    look = {params.reflection, params.refraction, FacetShape::of(params.roughness, params.tail),
            given ? given : &ownVolume, params.passShadows != 0};
}

}  // namespace Tarnkit
