#pragma once

#include <climits>

#include "pelk/base/types.h"

namespace Tarnkit {

/// Hands out the data blocks of fragments: an arena with a free list, for blocks of one size.
///
/// Fragments are made in great numbers and live for one sample, so a block costs no system
/// allocation once the first pixels are done: chunks of 1,000 blocks stay, blocks that were given
/// back go out again first, and `rewind` takes all of them back in a few stores. Used by one
/// region, on the thread that renders it; takes no lock.
class FragmentDataAllocator {
public:
    FragmentDataAllocator() = default;
    FragmentDataAllocator(const FragmentDataAllocator&) = delete;
    FragmentDataAllocator& operator=(const FragmentDataAllocator&) = delete;
    ~FragmentDataAllocator() { free(); }

    /// Sets the bytes of a block and abandons all blocks; keeps the memory if the size is as it
    /// was. Whoever holds a block must not touch it any more.
    void setItemSize(int size);
    /// Bytes of a block; 0 until they are set, and then no blocks are handed out.
    int getItemSize() const { return itemSize; }

    /// A block, not written: it holds what its last user left. Null while the size is 0. Memory
    /// failure is an ExceptionMsg and changes nothing.
    u8* take();
    /// Takes a block back; null is ignored. The link of the free list is written into its first
    /// eight bytes, so a smaller block is only had again after `rewind`.
    void giveBack(u8* item);
    /// Abandons all blocks and keeps the memory. Costs the same for one block and for a million.
    void rewind();
    /// Gives all memory back; the size becomes 0.
    void free();

private:
    /// The head of a chunk in memory; the blocks follow it.
    struct Chunk {
        Chunk* next;
        u8* items() { return reinterpret_cast<u8*>(this + 1); }
    };
    static constexpr int kItemsPerChunk = 1000;
    static constexpr int kNoneTaken = INT_MAX;  // the next block is the first of the first chunk

    void enterNextChunk();

    Chunk* firstChunk = nullptr;
    Chunk* currentChunk = nullptr;
    int index = kNoneTaken;  // of the next item in the current chunk
    int itemSize = 0;
    u8* freeItems = nullptr;  // each begins with the address of the next
};

}  // namespace Tarnkit
