#include "pelk/support/regions/fragments_data.h"

#include <cstring>
#include <new>

#include "pelk/base/memory.h"

namespace Tarnkit {

void FragmentDataAllocator::setItemSize(int size) {
    if (size == itemSize)
        return rewind();
    free();
    itemSize = size;
}

u8* FragmentDataAllocator::take() {
    if (itemSize == 0)
        return nullptr;
    if (u8* item = freeItems) {
        std::memcpy(&freeItems, item, sizeof freeItems);
        return item;
    }
    if (index >= kItemsPerChunk)
        enterNextChunk();
    return currentChunk->items() + static_cast<std::size_t>(index++) * itemSize;
}

void FragmentDataAllocator::giveBack(u8* item) {
    // The link lies in the item itself; one too small for it stays out until the next rewind.
    if (!item || itemSize < static_cast<int>(sizeof freeItems))
        return;
    std::memcpy(item, &freeItems, sizeof freeItems);
    freeItems = item;
}

void FragmentDataAllocator::rewind() {
    freeItems = nullptr;
    currentChunk = firstChunk;
    index = kNoneTaken;
}

void FragmentDataAllocator::free() {
    while (Chunk* chunk = firstChunk) {
        firstChunk = chunk->next;
        freeMemory(chunk);
    }
    itemSize = 0;
    rewind();
}

/// Makes the current chunk one with all its items free: one of before a rewind, or a new one.
void FragmentDataAllocator::enterNextChunk() {
    Chunk*& link = index == kNoneTaken || !currentChunk ? firstChunk : currentChunk->next;
    if (!link) {
        const std::size_t bytes = static_cast<std::size_t>(kItemsPerChunk) * itemSize;
        link = ::new (allocate(sizeof(Chunk) + bytes)) Chunk{nullptr};
    }
    currentChunk = link;
    index = 0;
}

}  // namespace Tarnkit
