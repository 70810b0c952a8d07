#include "fake_host/heap_probe.h"

#include <atomic>
#include <climits>

#include "pelk/platform/heap.h"

using namespace Tarnkit::platform;

namespace {

std::atomic<int> requestCount{0};
std::atomic<int> grantedCount{INT_MAX};  // requests from this one on are refused

bool isGranted() {
    return requestCount++ < grantedCount;
}

const Heap kProbedHeap = {
    [](std::size_t size) { return isGranted() ? systemHeap().allocate(size) : nullptr; },
    [](std::size_t size, std::size_t alignment) {
        return isGranted() ? systemHeap().allocateAligned(size, alignment) : nullptr;
    },
    [](void* block, std::size_t size) {
        return isGranted() ? systemHeap().reallocate(block, size) : nullptr;
    },
    [](void* block) { systemHeap().release(block); },
    [] { return systemHeap().report(); },
    [] { return true; },
};

}  // namespace

HeapProbe::HeapProbe() {
    requestCount = 0;
    grantedCount = INT_MAX;
    setHeap(kProbedHeap);
}

HeapProbe::~HeapProbe() {
    setHeap(systemHeap());
}

int HeapProbe::requests() const {
    return requestCount;
}

void HeapProbe::refuseAfter(int granted) {
    grantedCount = requestCount + granted;
}
