#include "pelk/materials/matte/mtl_wrapper.h"

#include <algorithm>
#include <cmath>

#include "pelk/contract/shading.h"
#include "pelk/materials/descriptor/nesting.h"
#include "pelk/materials/matte/background.h"
#include "pelk/materials/matte/exclude_table.h"

namespace {

/// Light below this is taken as none, so that quotients stay finite.
constexpr float kDark = 1e-6f;

/// Fragments that a base asks for at a hit go back when the hit ends.
struct HitFragments : FragmentList {
    explicit HitFragments(FragmentManager* fragmentManager) : FragmentList{fragmentManager} {}
    HitFragments(const HitFragments&) = delete;
    HitFragments& operator=(const HitFragments&) = delete;
    ~HitFragments() { end(); }
};

/// `amount` of the colour over white.
Color overWhite(Color color, float amount) {
    return color * amount + Color(1.0f - amount);
}

float shadowShare(float unshadowed, float shadowed) {
    return unshadowed > kDark ? 1.0f - shadowed / unshadowed : 0.0f;
}

/// What the light leaves of the background in one channel. Where more light comes with shadows than
/// without, nothing is dimmed and the surplus shows as such.
float shadowFactor(float unshadowed, float shadowed, float& result) {
    const float surplus = shadowed - unshadowed;
    if (std::fabs(surplus) < kDark)
        return 1.0f;
    if (surplus > 0.0f) {
        result += surplus;
        return 1.0f;
    }
    return unshadowed < kDark ? 1.0f : shadowed / unshadowed;
}

/// The text has a whole number for a multiplier, which then says "some" or "none".
int roundedUp(float value) {
    if (std::isnan(value))
        return 0;
    // The largest float below 2^31.
    return static_cast<int>(std::clamp(std::ceil(value), -2147483648.0f, 2147483520.0f));
}

}  // namespace

void MtlWrapper::renderBegin(PelkRenderer& renderer) {
    fragmentManagers.destroy();
    RenderPooled::renderBegin(renderer);
    fragmentManagers.resize(renderer.sequenceData.numThreads);
    paramList.cacheParams(0.0, TracePoint());
    params.updateSurfaceFlags();
    listChannelIndices(params.channels, channelIndices);
}

void MtlWrapper::renderEnd(PelkRenderer& renderer) {
    RenderPooled::renderEnd(renderer);
    channelIndices.clear();
    params.channels.count = 0;
    fragmentManagers.destroy();
}

void MtlWrapper::frameBegin(PelkRenderer& renderer) {
    PelkRTMaterial::frameBegin(renderer);
    MessageLog* log = renderer.sequenceData.log;
    fillExcludeTable(paramList.getParam(kReflectionExclude), params.reflectionExclude, log);
    fillExcludeTable(paramList.getParam(kRefractionExclude), params.refractionExclude, log);
    baseMaterial = findInterface<MaterialInterface>(params.base_material);
    baseBSDF = findInterface<BSDFInterface>(params.base_material);
    params.updateGiSurfaceWord();
    params.propertiesValid = 1;
    params.updateMatteSurface();
}

void MtlWrapper::frameEnd(PelkRenderer&) {
    params.reflectionExclude.clear();
    params.refractionExclude.clear();
}

MtlWrapper::Road MtlWrapper::enter(PelkContext& context) {
    context.surfaceProperties = &params;
    if (!params.matte_surface)
        return Road::Ordinary;
    const PelkContext* parent = context.parentContext;
    if (params.no_gi_on_other_mattes && parent && parent->surfaceProperties &&
        parent->surfaceProperties->matte_surface)
        return Road::Hidden;
    if (context.rayType & (kRayShadow | kRayGiLike | kRayNoMatte))
        return Road::Ordinary;
    const bool isCameraRay = (context.rayType & kRayCamera) && context.traceDepth == 0;
    const bool seesMatte = isCameraRay || (params.matte_for_secondary_rays && context.giDepth == 0);
    return seesMatte ? Road::Matte : Road::Ordinary;
}

void MtlWrapper::shade(PelkContext& context) {
    switch (enter(context)) {
        case Road::Hidden:
            setNothing(context);
            if (context.resultFragment)
                context.resultFragment->clear(1);
            return;
        case Road::Matte:
            return shadeMatte(context);
        case Road::Ordinary:
            return shadeOrdinary(context);
    }
}

void MtlWrapper::shadeOrdinary(PelkContext& context) {
    if (baseMaterial)
        callShade(*baseMaterial, context);
    else
        setOpaqueBlack(context);
    context.surfaceProperties = &params;  // the base may have its own
    applyAlphaContribution(context);
    if (context.rayType & kRayGi)
        context.resultColor *= params.generate_gi;
}

void MtlWrapper::applyAlphaContribution(PelkContext& context) const {
    if (!(context.shadeFlags & kShadeAlphaCounts))
        return;
    const float c = params.alpha_contribution;
    if (c < 0.0f) {
        context.resultAlpha = Color(0);
        context.resultAlphaTransparency = Color(1.0f + c) - context.resultAlphaTransparency * c;
    } else if (c >= 0.0f) {  // what is no number changes nothing
        context.resultAlpha *= c;
        context.resultAlphaTransparency = context.resultAlphaTransparency * c + Color(1.0f - c);
    }
}

void MtlWrapper::shadeMatte(PelkContext& context) {
    context.shadedFlags |= kShadedMatte;
    const Color behind =
        lookUpBackground(context, params.matte_for_secondary_rays == kSecondaryProjected);
    setFullyTransparent(context);
    if (context.resultFragment)
        context.resultFragment->clear(1);

    Color fade(1);  // what the reflections leave of the background
    float alphaValue = 0.0f;
    if (params.maya_background_shader_compatibility)
        alphaValue = showMirror(context);
    else
        fade = showBase(context);

    Color shadow = params.shadows ? catchShadows(context) : Color(1);
    const float brightness = shadowBrightness(context);
    const Color alphaShadow = overWhite(params.affect_alpha ? shadow : Color(1), brightness);
    shadow = overWhite(shadow, brightness);

    const Color opacity = complement(context.resultTransparency);
    const Color left = shadow * fade * opacity;
    const Color background = behind * left;
    context.resultColor += params.shadow_tint_color * complement(shadow) * opacity;
    finishAlpha(context, alphaShadow, params.affect_alpha ? fade : Color(1), alphaValue);

    Fragment* fragment = context.resultFragment;
    if (!fragment) {
        context.resultColor += background;
        return;
    }
    // With channels the host adds the background to the colour itself.
    const Color lost = behind * complement(left);
    fragment->addAlias(kAliasBackgroundLoss, &lost);
    fragment->addAlias(kAliasBackground, &background);
    fragment->addAlias(kAliasImageBackground, &background);
}

/// Takes the base's reflections and refractions as the colour of the hit, the rest of the results
/// as they come. Returns what the reflections leave of the background.
Color MtlWrapper::showBase(PelkContext& context) {
    MatteFragment caught;
    HitFragments fragments(fragmentManagers.manager(context.threadData->threadIndex));
    if (baseMaterial) {
        const ScopedValue<Fragment*> fragment(context.resultFragment, &caught);
        const ScopedValue<FragmentList*> list(context.fragmentList, &fragments);
        callShade(*baseMaterial, context);
        context.surfaceProperties = &params;
    }
    context.resultColor =
        caught.reflection * params.reflection_amount + caught.refraction * params.refraction_amount;
    applyAlphaContribution(context);
    return complement(caught.reflectionFilter * params.reflection_amount);
}

/// Traces the mirror ray of the wrapper's own. Returns the alpha of the surface.
float MtlWrapper::showMirror(PelkContext& context) const {
    const float alphaValue =
        params.alpha_contribution_tex ? params.alpha_contribution_tex->getTexFloat(context) : 0.0f;
    if (tracesMirror(context))
        traceMirror(context, alphaValue);
    return alphaValue;
}

bool MtlWrapper::tracesMirror(const PelkContext& context) const {
    const SequenceData& settings = context.renderer->sequenceData;
    const bool isGlobal = params.trace_depth == -1 || settings.depthOverride;
    if (context.traceDepth >= (isGlobal ? settings.maxRayDepth : params.trace_depth))
        return false;
    return settings.reflectionsEnabled && (!(context.rayType & kRayGi) || settings.reflectiveGi);
}

void MtlWrapper::traceMirror(PelkContext& context, float alphaValue) const {
    const ScopedRay ray(context.newSpawnedContext(1, Color(1), kSpawnMirror, -context.rayDir));
    if (!ray)
        return;
    setMirrorRay(context, *ray, mirrorDirection(context));
    const Color filter = params.reflection_filter_tex
                             ? params.reflection_filter_tex->getTexColor(context).color
                             : Color(1);
    ray->renderer->traceRay(*ray);
    // Negated, so that an alpha that is not a number counts as none.
    const bool seesNothing = params.affect_alpha && !(mean(ray->traceAlpha) > 1e-6f);
    setResults(context, filter * ray->traceResult, Color(0), Color(seesNothing ? 0.0f : alphaValue),
               Color(0));
}

/// What the shadows at the hit leave of the background. A surplus of light goes to the result.
Color MtlWrapper::catchShadows(PelkContext& context) const {
    const SequenceData& settings = context.renderer->sequenceData;
    MatteBSDF catcher;
    catcher.setUp(context, nullptr, kMatteTracesNothing, true);
    Color unused;
    settings.lightManager->computeDirectLight(unused, context, &catcher);
    Color unshadowed = catcher.unshadowedTotal, shadowed = catcher.shadowedTotal;
    setShadowChannels(context, unshadowed, shadowed);
    if (params.gi_amount > 1e-6f) {
        Color giUnshadowed, giShadowed;
        settings.giEngine->evalMatte(context, giUnshadowed, giShadowed);
        unshadowed += giUnshadowed * params.gi_amount;
        shadowed += giShadowed * params.gi_amount;
    }
    Color& result = context.resultColor;
    return {shadowFactor(unshadowed.r, shadowed.r, result.r),
            shadowFactor(unshadowed.g, shadowed.g, result.g),
            shadowFactor(unshadowed.b, shadowed.b, result.b)};
}

void MtlWrapper::setShadowChannels(PelkContext& context, Color unshadowed, Color shadowed) const {
    Fragment* fragment = context.resultFragment;
    if (!fragment)
        return;
    if (params.generate_render_elements)
        fragment->addAlias(kAliasMatteLight, &shadowed);
    const Color lost = unshadowed - shadowed;
    fragment->addAlias(kAliasMatteLightLoss, &lost);
    const Color share = {shadowShare(unshadowed.r, shadowed.r),
                         shadowShare(unshadowed.g, shadowed.g),
                         shadowShare(unshadowed.b, shadowed.b)};
    fragment->addAlias(kAliasMatteShadow, &share);
}

float MtlWrapper::shadowBrightness(PelkContext& context) const {
    return params.maya_background_shader_compatibility && params.shadow_brightness_tex
               ? params.shadow_brightness_tex->getTexFloat(context)
               : params.shadow_brightness;
}

void MtlWrapper::finishAlpha(PelkContext& context, Color shadow, Color fade,
                             float alphaValue) const {
    Color& alpha = context.resultAlpha;
    if (!params.maya_background_shader_compatibility)
        alpha += complement(shadow * fade) * complement(context.resultAlphaTransparency);
    else if (params.affect_alpha && mean(alpha) < 1e-6f)
        alpha = complement(shadow) * alphaValue;
    alpha = {std::clamp(alpha.r, 0.0f, 1.0f), std::clamp(alpha.g, 0.0f, 1.0f),
             std::clamp(alpha.b, 0.0f, 1.0f)};
}

BSDFSampler* MtlWrapper::getBSDF(PelkContext& context, int flags) {
    const Road road = enter(context);
    if (!baseBSDF)
        return nullptr;
    // Taken before the base is asked: if there is no memory, no sampler of the base is lost.
    auto element = pool.borrow(context);
    if (!element)
        return nullptr;
    if (road == Road::Hidden) {
        element->setUp(context, nullptr, kMatteTracesNothing, false);
        return element.handOut();
    }
    ScopedSampler base(context, *baseBSDF, flags);
    context.surfaceProperties = &params;  // the base may have its own
    const bool isMatte = road == Road::Matte;
    element->setUp(context, base.get(), isMatte ? kMatteTracesBlack : kMatteTracesNothing, isMatte);
    base.handOut();
    return element.handOut();
}

void MtlWrapper::releaseBSDF(PelkContext& context, BSDFSampler* sampler) {
    if (!sampler)
        return;
    auto* element = static_cast<PoolElement<MatteBSDF>*>(sampler);
    giveSampler(*baseBSDF, context, element->bsdf);  // bases take a null too
    pool.giveBack(context, element);
}

int MtlWrapper::getMaterialID(PelkContext& context) {
    return baseMaterial ? baseMaterial->getMaterialID(context) : 0;
}

int MtlWrapper::getOpaqueFlags() {
    if (params.matte_surface || params.alpha_contribution != 1.0f || params.alpha_contribution_tex)
        return 0;
    return opaqueFlagsOf(params.base_material);
}

int MtlWrapper::getMaterialSource(void* owner, const char* sourceName, const char* kind,
                                  ShaderSource& source, OCLData& data) {
    if (isSection(kind, kMaterialSection)) {
        source.append("mtl_wrapper\n");
        source.printf("mtlwrapper_generate_gi %d\n", roundedUp(params.generate_gi));
        source.printf("mtlwrapper_receive_gi %d\n", roundedUp(params.receive_gi));
        source.printf("mtlwrapper_matte_surface %d\n", params.matte_surface);
        source.printf("mtlwrapper_matte_shadow %d\n", params.shadows);
        const Color tint = params.shadow_tint_color;
        source.printf("mtlwrapper_matte_shadowColor %f %f %f\n", tint.r, tint.g, tint.b);
    }
    return passThrough(findRTMtl(params.base_material), {owner, sourceName, kind, source, data});
}

RTMtlInterface* MtlWrapper::getMultiMtl() {
    return findMultiMtl(params.base_material);
}
