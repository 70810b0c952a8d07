#include "pelk/contract/layered_bsdf.h"

#include "pelk/contract/context.h"
#include "pelk/contract/private/noted_rays.h"

namespace Tarnkit {

/// What goes on below of light of which the sampler left a part. Never more than came: some
/// samplers answer with white whatever they are given.
Color LayeredBSDF::Layer::passOn(Color came, Color left) const {
    return minimum(left + came * clear, came);
}

/// The sum of what an operation on light gives on each layer, from the top to the bottom; in
/// `lightColor` remains what comes out below.
template <class Operation>
Color LayeredBSDF::throughLayers(Color& lightColor, Operation operation) {
    Color sum;
    for (const Layer& layer : layers) {
        if (!layer.face)
            continue;
        const Color came = lightColor;
        sum += operation(*layer.face, lightColor);
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
    if (BRDFSampler* face = bsdf ? resolveBRDF(*hit, bsdf) : nullptr) {
        Color white(1);
        face->getLightMult(white);
        layer.leaves = layer.passOn(Color(1), white);
        hit->rayWeight *= layer.leaves;
    }
}

BRDFSampler* LayeredBSDF::getBRDF(BSDFSide side) {
    bool hasFace = false;
    for (Layer& layer : layers) {
        layer.face = layer.bsdf ? resolveBRDF(side, layer.bsdf) : nullptr;
        hasFace |= layer.face != nullptr;
    }
    return hasFace ? this : nullptr;
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
        lightColor, [](BRDFSampler& face, Color& light) { return face.getDiffuseColor(light); });
}

Color LayeredBSDF::getLightMult(Color& lightColor) {
    return throughLayers(lightColor,
                         [](BRDFSampler& face, Color& light) { return face.getLightMult(light); });
}

Color LayeredBSDF::eval(PelkContext& context, const Vector& direction, Color& lightColor,
                        Color& origLightColor, float probLight, int flags) {
    Color sum;
    for (const Layer& layer : layers) {
        if (!layer.face)
            continue;
        // Each layer is lit about its own normal, and finds its own transparency in the results.
        const ScopedValue normal(context.normal, layer.face->getDiffuseNormal(context));
        const ScopedValue through(context.resultTransparency, layer.face->getTransparency(context));
        const Color came = lightColor, origCame = origLightColor;
        sum += layer.face->eval(context, direction, lightColor, origLightColor, probLight, flags);
        lightColor = layer.passOn(came, lightColor);
        origLightColor = layer.passOn(origCame, origLightColor);
    }
    return sum;
}

void LayeredBSDF::multiplyLight(float factor) {
    for (const Layer& layer : layers) {
        if (layer.face)
            layer.face->multiplyLight(factor);
    }
}

void LayeredBSDF::lightFinished(int light) {
    for (const Layer& layer : layers) {
        if (layer.face)
            layer.face->lightFinished(light);
    }
}

void LayeredBSDF::traceForward(PelkContext& context, int doDiffuse) {
    Color color, above(1);
    NotedRays noted(context.resultFragment);
    for (const Layer& layer : layers) {
        // Rays cost most of all; none is spent where nothing of it would be seen.
        if (!layer.face || above == Color(0))
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
        if (layer.face)
            product *= minimum(layer.face->getTransparency(context) + layer.clear, Color(1));
    }
    return minimum(product + transparency, Color(1));
}

BRDFSampler* LayeredBSDF::getSubBRDF(int index, Color& weight) {
    for (int i = 0; i < index; ++i)
        weight *= layers[i].leaves;
    return layers[index].face;
}

Color LayeredBSDF::getSelfIllumination(PelkContext& context) {
    Color sum, above(1);
    for (const Layer& layer : layers) {
        if (layer.face)
            sum += above * layer.face->getSelfIllumination(context);
        above *= layer.leaves;
    }
    return sum;
}

}  // namespace Tarnkit
