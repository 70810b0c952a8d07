#pragma once

#include <cassert>
#include <memory>
#include <utility>

#include "pelk/base/memory.h"
#include "pelk/base/sequence.h"

namespace Tarnkit {

/// Whether pooled objects of this class are destroyed when their pool ends. Specialised for
/// classes that hold memory of their own; the others are just forgotten.
template <class T>
inline constexpr bool kPoolDestroys = false;

/// A pooled object. It is constructed once, with its block, and reused as the last hit left it.
template <class T>
struct PoolElement : T {
    PoolElement* poolNext = nullptr;  ///< next on the free list; null while handed out
};

template <class T>
inline constexpr bool kDestroyEntries<PoolElement<T>> = kPoolDestroys<T>;

/// The pool of one thread. No lock guards it: only that thread takes and gives back.
template <class T>
class PoolEntry {
public:
    /// `blockSize`: elements that are allocated at a time.
    explicit PoolEntry(int blockSize = 10) : sequence(blockSize) {}

    /// An element as its last user left it, never null. Every field that a hit needs must be
    /// written. Memory failure is an ExceptionMsg that leaves `getLiveCount` raised.
    PoolElement<T>* take() {
        ++liveCount;
        PoolElement<T>* element = freeHead;
        if (element)
            freeHead = element->poolNext;
        else
            element = sequence.take();
        element->poolNext = nullptr;
        return element;
    }

    /// Takes back an element that this entry handed out, on the thread that took it.
    void giveBack(PoolElement<T>* element) {
        --liveCount;
        element->poolNext = freeHead;
        freeHead = element;
    }

    /// Makes all memory reusable and keeps it. Elements still out are abandoned.
    void reset() {
        sequence.reset();
        freeHead = nullptr;
        liveCount = 0;
    }

    /// Gives all memory back.
    void clear() {
        sequence.clear();
        freeHead = nullptr;
        liveCount = 0;
    }

    /// Elements handed out and not returned.
    int getLiveCount() const { return liveCount; }
    /// Elements drawn from the blocks since the pool began or was reset.
    int getCount() const { return sequence.size(); }

private:
    PoolElement<T>* freeHead = nullptr;
    int liveCount = 0;
    Sequence<PoolElement<T>> sequence;
};

/// An element that goes back to its pool unless it is handed out: where a sub-plug-in throws for
/// memory, or gives no sampler to go with it.
template <class T>
class PoolLoan {
public:
    /// Of a null entry nothing is lent.
    explicit PoolLoan(PoolEntry<T>* entry_)
        : entry(entry_), element(entry_ ? entry_->take() : nullptr) {}
    ~PoolLoan() {
        if (element)
            entry->giveBack(element);
    }
    PoolLoan(const PoolLoan&) = delete;
    PoolLoan& operator=(const PoolLoan&) = delete;

    explicit operator bool() const { return element; }
    PoolElement<T>* operator->() const { return element; }
    PoolElement<T>& operator*() const { return *element; }
    /// The element, from now on the caller's to give back.
    PoolElement<T>* handOut() { return std::exchange(element, nullptr); }

private:
    PoolEntry<T>* const entry;
    PoolElement<T>* element;
};

/// The pools of one material, an entry for each render thread. `resize`, `reset` and `destroy`
/// run while no render thread is in the material.
template <class T>
class ThreadPools {
public:
    ThreadPools() = default;
    ThreadPools(const ThreadPools&) = delete;
    ThreadPools& operator=(const ThreadPools&) = delete;
    ~ThreadPools() { destroy(); }

    /// Ends what there is and makes `n` fresh entries. If the memory can't be had there are none.
    void resize(int n) {
        destroy();
        if (n < 1)
            return;
        static_assert(sizeof(PoolEntry<T>) < 4096, "no int times the size overflows");
        entries = static_cast<PoolEntry<T>*>(alignedAlloc(n * sizeof(PoolEntry<T>)));
        if (!entries)
            return;
        numEntries = n;
        for (int i = 0; i < n; ++i)
            ::new (entries + i) PoolEntry<T>;
    }

    /// Gives all memory back.
    void destroy() {
        std::destroy_n(entries, numEntries);
        alignedFree(std::exchange(entries, nullptr));
        numEntries = 0;
    }

    /// Makes the memory of all entries reusable. Elements still out are abandoned.
    void reset() {
        for (int i = 0; i < numEntries; ++i)
            entries[i].reset();
    }

    /// The entry of a render thread; null outside the pool's lifetime.
    PoolEntry<T>* entry(int threadIndex) {
        assert(!entries || (threadIndex >= 0 && threadIndex < numEntries));
        return entries ? entries + threadIndex : nullptr;
    }

    int size() const { return numEntries; }

private:
    PoolEntry<T>* entries = nullptr;
    int numEntries = 0;
};

}  // namespace Tarnkit
