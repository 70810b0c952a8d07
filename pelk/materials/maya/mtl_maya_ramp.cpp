#include "pelk/materials/maya/mtl_maya_ramp.h"

#include "pelk/contract/shading.h"

namespace {

using P = MtlRampParams;

constexpr ParamRow<P> positions(const char* name, const char* description) {
    return texturedFloatsParam<P>(name, description);
}

constexpr ParamRow<P> colors(const char* name, const char* description) {
    return textureListParam<P>(name, description);
}

constexpr ParamRow<P> values(const char* name, const char* description) {
    return textureFloatListParam<P>(name, description);
}

constexpr ParamRow<P> interpolations(const char* name) {
    return intListParam<P>(name, 0, "0: none, 1: linear, 2: smooth, 3: spline");
}

constexpr ParamTable kParams{
    positions("color_positions", "positions of the color ramp"),
    colors("color_colors", "colors of the color ramp"),
    interpolations("color_interpolations"),
    intParam("color_input", &P::colorInput, kRampLightAngle,
             "0: light angle, 1: facing angle, 2: brightness, 3: normalized brightness"),
    positions("transp_positions", "positions of the transparency ramp"),
    colors("transp_colors", "colors of the transparency ramp"),
    interpolations("transp_interpolations"),
    positions("incan_positions", "positions of the incandescence ramp"),
    colors("incan_colors", "colors of the incandescence ramp"),
    interpolations("incan_interpolations"),
    positions("specular_positions", "positions of the specular ramp"),
    colors("specular_colors", "colors of the specular ramp"),
    interpolations("specular_interpolations"),
    positions("environm_positions", "positions of the environment ramp"),
    colors("environm_colors", "colors of the environment ramp"),
    interpolations("environm_interpolations"),
    positions("specularRollOff_positions", "positions of the specular roll off ramp"),
    values("specularRollOff_values", "values of the specular roll off ramp"),
    interpolations("specularRollOff_interpolations"),
    positions("reflectivity_positions", "positions of the reflectivity ramp"),
    values("reflectivity_values", "values of the reflectivity ramp"),
    interpolations("reflectivity_interpolations"),
    textureParam("ambient_tex", &P::ambientTex, "ambient texture"),
    textureFloatParam("eccentricity_tex", &P::eccentricityTex, "eccentricity float texture"),
    textureFloatParam("specularity_tex", &P::specularityTex, "specularity float texture"),
    textureFloatParam("diffuse_tex", &P::diffuseTex, "diffuse float texture"),
    textureFloatParam("fscatter_tex", &P::fscatterTex, "forward scatter float texture"),
    // Fields of a base class name it, so the table's class is given.
    intParam<P>("reflection_limit", &P::reflectionLimit, 0, "reflection limit"),
    boolParam<P>("refractions", &P::refractions, false),
    floatParam<P>("ior", &P::ior, 1.55f,
                  "IOR for the material; this is ignored if the surface has a volume shader (the "
                  "volume IOR is used)."),
    intParam<P>("refraction_limit", &P::refractionLimit, -1, "The maximum refraction bounces"),
    pluginParam<PelkVolume>("volume", &P::volume),
    pluginParam<BSDFInterface>("bump_brdf", &P::bumpBrdf,
                               "bump BRDF used internally for bump mapping"),
    pluginListParam<RenderChannelInterface>("channels", &P::channels,
                                            "Render channels the result will be written to"),
};

/// The position of the channel with that alias, the last one if there are several; -1 for none.
int findChannelByAlias(ChannelHostInterface* host, int alias) {
    for (int i = host ? host->getNumChannels() - 1 : -1; i >= 0; --i) {
        RenderChannel* const channel = host->getChannel(i);
        if (channel && channel->getAlias() == alias)
            return i;
    }
    return -1;
}

float textureOr(TextureFloatInterface* texture, float value, PelkContext& context) {
    return texture ? texture->getTexFloat(context) : value;
}

AColor textureOr(TextureInterface* texture, const AColor& value, PelkContext& context) {
    return texture ? texture->getTexColor(context) : value;
}

/// A channel that is NaN stays it, for the check of the result to find.
Color limited(Color c) {
    return {std::clamp(c.r, 0.0f, 1.0f), std::clamp(c.g, 0.0f, 1.0f), std::clamp(c.b, 0.0f, 1.0f)};
}

}  // namespace

ParamRows<MtlRampParams> MtlRampParams::table() {
    return kParams;
}

void MtlRampPlugin::frameBegin(PelkRenderer& renderer) {
    RenderPooled::frameBegin(renderer);
    params.volumeInterface = findInterface<PelkVolume>(params.volume);
    bumpInterface = findInterface<BSDFInterface>(params.bumpBrdf);
    params.colorRamp.input = params.colorInput;
    params.specularRamp.input = params.specularRollOffRamp.input = kRampWhole;
    loadRamps(renderer.frameData.frameTime);
    overbrightWarned = 0;
    findChannels(renderer);
}

void MtlRampPlugin::loadRamps(double time) {
    const auto load = [&](auto& ramp, const RampParamNames& names) {
        loadRamp(ramp, paramList, names, time);
    };
    load(params.colorRamp, {"color_positions", "color_colors", "color_interpolations"});
    load(params.transparencyRamp, {"transp_positions", "transp_colors", "transp_interpolations"});
    load(params.incandescenceRamp, {"incan_positions", "incan_colors", "incan_interpolations"});
    load(params.specularRamp, {"specular_positions", "specular_colors", "specular_interpolations"});
    load(params.environmentRamp,
         {"environm_positions", "environm_colors", "environm_interpolations"});
    load(params.specularRollOffRamp,
         {"specularRollOff_positions", "specularRollOff_values", "specularRollOff_interpolations"});
    load(params.reflectivityRamp,
         {"reflectivity_positions", "reflectivity_values", "reflectivity_interpolations"});
}

void MtlRampPlugin::findChannels(PelkRenderer& renderer) {
    auto* const host = findInterface<ChannelHostInterface>(&renderer.sequenceData);
    params.diffuseChannel = findChannelByAlias(host, kAliasDiffuse);
    params.reflectionChannel = findChannelByAlias(host, kAliasReflection);
    params.rawReflectionChannel = findChannelByAlias(host, kAliasRawReflection);
    params.reflectionFilterChannel = findChannelByAlias(host, kAliasReflectivity);
    params.refractionChannel = findChannelByAlias(host, kAliasRefraction);
    params.rawRefractionChannel = findChannelByAlias(host, kAliasRawRefraction);
    params.refractionFilterChannel = findChannelByAlias(host, kAliasRefractionWeight);
    params.selfIllumChannel = findChannelByAlias(host, kAliasSelfIllumination);
    params.specularChannel = findChannelByAlias(host, kAliasSpecular);

    channelIndices.clear();
    for (int i = 0; i < params.channels.count; ++i)
        if (auto* channel = findInterface<RenderChannelInterface>(params.channels.items[i]))
            channelIndices.append(channel->getChannelIndex());
}

void MtlRampPlugin::frameEnd(PelkRenderer&) {
    channelIndices.clear();
    params.channels.count = 0;
}

void MtlRampPlugin::shade(PelkContext& context) {
    shadeThrough(context, bumpInterface ? *bumpInterface : *this);
    repairResultColor(context, *this, false, overbrightWarned);
}

/// Leaves the results as they were if the provider has no sampler.
void MtlRampPlugin::shadeThrough(PelkContext& context, BSDFInterface& provider) {
    {
        const ScopedSampler sampler(context, provider, kSingleSided);
        BSDFSampler* const bsdf = sampler.get();
        if (!bsdf)
            return;
        context.surfaceVolume = bsdf->getVolume(context);
        setFilterResults(context, bsdf->getBSDFTransparency(context));
        if (!(context.rayType & kRayShadow)) {
            Color direct;
            context.computeDirectLighting(direct, bsdf);
            bsdf->traceBSDFForward(context, kWithoutIndirectDiffuse);
            context.resultColor = limited(context.resultColor + direct);
        }
    }
    if (!context.resultFragment)
        return;
    for (const int channel : channelIndices)
        context.resultFragment->setChannel(channel, &context.resultColor);
}

BSDFSampler* MtlRampPlugin::getBSDF(PelkContext& context, int) {
    auto element = pool.borrow(context);
    if (!element)
        return nullptr;
    const float diffuse = textureOr(params.diffuseTex, 1.0f, context);
    const float scatter = textureOr(params.fscatterTex, 0.0f, context);
    const AColor ambient = textureOr(params.ambientTex, {Color(0), 1.0f}, context);
    const float eccentricity = textureOr(params.eccentricityTex, 0.5f, context);
    const float specularity = textureOr(params.specularityTex, 1.0f, context);
    element->init(context, params, diffuse - scatter * diffuse, ambient, eccentricity, specularity);
    return element.handOut();
}
