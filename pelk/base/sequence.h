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
/// entries own nothing, and walking thousands of them to run an empty destructor would cost a
/// pass over cold memory at the end of each frame: they are just forgotten. To be specialised
/// beside a type whose entries own memory. Not deduced from the type: samplers have virtual
/// destructors, so none is trivially destructible, and yet own nothing.
template <class T>
inline constexpr bool kDestroyEntries = false;

/// One array of a Sequence and its place in the chain. All entries are constructed, those too that
/// have never been taken. Only a Sequence makes and frees blocks.
template <class T>
struct _SequenceBlock {
    _SequenceBlock* next = nullptr;
    _SequenceBlock* prev = nullptr;
    int used = 0;           ///< entries taken, from the front
    int capacity = 0;       ///< entries in all
    T* elements = nullptr;  ///< owned array of `capacity` entries

    /// Allocates and constructs `capacity` entries by value, so fields without a default are 0.
    /// Memory failure, also that of an entry's constructor, is an ExceptionMsg and leaves
    /// nothing behind.
    static _SequenceBlock* create(int capacity);
    /// Frees array and block; destroys the entries first, the last one first, if `kDestroyEntries`
    /// says so.
    static void destroy(_SequenceBlock* block);
};

/// A store that grows by blocks of a fixed number of entries (an arena of objects). Entries never
/// move, so a pointer to one is valid until `clear` or the store's end; an array that grew would
/// break the pointers that samplers hold. One entry can't be given back: owners that reuse entries
/// keep a free list of their own, as pools and HashTable do.
///
/// An entry is constructed when its block is made, and not again when it is handed out anew after
/// `reset`: what the last user wrote is still in it.
///
/// As the records of one run, here of the threads that take part in a job:
///
///     Sequence<GroupMember> group{16};
///     GroupMember& member = *group.take();  // write every field: it may be an old one
///     group.reset();                        // when the run is over, all at once
///
/// Taking is a few instructions while there is room, and a block's allocation each
/// `entriesPerBlock` entries, which bounds both how often the heap is asked and what is left
/// unused. Not locked: the owner keeps calls from overlapping, which at a hit means one store for
/// each thread.
template <class T>
class Sequence {
public:
    using Block = _SequenceBlock<T>;

    /// Allocates nothing yet. `entriesPerBlock`: at least 1; with fewer each `take` fails.
    explicit Sequence(int entriesPerBlock) : blockSize(entriesPerBlock) {}
    // Neither copied nor moved: pointers into it, and what its owner links, stay where they are.
    Sequence(const Sequence&) = delete;
    Sequence& operator=(const Sequence&) = delete;
    ~Sequence() { clear(); }

    /// The next entry, never null: fresh, or as its user before the last `reset` left it. It stays
    /// the store's. Memory failure is an ExceptionMsg and leaves the store as it was.
    T* take() {
        if (!currentBlock || currentBlock->used >= currentBlock->capacity)
            enterNextBlock();
        ++count;
        return currentBlock->elements + currentBlock->used++;
    }

    /// Makes all entries free to be taken again, from the first one on, in the same order. Gives no
    /// memory back, so a store that is reset at each frame soon allocates no more. Pointers to
    /// entries stay readable but are about to be handed to someone else. Linear in the blocks.
    void reset() {
        for (Block* block = firstBlock; block; block = block->next)
            block->used = 0;
        currentBlock = firstBlock;
        count = 0;
        rewind();
    }

    /// Gives all memory back; every pointer to an entry is void then. The store can be used again.
    void clear() {
        for (Block* block = std::exchange(firstBlock, nullptr); block;)
            Block::destroy(std::exchange(block, block->next));
        currentBlock = nullptr;
        count = 0;
        memoryUsed = 0;
        rewind();
    }

    /// Puts the walking position on the first entry. There is one such position for the whole
    /// store, so two walks can't be nested. To be called before each walk: a store that had no
    /// block yet when it was last rewound has no position either.
    ///
    ///     store.rewind();
    ///     while (Entry* entry = store.next())
    ///         use(*entry);
    void rewind() {
        cursorBlock = firstBlock;
        cursorIndex = 0;
    }

    /// The entry at the walking position, which moves on, in the order of taking; null behind the
    /// last one, and from then on until the next `rewind`, even if more entries are taken.
    T* next() {
        // Behind the entries in use: after a reset the blocks that follow are empty, not missing.
        while (cursorBlock && cursorIndex >= cursorBlock->used) {
            cursorBlock = cursorBlock->next;
            cursorIndex = 0;
        }
        return cursorBlock ? cursorBlock->elements + cursorIndex++ : nullptr;
    }

    /// Entries taken, as many as a walk answers before its null: since the beginning or the last
    /// `reset` or `clear`.
    int size() const { return count; }
    /// Bytes taken by all blocks, used or not; what the entries own beside that isn't counted.
    u64 getMemoryUsed() const { return memoryUsed; }

private:
    /// Makes `currentBlock` one with room: a later one of the chain, as there is after a reset, or
    /// a new one at its end. `memoryUsed` and the chain change only once the block stands, so a
    /// failure leaves the store as it was.
    void enterNextBlock() {
        Block* last = currentBlock ? currentBlock->prev : nullptr;
        for (Block* block = currentBlock; block; block = block->next) {
            if (block->used < block->capacity) {
                currentBlock = block;
                return;
            }
            last = block;
        }
        Block* made = Block::create(blockSize);  // may throw; nothing has changed by then
        made->prev = last;
        (last ? last->next : firstBlock) = made;
        currentBlock = made;
        memoryUsed += sizeof(Block) + u64{sizeof(T)} * blockSize;
    }

    Block* firstBlock = nullptr;    // head of the chain, in the order of making
    Block* currentBlock = nullptr;  // that entries are taken from; those before it are full
    Block* cursorBlock = nullptr;   // the walking position, with cursorIndex
    int cursorIndex = 0;            // of the entry that `next` answers, in cursorBlock
    int count = 0;                  // entries taken, over all blocks
    int blockSize;                  // entries of each block that is made
    u64 memoryUsed = 0;             // bytes of all blocks; kept here, as walking them would cost
};

template <class T>
_SequenceBlock<T>* _SequenceBlock<T>::create(int capacity) {
    // No byte count may overflow, or the block would be smaller than its entries.
    constexpr u64 kMaxBytes = std::numeric_limits<std::ptrdiff_t>::max();
    if (capacity < 1 || static_cast<u64>(capacity) > kMaxBytes / sizeof(T))
        throw ExceptionMsg("[_SequenceBlock] Could not allocate memory");
    // The larger request first: if it fails, there is nothing to give back.
    T* elements = allocateArray<T>(capacity);
    void* memory = nullptr;
    try {
        // Not by a plain new: both failures are to read the same, as an ExceptionMsg.
        memory = allocate(sizeof(_SequenceBlock));
        std::uninitialized_value_construct_n(elements, capacity);
    } catch (...) {
        freeMemory(memory);
        freeMemory(elements);
        throw;
    }
    // Nothing can fail from here on, so the caller gets a whole block or none.
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
