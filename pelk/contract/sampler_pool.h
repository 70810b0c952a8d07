#pragma once

#include "pelk/base/thread_pools.h"
#include "pelk/contract/context.h"
#include "pelk/contract/pelk_material.h"
#include "pelk/contract/renderer.h"

namespace Tarnkit {

/// The BSDF samplers that one plug-in hands out at hits: a free list for each render thread, so
/// that a hit takes and returns a sampler without a lock and, once warm, without the heap. `begin`,
/// `end` and `reset` run on the one thread that drives the plug-in's life cycle, while no thread
/// renders; `borrow` and `giveBack` on all render threads at once.
///
/// A sampler is constructed with its block of memory and not again. Whoever borrows one writes
/// every field, or the last hit shows through.
template <class Sampler>
class SamplerPool final : public SamplerCount {
public:
    int getNumOut() const override { return pools.getLiveCount(); }

    /// A free list for each thread that will render. Ends what there was before. If there is no
    /// memory the pool stays closed.
    void begin(const PelkRenderer& renderer) { pools.resize(renderer.sequenceData.numThreads); }
    /// Gives all memory back and closes the pool. Samplers still out are gone.
    void end() { pools.destroy(); }
    /// Takes all samplers back, also those that a host forgot to release, and keeps the memory.
    void reset() { pools.reset(); }

    /// A sampler for the hit, of the calling thread's list; none (false) while the pool is closed.
    /// It goes back by itself unless it is handed out, so that nothing is lost when a sub-plug-in
    /// throws or has no sampler:
    ///
    ///     auto sampler = pool.borrow(context);
    ///     if (!sampler)
    ///         return nullptr;
    ///     sampler->bsdf = base->getBSDF(context, flags);  // may throw, may be null
    ///     return sampler->bsdf ? sampler.handOut() : nullptr;
    ///
    /// Throws ExceptionMsg if there is no memory for a further sampler. A plug-in that wraps the
    /// sampler of another borrows first and asks the other then: were it the other way about, a
    /// lack of memory would lose the sampler that the other has given.
    PoolLoan<Sampler> borrow(const PelkContext& context) {
        return PoolLoan<Sampler>(pools.entry(context.threadData->threadIndex));
    }
    /// Takes a sampler of this pool back, not null, on the thread that borrowed it. What the
    /// sampler holds (the sampler of a base) is released before.
    void giveBack(const PelkContext& context, BSDFSampler* sampler) {
        pools.entry(context.threadData->threadIndex)
            ->giveBack(static_cast<PoolElement<Sampler>*>(sampler));
    }

private:
    ThreadPools<Sampler> pools;
};

/// A plug-in whose getBSDF hands out pooled samplers. `Base` is a plug-in class with the operations
/// of BSDFInterface, as PelkMaterial is. Derived classes choose the pool's life: by RenderPooled,
/// by FramePooled, or themselves where a class has an order of its own.
template <class Sampler, class Base>
class Pooled : public Base {
public:
    explicit Pooled(PelkPluginDesc* pluginDesc) : Base(pluginDesc) { this->samplerCount = &pool; }

    /// Takes back what getBSDF handed out. A null sampler is ignored: callers pass on what getBSDF
    /// answered. This body serves samplers that hold nothing of others; a plug-in that wraps the
    /// sampler of a base overrides it, and gives that one back first.
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override {
        if (sampler)
            pool.giveBack(context, sampler);
    }

protected:
    SamplerPool<Sampler> pool;
};

/// The pool lives from renderBegin to renderEnd and keeps what it has grown to from frame to frame:
/// the first choice, as from the second frame on hits meet a warm pool. frameBegin and frameEnd
/// stay those of `Base`.
template <class Sampler, class Base>
class RenderPooled : public Pooled<Sampler, Base> {
public:
    using Pooled<Sampler, Base>::Pooled;

    /// The number of threads may differ from that of the last render.
    void renderBegin(PelkRenderer& renderer) override { this->pool.begin(renderer); }
    void renderEnd(PelkRenderer&) override { this->pool.end(); }
};

/// The pool lives from frameBegin to frameEnd, so that no memory of samplers is held between
/// frames. An override of frameBegin calls this one first, as it would call that of `Base`.
template <class Sampler, class Base>
class FramePooled : public Pooled<Sampler, Base> {
public:
    using Pooled<Sampler, Base>::Pooled;

    void frameBegin(PelkRenderer& renderer) override {
        Base::frameBegin(renderer);
        this->pool.begin(renderer);
    }
    /// Does not pass the call on: a plug-in's own frameEnd does nothing.
    void frameEnd(PelkRenderer&) override { this->pool.end(); }
};

}  // namespace Tarnkit
