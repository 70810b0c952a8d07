#pragma once

#include "pelk/base/thread_pools.h"
#include "pelk/contract/material.h"
#include "pelk/contract/pelk_plugin.h"
#include "pelk/contract/renderer.h"

namespace Tarnkit {

/// Base of the BSDF plug-ins of this host. Their samplers come from pools and read what a frame
/// has in common from a `Look`, which the derived class writes in frameBegin.
template <class Sampler, class Look>
class FacetBSDF : public PelkPlugin, public BSDFInterface {
public:
    using Offered = InterfaceList<BSDFInterface>;

    PluginInterface* getInterface(u64 id) override {
        PluginInterface* const own = Offered::find(*this, id);
        return own ? own : PelkPlugin::getInterface(id);
    }
    PluginBase* getPlugin() override { return this; }

    void renderBegin(PelkRenderer& renderer) override {
        pool.resize(renderer.sequenceData.numThreads);
    }
    void renderEnd(PelkRenderer&) override { pool.destroy(); }

    BSDFSampler* getBSDF(PelkContext& context, int flags) override {
        PoolEntry<Sampler>* entry = pool.entry(context.threadData->threadIndex);
        if (!entry)
            return nullptr;
        PoolElement<Sampler>* sampler = entry->take();
        sampler->set(look, context, flags & kSingleSided);
        return sampler;
    }
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override {
        if (sampler)
            pool.entry(context.threadData->threadIndex)
                ->giveBack(static_cast<PoolElement<Sampler>*>(sampler));
    }

protected:
    using PelkPlugin::PelkPlugin;

    Look look;

private:
    ThreadPools<Sampler> pool;  // lives from renderBegin to renderEnd
};

}  // namespace Tarnkit
