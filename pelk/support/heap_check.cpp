#include "pelk/support/heap_check.h"

#include <algorithm>
#include <cstdint>

#include "pelk/base/debug_print.h"
#include "pelk/platform/heap_walk.h"

namespace Tarnkit {

namespace {

constexpr unsigned char kFreeByte = 0xFA;

void checkBlock(const platform::FreeBlock& block) {
    const unsigned char* const end = block.memory + block.size;
    if (std::all_of(block.memory, end, [](unsigned char byte) { return byte == kFreeByte; }))
        return;
    debugPrint("[Tarnkit::checkHeap] Block %x modified after it was freed.\n",
               static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(block.memory)));
}

}  // namespace

bool checkHeap() {
    return platform::walkFreeBlocks(checkBlock);
}

}  // namespace Tarnkit
