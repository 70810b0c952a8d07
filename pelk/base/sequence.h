#pragma once

#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "pelk/base/exception_msg.h"
#include "pelk/base/memory.h"
#include "pelk/base/types.h"

namespace Tarnkit {

/// Whether a Sequence destroys entries of this type when it gives their memory back. Most
/// entries hold nothing and are just forgotten.
template <class T>
inline constexpr bool kDestroyEntries = false;

/// One array of a Sequence, all entries of which are constructed.
template <class T>
struct _SequenceBlock {
    _SequenceBlock* next = nullptr;
    _SequenceBlock* prev = nullptr;
    int used = 0;
    int capacity = 0;
    T* elements = nullptr;

    /// Memory failure is an ExceptionMsg and leaves nothing behind.
    static _SequenceBlock* create(int capacity);
    static void destroy(_SequenceBlock* block);
};

/// A store that grows by blocks. Entries never move, and go back to the heap only all together.
/// An entry is constructed when its block is made and not again when it is handed out anew.
template <class T>
class Sequence {
public:
    using Block = _SequenceBlock<T>;

    explicit Sequence(int entriesPerBlock) : blockSize(entriesPerBlock) {}
    Sequence(const Sequence&) = delete;
    Sequence& operator=(const Sequence&) = delete;
    ~Sequence() { clear(); }

    /// The next entry, never null. Memory failure is an ExceptionMsg and leaves the store as it
    /// was.
    T* take() {
        if (!currentBlock || currentBlock->used >= currentBlock->capacity)
            enterNextBlock();
        ++count;
        return currentBlock->elements + currentBlock->used++;
    }

    /// Makes all entries free to be taken again, from the first one on. Gives no memory back.
    void reset() {
        for (Block* block = firstBlock; block; block = block->next)
            block->used = 0;
        currentBlock = firstBlock;
        count = 0;
        rewind();
    }

    /// Gives all memory back.
    void clear() {
        for (Block* block = std::exchange(firstBlock, nullptr); block;)
            Block::destroy(std::exchange(block, block->next));
        currentBlock = nullptr;
        count = 0;
        memoryUsed = 0;
        rewind();
    }

    /// Puts the walking position on the first entry.
    void rewind() {
        cursorBlock = firstBlock;
        cursorIndex = 0;
    }

    /// The entry at the walking position, which moves on; null behind the last one.
    T* next() {
        while (cursorBlock && cursorIndex >= cursorBlock->used) {
            cursorBlock = cursorBlock->next;
            cursorIndex = 0;
        }
        return cursorBlock ? cursorBlock->elements + cursorIndex++ : nullptr;
    }

    /// Entries taken.
    int size() const { return count; }
    /// Bytes taken by all blocks.
    u64 getMemoryUsed() const { return memoryUsed; }

private:
    /// Makes `currentBlock` one with room: a later one of the chain, or a new one at its end.
    void enterNextBlock() {
        Block* last = currentBlock ? currentBlock->prev : nullptr;
        for (Block* block = currentBlock; block; block = block->next) {
            if (block->used < block->capacity) {
                currentBlock = block;
                return;
            }
            last = block;
        }
        Block* made = Block::create(blockSize);
        made->prev = last;
        (last ? last->next : firstBlock) = made;
        currentBlock = made;
        memoryUsed += sizeof(Block) + u64{sizeof(T)} * blockSize;
    }

    Block* firstBlock = nullptr;
    Block* currentBlock = nullptr;
    Block* cursorBlock = nullptr;
    int cursorIndex = 0;
    int count = 0;
    int blockSize;
    u64 memoryUsed = 0;
};

template <class T>
_SequenceBlock<T>* _SequenceBlock<T>::create(int capacity) {
    constexpr u64 kMaxBytes = std::numeric_limits<std::ptrdiff_t>::max();
    if (capacity < 1 || static_cast<u64>(capacity) > kMaxBytes / sizeof(T))
        throw ExceptionMsg("[_SequenceBlock] Could not allocate memory");
    T* elements = allocateArray<T>(capacity);
    void* memory = nullptr;
    try {
        memory = allocate(sizeof(_SequenceBlock));
        std::uninitialized_value_construct_n(elements, capacity);
    } catch (...) {
        freeMemory(memory);
        freeMemory(elements);
        throw;
    }
    auto* block = ::new (memory) _SequenceBlock;
    block->capacity = capacity;
    block->elements = elements;
    return block;
}

template <class T>
void _SequenceBlock<T>::destroy(_SequenceBlock* block) {
    if constexpr (kDestroyEntries<T>)
        for (int i = block->capacity; i-- > 0;)
            block->elements[i].~T();
    freeMemory(block->elements);
    freeMemory(block);
}

}  // namespace Tarnkit
