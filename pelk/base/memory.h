#pragma once

#include <cstddef>
#include <limits>
#include <new>

#include "pelk/base/api.h"

namespace Tarnkit {

/// Memory from the runtime's heap, aligned for every plain type. Never null: failure is an
/// ExceptionMsg with the state of the heap. Containers, pages and pools take all memory here,
/// so that a failure reads the same in whatever program they run. Freed by `freeMemory`.
PELK_API void* allocate(std::size_t size);

/// The same on a boundary of `alignment` bytes, a power of two.
PELK_API void* allocate(std::size_t size, std::size_t alignment);

/// Frees what `allocate` gave; null does nothing.
PELK_API void freeMemory(void* memory) noexcept;

/// What `allocate` does when the heap has refused `size` bytes.
[[noreturn]] PELK_API void allocationFailed(std::size_t size);

/// Room for `count` objects of a type, unconstructed. Failure as for `allocate`; a size that
/// can't be expressed is one. Freed by `freeMemory`.
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

/// Memory on a boundary of 128 bytes, freed by `alignedFree` alone; null if it can't be had.
PELK_API void* alignedAlloc(std::size_t size);

/// Frees what `alignedAlloc` gave; null does nothing.
PELK_API void alignedFree(void* memory) noexcept;

}  // namespace Tarnkit
