#pragma once

#include <climits>

#include "pelk/base/types.h"

namespace Tarnkit {

/// Hands out the data blocks of fragments. Memory comes in chunks and stays until `free`.
class FragmentDataAllocator {
public:
    FragmentDataAllocator() = default;
    FragmentDataAllocator(const FragmentDataAllocator&) = delete;
    FragmentDataAllocator& operator=(const FragmentDataAllocator&) = delete;
    ~FragmentDataAllocator() { free(); }

    /// Abandons all blocks; keeps the memory if the size is as it was.
    void setItemSize(int size);
    int getItemSize() const { return itemSize; }

    /// A block, not written; null while the size is 0. Memory failure is an ExceptionMsg and
    /// changes nothing.
    u8* take();
    void giveBack(u8* item);
    /// Abandons all blocks and keeps the memory.
    void rewind();
    /// Gives all memory back; the size becomes 0.
    void free();

private:
    struct Chunk {
        Chunk* next;
        u8* items() { return reinterpret_cast<u8*>(this + 1); }
    };
    static constexpr int kItemsPerChunk = 1000;
    static constexpr int kNoneTaken = INT_MAX;

    void enterNextChunk();

    Chunk* firstChunk = nullptr;
    Chunk* currentChunk = nullptr;
    int index = kNoneTaken;  // of the next item in the current chunk
    int itemSize = 0;
    u8* freeItems = nullptr;  // each begins with the address of the next
};

}  // namespace Tarnkit
