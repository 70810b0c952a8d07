#include "pool_calls.h"

namespace {

// The fastest way there is to a variable of a thread; a module that is loaded late has a slower
// one.
[[gnu::tls_model("initial-exec")]] thread_local FreeListElement* freeList = nullptr;

}  // namespace

Pooled* takeFromPool(Pools& pools, int threadIndex) {
    return pools.entry(threadIndex)->take();
}

void giveBackToPool(Pools& pools, int threadIndex, Pooled* element) {
    pools.entry(threadIndex)->giveBack(element);
}

FreeListElement* takeFromList() {
    FreeListElement* const element = freeList;
    if (!element)
        return new FreeListElement;
    freeList = element->next;
    return element;
}

void giveBackToList(FreeListElement* element) {
    element->next = freeList;
    freeList = element;
}
