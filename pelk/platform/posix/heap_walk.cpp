#include "pelk/platform/heap_walk.h"

namespace Tarnkit::platform {

namespace {

constinit HeapWalk replacement = nullptr;

}  // namespace

bool walkFreeBlocks(void (*visit)(const FreeBlock&)) {
    return replacement && replacement(visit);
}

void setHeapWalk(HeapWalk walk) {
    replacement = walk;
}

}  // namespace Tarnkit::platform
