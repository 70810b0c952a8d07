#pragma once

#include "pelk/base/grow_table.h"
#include "pelk/base/thread_pools.h"
#include "pelk/contract/samplers.h"

namespace Tarnkit {

/// A layered BSDF: samplers stacked on one surface as one, such as a clear coat over paint. Layer 0
/// is the outermost. Layers meet light one after the other and scatter nothing back and forth: each
/// takes its part, and what it passes on reaches the next with the same direction.
///
/// How the layers add up, per channel, `leaves` being what getLightMult of white passes on:
///
/// - A light sample is evaluated by each layer in turn, and eval of one leaves in the light colours
///   what the next is lit by. The answers are summed.
/// - Indirect light, own rays and self-illumination of a layer count by the product of `leaves` of
///   the layers above.
/// - Straight through goes the product of the layers' transparencies.
///
/// So a layer that ignores the light colours it gets hides nothing below, and one that sets them
/// black hides everything. A null sampler, or one without a BRDF, is a clear layer.
///
/// For one hit, in getBSDF of the material that owns the pool: setNumBSDFs, setTransparency, then
/// setBSDF for each layer from 0 on. The samplers stay the caller's, who releases them one by one,
/// by getBSDF(i), when the stack comes back. Pooled and not constructed anew: the storage of the
/// layers is kept, so that hits need no memory once the largest stack has been seen. One thread
/// uses it.
///
/// There is one BRDF for both sides, so that light loops light the stack from the viewer's side
/// alone.
class PELK_API LayeredBSDF : public BSDFSampler, public BRDFSampler {
public:
    /// Begins a stack of `n` layers, all clear. `context` is that of the hit, and stays valid for
    /// as long as layers are set. `flag` is not used. Throws an ExceptionMsg if memory runs out,
    /// which leaves the stack without layers.
    void setNumBSDFs(PelkContext& context, int n, int flag);
    /// What the whole stack lets through besides what its layers do, per channel 0 to 1. To be
    /// called for each stack, or the last one's holds.
    void setTransparency(const Color& color) { transparency = color; }
    /// Puts a sampler, which may be null, at position `index`, from 0. `clear`, per channel 0 to 1,
    /// adds to what the layer lets through: 1 makes it a layer that covers nothing.
    ///
    /// The rayWeight of the stack's context is multiplied by what the layer leaves, so that the
    /// samplers of deeper layers, which are made next, see their throughput and don't trace what
    /// can't be seen; the caller restores it when all are made. `flag` is not used. Doesn't throw.
    void setBSDF(int index, BSDFSampler* bsdf, const Color& clear, int flag);
    int getNumBSDFs() const { return layers.size(); }
    /// The sampler that was set at a position, or null. `index`: 0 to below getNumBSDFs, by which
    /// loops over the layers count; not tested, as all of them are at hits.
    BSDFSampler* getBSDF(int index) const { return layers[index].bsdf; }

    /// This object, once it has looked up the layers' BRDFs of that side; null if none has one.
    BRDFSampler* getBRDF(BSDFSide side) override;
    /// That of the outermost layer that has one, as a refracted ray enters it first.
    PelkVolume* getVolume(PelkContext& context) override;

    // Through the layers from 0 on: the answers are summed, and in the light colours remains what
    // comes out below the last.
    Color getDiffuseColor(Color& lightColor) override;
    Color getLightMult(Color& lightColor) override;
    /// Each layer is lit about its own getDiffuseNormal, and finds its own transparency in the
    /// results.
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    void multiplyLight(float factor) override;
    void lightFinished(int light) override;
    /// traceBSDFForward of each layer, its own rays included, so getNewContext offers none. A layer
    /// below opaque ones isn't traced.
    void traceForward(PelkContext& context, int doDiffuse) override;
    Color getTransparency(PelkContext& context) override;
    /// The number of layers, clear ones included.
    int getNumSubBRDFs() override { return layers.size(); }
    /// The BRDF of a layer, null if it is clear. `index`: 0 to below the number, as above. `weight`
    /// is multiplied by what reaches it.
    BRDFSampler* getSubBRDF(int index, Color& weight) override;
    Color getSelfIllumination(PelkContext& context) override;

private:
    struct Layer {
        BSDFSampler* bsdf = nullptr;
        BRDFSampler* brdf = nullptr;  // of the side that the stack was asked for last
        Color clear;                  // as setBSDF got it
        Color leaves{1.0f};           // share of traced and indirect light that goes on below

        Color passOn(Color came, Color left) const;
    };

    template <class Operation>
    Color throughLayers(Color& lightColor, Operation operation);

    PelkContext* hit = nullptr;  // while layers are set
    Color transparency;
    GrowTable<Layer> layers;
};

/// Tells pools to run the destructor, which frees the storage of the layers.
template <>
inline constexpr bool kPoolDestroys<LayeredBSDF> = true;

}  // namespace Tarnkit
