#include "pelk/contract/layered_bsdf.h"

#include "pelk/contract/context.h"
#include "pelk/contract/private/noted_rays.h"

namespace Tarnkit {

/// What passes on to the next layer: what the BRDF left of the light, and what goes through the
/// layer by `clear`. Never more than came: some BRDFs leave white whatever they are given.
Color LayeredBSDF::Layer::passOn(Color came, Color left) const {
    return minimum(left + came * clear, came);
}

/// Runs an operation that filters `lightColor` through the layers from the top down, and sums what
/// it answers.
template <class Operation>
Color LayeredBSDF::throughLayers(Color& lightColor, Operation operation) {
    Color sum;
    for (const Layer& layer : layers) {
        if (!layer.brdf)
            continue;
        const Color came = lightColor;
        sum += operation(*layer.brdf, lightColor);
        lightColor = layer.passOn(came, lightColor);
    }
    return sum;
}

void LayeredBSDF::setNumBSDFs(PelkContext& context, int n, int) {
    hit = &context;
    layers.clear();
    layers.resize(n);
}

void LayeredBSDF::setBSDF(int index, BSDFSampler* bsdf, const Color& clear, int) {
    Layer& layer = layers[index];
    layer = {.bsdf = bsdf, .clear = clear};
    if (BRDFSampler* brdf = bsdf ? resolveBRDF(*hit, bsdf) : nullptr) {
        Color white(1);
        brdf->getLightMult(white);
        layer.leaves = layer.passOn(Color(1), white);
        hit->rayWeight *= layer.leaves;
    }
}

BRDFSampler* LayeredBSDF::getBRDF(BSDFSide side) {
    bool hasBRDF = false;
    for (Layer& layer : layers) {
        layer.brdf = layer.bsdf ? resolveBRDF(side, layer.bsdf) : nullptr;
        hasBRDF |= layer.brdf != nullptr;
    }
    return hasBRDF ? this : nullptr;
}

PelkVolume* LayeredBSDF::getVolume(PelkContext& context) {
    for (const Layer& layer : layers) {
        if (PelkVolume* volume = layer.bsdf ? layer.bsdf->getVolume(context) : nullptr)
            return volume;
    }
    return nullptr;
}

Color LayeredBSDF::getDiffuseColor(Color& lightColor) {
    return throughLayers(
        lightColor, [](BRDFSampler& brdf, Color& light) { return brdf.getDiffuseColor(light); });
}

Color LayeredBSDF::getLightMult(Color& lightColor) {
    return throughLayers(lightColor,
                         [](BRDFSampler& brdf, Color& light) { return brdf.getLightMult(light); });
}

Color LayeredBSDF::eval(PelkContext& context, const Vector& direction, Color& lightColor,
                        Color& origLightColor, float probLight, int flags) {
    Color sum;
    for (const Layer& layer : layers) {
        if (!layer.brdf)
            continue;
        // Each layer is lit about its own normal, and finds its own transparency in the results.
        const ScopedValue normal(context.normal, layer.brdf->getDiffuseNormal(context));
        const ScopedValue through(context.resultTransparency, layer.brdf->getTransparency(context));
        const Color came = lightColor, origCame = origLightColor;
        sum += layer.brdf->eval(context, direction, lightColor, origLightColor, probLight, flags);
        lightColor = layer.passOn(came, lightColor);
        origLightColor = layer.passOn(origCame, origLightColor);
    }
    return sum;
}

void LayeredBSDF::multiplyLight(float factor) {
    for (const Layer& layer : layers) {
        if (layer.brdf)
            layer.brdf->multiplyLight(factor);
    }
}

void LayeredBSDF::lightFinished(int light) {
    for (const Layer& layer : layers) {
        if (layer.brdf)
            layer.brdf->lightFinished(light);
    }
}

void LayeredBSDF::traceForward(PelkContext& context, int doDiffuse) {
    Color color, above(1);
    NotedRays noted(context.resultFragment);
    for (const Layer& layer : layers) {
        // Tracing costs most of all; no ray is spent below opaque layers.
        if (!layer.brdf || above == Color(0))
            continue;
        const ScopedValue weight(context.rayWeight, context.rayWeight * above);
        layer.bsdf->traceBSDFForward(context, doDiffuse);
        color += above * context.resultColor;
        noted.take(above);
        above *= layer.leaves;
    }
    noted.write();
    const Color through = getTransparency(context);
    setResults(context, color, through, complement(through), through);
}

Color LayeredBSDF::getTransparency(PelkContext& context) {
    Color product(1);
    for (const Layer& layer : layers) {
        if (layer.brdf)
            product *= minimum(layer.brdf->getTransparency(context) + layer.clear, Color(1));
    }
    return minimum(product + transparency, Color(1));
}

BRDFSampler* LayeredBSDF::getSubBRDF(int index, Color& weight) {
    for (int i = 0; i < index; ++i)
        weight *= layers[i].leaves;
    return layers[index].brdf;
}

Color LayeredBSDF::getSelfIllumination(PelkContext& context) {
    Color sum, above(1);
    for (const Layer& layer : layers) {
        if (layer.brdf)
            sum += above * layer.brdf->getSelfIllumination(context);
        above *= layer.leaves;
    }
    return sum;
}

}  // namespace Tarnkit
