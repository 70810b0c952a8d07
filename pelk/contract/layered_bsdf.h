#pragma once

#include "pelk/base/grow_table.h"
#include "pelk/base/thread_pools.h"
#include "pelk/contract/samplers.h"

namespace Tarnkit {

/// Samplers on top of each other as one. Layer 0 is the outermost: light meets it first, and what
/// it leaves goes on to the next. A layer without a sampler, or whose sampler has no face, is
/// clear.
///
/// For one hit: setNumBSDFs, setTransparency, then setBSDF for each layer from 0 on. The samplers
/// stay the caller's. Pooled and not constructed anew: the storage of the layers is kept, so that
/// hits need no memory once the largest stack has been seen.
///
/// The stack has one face for both sides, so that hosts light it from the viewer's side alone.
class PELK_API LayeredBSDF : public BSDFSampler, public BRDFSampler {
public:
    /// Begins a stack of `n` layers, all clear. `context` is that of the hit, and stays valid for
    /// as long as layers are set. `flag` is not used. Memory failure is an ExceptionMsg and leaves
    /// the stack without layers.
    void setNumBSDFs(PelkContext& context, int n, int flag);
    /// What the whole stack lets through besides what its layers do. To be set for each stack.
    void setTransparency(const Color& color) { transparency = color; }
    /// Puts a sampler, which may be null, at a position. `clear` adds to what the layer lets
    /// through. The rayWeight of the stack's context is left with what goes on to the layers
    /// below, for the samplers that are still to be made; the caller puts it back. `flag` is not
    /// used.
    void setBSDF(int index, BSDFSampler* bsdf, const Color& clear, int flag);
    int getNumBSDFs() const { return layers.size(); }
    /// What was set at a position, or null.
    BSDFSampler* getBSDF(int index) const { return layers[index].bsdf; }

    /// Null if no layer has a face.
    BRDFSampler* getBRDF(BSDFSide side) override;
    PelkVolume* getVolume(PelkContext& context) override;

    Color getDiffuseColor(Color& lightColor) override;
    Color getLightMult(Color& lightColor) override;
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    void multiplyLight(float factor) override;
    void lightFinished(int light) override;
    /// Traces the layers' own rays too, so the stack offers none.
    void traceForward(PelkContext& context, int doDiffuse) override;
    Color getTransparency(PelkContext& context) override;
    int getNumSubBRDFs() override { return layers.size(); }
    /// The face of a layer, null if it is clear; `weight` is multiplied by what reaches it.
    BRDFSampler* getSubBRDF(int index, Color& weight) override;
    Color getSelfIllumination(PelkContext& context) override;

private:
    struct Layer {
        BSDFSampler* bsdf = nullptr;
        BRDFSampler* face = nullptr;  // of the side that the stack was asked for last
        Color clear;
        Color leaves{1.0f};  // share of traced and indirect light that goes on below

        Color passOn(Color came, Color left) const;
    };

    template <class Operation>
    Color throughLayers(Color& lightColor, Operation operation);

    PelkContext* hit = nullptr;
    Color transparency;
    GrowTable<Layer> layers;
};

/// The storage of the layers goes with the pool.
template <>
inline constexpr bool kPoolDestroys<LayeredBSDF> = true;

}  // namespace Tarnkit
