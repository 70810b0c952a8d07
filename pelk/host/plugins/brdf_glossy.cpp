#include "pelk/host/plugins/brdf_glossy.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "pelk/contract/param_table.h"
#include "pelk/contract/shading.h"
#include "pelk/host/trace/render_context.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    colorParam("color", &GlossyParams::color, Color(1), "Colour of what is mirrored"),
    floatParam("roughness", &GlossyParams::roughness, 0.3f,
               "0 - a mirror, 1 - almost matt; its square is the width of highlights",
               "minValue=(0), maxValue=(1)"),
    floatParam("tail", &GlossyParams::tail, 2.0f,
               "How steeply highlights fall off, 0 to 10: below 2 they glow far around, above 2 "
               "they end soon",
               "minValue=(0), maxValue=(10)"),
    floatParam("ior", &GlossyParams::ior, 0.0f,
               "Index of refraction of the coat: it mirrors less where it is seen from above. 0 - "
               "the same from all sides",
               "minValue=(0), maxValue=(100)"),
};

/// Lower bound of the albedo in the energy compensation, so that grazing views aren't amplified
/// without bound.
constexpr float kLeastAlbedo = 0.05f;

}  // namespace

float GlossyLook::albedoAt(float cosine) const {
    constexpr int kSteps = static_cast<int>(std::tuple_size_v<decltype(albedo)>) - 1;
    const float place = std::fmin(std::fmax(cosine, 0.0f), 1.0f) * kSteps;
    const int cell = std::min(static_cast<int>(place), kSteps - 1);
    const float part = place - static_cast<float>(cell);
    return albedo[cell] * (1.0f - part) + albedo[cell + 1] * part;
}

float GlossySampler::fresnel(float cosine) const {
    return ior > 0.0f ? fresnelShare(std::clamp(cosine, 0.0f, 1.0f), ior) : 1.0f;
}

void GlossySampler::set(const GlossyLook& look, PelkContext& context, bool singleSided_) {
    lobe.place(look.shape, context);
    ior = look.ior;
    singleSided = singleSided_;
    const float cosine = lobe.viewCosine();
    passes = complement(look.color * fresnel(cosine));
    const float lost = 1.0f / std::max(look.albedoAt(cosine), kLeastAlbedo) - 1.0f;
    color = look.color * (Color(1) + look.color * (fresnel(1.0f) * std::max(0.0f, lost)));
    // getBRDF alone can't hide the back: where a side has no face the host takes the other side's.
    if (singleSided && context.backSide)
        color = passes = Color(0);
    lights = lightSearchAt(context, tracesMirrorRays(context) && !(mean(color) < 1e-10f));
}

Color GlossySampler::getDiffuseColor(Color& lightColor) {
    lightColor *= passes;
    return Color(0);
}

Color GlossySampler::getLightMult(Color& lightColor) {
    const Color mirrors = lightColor * complement(passes);
    lightColor *= passes;
    return mirrors;
}

Color GlossySampler::eval(PelkContext& context, const Vector& direction, Color& lightColor,
                          Color& origLightColor, float probLight, int flags) {
    Color light;
    const bool wanted = (flags & kEvalSpecular) && !(context.rayType & kRayNoSpecular);
    if (wanted && lights != LightSearch::OwnRays) {
        float pdf;
        float value = lobe.eval(direction, pdf);
        if (value > 0.0f) {
            value *= fresnel(-dot(lobe.view, lobe.facetFor(direction)));
            if (lights == LightSearch::Both)
                value *= powerShare(probLight, pdf);
            light = lightColor * color * value;
        }
    }
    lightColor *= passes;
    origLightColor *= passes;
    return light;
}

int GlossySampler::getNumSamples(PelkContext&, int) {
    return lights == LightSearch::LightLoop ? 0 : 1;
}

PelkContext* GlossySampler::getNewContext(PelkContext& context, int& sampler, int doDiffuse) {
    if (lights == LightSearch::LightLoop || doDiffuse == kWithoutOwnRays)
        return nullptr;
    sampler = 0;
    return context.newSpawnedContext(1, color, lobe.shape.isSmooth() ? kSpawnMirror : kRayReflect,
                                     -context.rayDir);
}

float GlossySampler::setupContext(PelkContext& context, PelkContext& newContext, float, int) {
    const RenderContext& hit = hostContext(context);
    FacetSample s = lobe.sample(hit.random(RandomUse::Facet));
    if (!leavesOnViewerSide(context, s.direction)) {
        if (!lobe.shape.isSmooth())
            s.weight = 0.0f;
        s.facet = context.backSide ? -context.geomNormal : context.geomNormal;
        s.direction = mirrored(lobe.view, s.facet);
    }
    setMirrorRay(context, newContext, s.direction);
    hostContext(newContext).bsdfDensity =
        densityOfOwnRay(lights, lobe.shape, s.pdf * (0.5f * std::numbers::inv_pi_v<float>));
    return s.weight * fresnel(-dot(lobe.view, s.facet));
}

BRDFSampler* GlossySampler::getBRDF(BSDFSide side) {
    return singleSided && side == kBackSide ? nullptr : this;
}

ParamRows<GlossyParams> GlossyParams::table() {
    return kParams;
}

void BRDFGlossy::frameBegin(PelkRenderer& renderer) {
    PelkPlugin::frameBegin(renderer);
    look.color = params.color;
    look.ior = params.ior;
    look.shape = FacetShape::of(params.roughness, params.tail);
    // The first entry stands for grazing views; at a cosine of 0 the lobe is undefined.
    const float step = 1.0f / static_cast<float>(look.albedo.size() - 1);
    for (std::size_t i = 0; i < look.albedo.size(); ++i)
        look.albedo[i] = look.shape.albedo(std::max(static_cast<float>(i) * step, 0.01f));
}

}  // namespace Tarnkit
