#pragma once

#include <cstddef>
#include <limits>
#include <new>

#include "pelk/base/api.h"

namespace Tarnkit {

// All memory of the library's own containers, pages and pools. It comes from one place, the heap of
// platform/heap.h, so that a failure reads the same in whatever program the library runs, whatever
// that has done to operator new, and so that tests can count and refuse memory.
//
// Any thread may call. All of it may take the heap's lock, so none of it is called at a hit but
// where a pool or a table has to grow. Objects are neither constructed nor destroyed here.

/// `size` bytes, aligned for every plain type (std::max_align_t), with undefined content. A size of
/// 0 gives a block of its own too. Never null: failure is an ExceptionMsg that states the size and
/// the sums of the heap, see `allocationFailed`. There is no retry and no handler to free something
/// first. The caller owns it and frees it by `freeMemory`.
PELK_API void* allocate(std::size_t size);

/// The same on a boundary of `alignment` bytes, a power of two, for types that ask for more than a
/// plain one. Freed by `freeMemory` as well.
PELK_API void* allocate(std::size_t size, std::size_t alignment);

/// Frees what either `allocate` or `allocateArray` gave; null does nothing. Not for memory of
/// `alignedAlloc`, which doesn't begin where the heap's block begins. Any thread may free what
/// another has allocated.
PELK_API void freeMemory(void* memory) noexcept;

/// What `allocate` does when the heap has refused `size` bytes; for those who ask the heap
/// themselves, or who find that a size can't be expressed. Notes the size on the debug stream and
/// throws an ExceptionMsg with the size, the bytes in the heap and those of them that are free,
/// each cut to 32 bits. If the heap is known to be damaged the text says that instead, for its sums
/// mean nothing then. Allocates nothing on the way.
[[noreturn]] PELK_API void allocationFailed(std::size_t size);

/// Room for `count` objects of a type, unconstructed: make them by placement new or one of the
/// std::uninitialized algorithms, and destroy them before `freeMemory`. Failure as for `allocate`.
/// A size in bytes that would overflow is a failure too, as a count from a scene must not wrap
/// round to a small block. Aligned for `T`, whatever that asks for.
template <class T>
T* allocateArray(std::size_t count) {
    constexpr std::size_t kMax = std::numeric_limits<std::ptrdiff_t>::max();
    if (count > kMax / sizeof(T))
        allocationFailed(kMax);
    if constexpr (alignof(T) > alignof(std::max_align_t))
        return static_cast<T*>(allocate(count * sizeof(T), alignof(T)));
    else
        return static_cast<T*>(allocate(count * sizeof(T)));
}

/// `size` bytes on a boundary of 128 bytes: two cache lines, which x86-64 processors fetch in
/// pairs. So what begins here shares no line with other data before it, such as the pools of
/// another material. Freed by `alignedFree` alone. Null, not an exception, if it can't be had, or
/// if the size can't be expressed: the caller decides what a missing array means.
PELK_API void* alignedAlloc(std::size_t size);

/// Frees what `alignedAlloc` gave; null does nothing. Reads the heap's own pointer to the block
/// from the 8 bytes before `memory`, so any other address corrupts the heap.
PELK_API void alignedFree(void* memory) noexcept;

}  // namespace Tarnkit
