#pragma once

#include "pelk/base/thread_pools.h"

// A pool and a bare thread-local free list as a host meets them in getBSDF and releaseBSDF: by two
// calls into a library, between which nothing can be kept in a register.

/// The size of a sampler.
struct Element {
    double data[10];
};

struct FreeListElement {
    Element element;
    FreeListElement* next;
};

using Pools = Tarnkit::ThreadPools<Element>;
using Pooled = Tarnkit::PoolElement<Element>;

[[gnu::visibility("default")]] Pooled* takeFromPool(Pools& pools, int threadIndex);
[[gnu::visibility("default")]] void giveBackToPool(Pools& pools, int threadIndex, Pooled* element);
[[gnu::visibility("default")]] FreeListElement* takeFromList();
[[gnu::visibility("default")]] void giveBackToList(FreeListElement* element);
