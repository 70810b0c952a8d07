#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/contract/sampler_pool.h"

namespace Tarnkit {

/// Base of the BSDF plug-ins of this host. Their samplers come from pools and read what a frame
/// has in common from a `Look`, which the derived class writes in frameBegin.
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
