#pragma once

#include <cassert>
#include <memory>
#include <utility>

#include "pelk/base/memory.h"
#include "pelk/base/sequence.h"

namespace Tarnkit {

// Per-thread pools of samplers. At a hit a material hands out a sampler (getBSDF) and gets it back
// a moment later (releaseBSDF), on all render threads at once, many million times a second. The
// heap would take a lock each time. So a material keeps a pool entry for each render thread, and an
// entry a free list: both calls are a few pointer writes without lock or atomic operation, and
// memory is drawn from the heap only while the pool grows to the largest number of samplers in use
// at once.
//
// Materials get all this ready made from contract/sampler_pool.h, where `pools` below is a member.
// By hand it reads:
//
//     pools.resize(numThreads);                       // in renderBegin; destroy() in renderEnd
//
//     PoolLoan bsdf(pools.entry(threadIndex));        // in getBSDF, at each hit
//     if (!bsdf)
//         return nullptr;                             // outside renderBegin and renderEnd
//     bsdf->filter = filter;                          // every field: the last hit's is still there
//     bsdf->inner = base->getBSDF(context, flags);    // if it throws, the element goes back
//     return bsdf.handOut();
//
//     pools.entry(threadIndex)                        // in releaseBSDF, on the same thread
//         ->giveBack(static_cast<PoolElement<TintBSDF>*>(sampler));

/// Whether pooled objects of this class are destroyed when their pool ends. Specialised, as true,
/// beside classes that own memory, such as LayeredBSDF with its table of layers; the others are
/// just forgotten, see kDestroyEntries.
template <class T>
inline constexpr bool kPoolDestroys = false;

/// A pooled object. It is constructed once, with its block, and reused as the last hit left it:
/// constructing a sampler anew would write fields that getBSDF writes again, and would free the
/// memory that a layered one has grown to.
///
/// The link of the free list stands in the object (an intrusive list), so giving back needs no
/// memory and can't fail. The class of `T` must not be final and has a default constructor. A
/// sampler that comes back as a base class pointer is cast to the element by static_cast, which
/// is right since the material that gets it has handed it out.
template <class T>
struct PoolElement : T {
    PoolElement* poolNext = nullptr;  ///< next on the free list; null while handed out
};

/// Elements go the way that their class asks for.
template <class T>
inline constexpr bool kDestroyEntries<PoolElement<T>> = kPoolDestroys<T>;

/// The pool of one thread: blocks of elements, and a free list of those that came back, the latest
/// first, since it is still in the cache. No lock guards it: only that thread takes and gives back.
/// Elements never move; a pointer to one holds until `clear` or the entry's end.
template <class T>
class PoolEntry {
public:
    /// Allocates nothing yet. `blockSize`: elements that are allocated at a time. Ten suit
    /// samplers, of which a thread has as many in use as materials are nested; stores of one record
    /// for each pixel or fragment ask for more.
    explicit PoolEntry(int blockSize = 10) : sequence(blockSize) {}

    /// An element as its last user left it, never null, for the caller to give back. Every field
    /// that a hit needs must be written. Constant time; asks the heap only if no element is free
    /// and the block is used up. Memory failure is an ExceptionMsg that leaves `getLiveCount`
    /// raised by one.
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

    /// Takes back an element that this entry handed out, on the thread that took it. Nothing tests
    /// that, nor that it comes back only once: an element given to another entry is later handed
    /// out by a thread that doesn't own it. What the element holds of others, such as the sampler
    /// of a sub-material, is released before.
    void giveBack(PoolElement<T>* element) {
        --liveCount;
        element->poolNext = freeHead;
        freeHead = element;
    }

    /// Makes all memory reusable and keeps it; elements are handed out from the first one on again.
    /// Elements still out are abandoned: they must neither be used nor given back.
    void reset() {
        sequence.reset();
        freeHead = nullptr;
        liveCount = 0;
    }

    /// Gives all memory back, elements that are still out included.
    void clear() {
        sequence.clear();
        freeHead = nullptr;
        liveCount = 0;
    }

    /// Elements handed out and not returned. Not 0 at the end of a frame: a sampler was leaked.
    int getLiveCount() const { return liveCount; }
    /// Elements drawn from the blocks since the pool began or was reset: the most that were out at
    /// once.
    int getCount() const { return sequence.size(); }

private:
    PoolElement<T>* freeHead = nullptr;
    int liveCount = 0;
    Sequence<PoolElement<T>> sequence;
};

/// An element on loan for the length of a scope: it goes back to its pool unless it is handed out.
/// For getBSDF, where a sub-material may throw for want of memory, or give no sampler to go with
/// the element. Each way out but the last then leaves the pool as it was. Lives on one thread, no
/// longer than the entry.
template <class T>
class PoolLoan {
public:
    /// Takes an element, with the failure of `take`. Of a null entry, as ThreadPools::entry answers
    /// outside a render, nothing is lent.
    explicit PoolLoan(PoolEntry<T>* entry_)
        : entry(entry_), element(entry_ ? entry_->take() : nullptr) {}
    ~PoolLoan() {
        if (element)
            entry->giveBack(element);
    }
    PoolLoan(const PoolLoan&) = delete;
    PoolLoan& operator=(const PoolLoan&) = delete;

    /// Whether there is an element: false for a null entry, and after `handOut`.
    explicit operator bool() const { return element; }
    /// The element, to fill its fields; only while there is one.
    PoolElement<T>* operator->() const { return element; }
    PoolElement<T>& operator*() const { return *element; }
    /// The element, from now on the caller's to give back; null if there is none. Once only: later
    /// calls give null.
    PoolElement<T>* handOut() { return std::exchange(element, nullptr); }

private:
    PoolEntry<T>* const entry;
    PoolElement<T>* element;
};

/// The pools of one material, an entry for each render thread, picked by the thread's index: unique
/// among the render threads and below their number, so no two threads meet in an entry. `resize`,
/// `reset` and `destroy` run while no render thread is in the material: in renderBegin and
/// renderEnd, or frameBegin and frameEnd, of which the first keeps what the pool has grown to from
/// frame to frame. While a frame runs a pool only grows.
///
/// The array of entries begins on a boundary of two cache lines; within it entries aren't padded,
/// so neighbours may share a line at their edge.
template <class T>
class ThreadPools {
public:
    ThreadPools() = default;
    ThreadPools(const ThreadPools&) = delete;
    ThreadPools& operator=(const ThreadPools&) = delete;
    ~ThreadPools() { destroy(); }

    /// Ends what there is and makes `n` fresh entries, none for an `n` below 1. `n`: the number of
    /// render threads, numThreads of the renderer's sequenceData. If the memory can't be had there
    /// are none, and no exception: getBSDF then gives no sampler, which every caller can deal with.
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

    /// Gives all memory back, elements that are still out included. Does nothing the second time,
    /// so a material may call it in renderEnd and leave it to the destructor as well.
    void destroy() {
        std::destroy_n(entries, numEntries);
        alignedFree(std::exchange(entries, nullptr));
        numEntries = 0;
    }

    /// Makes the memory of all entries reusable. Elements still out are abandoned, as by
    /// PoolEntry::reset.
    void reset() {
        for (int i = 0; i < numEntries; ++i)
            entries[i].reset();
    }

    /// The entry of a render thread; null outside the pool's lifetime, that is before `resize`,
    /// after `destroy`, or if `resize` found no memory. `threadIndex`: of the context's threadData.
    PoolEntry<T>* entry(int threadIndex) {
        assert(!entries || (threadIndex >= 0 && threadIndex < numEntries));
        return entries ? entries + threadIndex : nullptr;
    }

    /// Elements that all threads together have not given back. Only while none of them takes any.
    int getLiveCount() const {
        int sum = 0;
        for (int i = 0; i < numEntries; ++i)
            sum += entries[i].getLiveCount();
        return sum;
    }

    /// Entries there are; 0 outside the pool's lifetime.
    int size() const { return numEntries; }

private:
    PoolEntry<T>* entries = nullptr;
    int numEntries = 0;
};

}  // namespace Tarnkit
