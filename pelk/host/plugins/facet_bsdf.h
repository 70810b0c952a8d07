#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/contract/sampler_pool.h"

namespace Tarnkit {

/// Base of the microfacet BSDF plug-ins of this host. Their pooled samplers read what is the same
/// at all hits of a frame from a `Look`, which the derived class writes in frameBegin.
template <class Params, class Sampler, class Look>
class FacetBSDF : public RenderPooled<Sampler, WithParams<Params, PluginOffering<BSDFInterface>>> {
public:
    BSDFSampler* getBSDF(PelkContext& context, int flags) override {
        auto sampler = this->pool.borrow(context);
        if (!sampler)
            return nullptr;
        sampler->set(look, context, flags & kSingleSided);
        return sampler.handOut();
    }

protected:
    using RenderPooled<Sampler, WithParams<Params, PluginOffering<BSDFInterface>>>::RenderPooled;

    Look look;
};

}  // namespace Tarnkit
