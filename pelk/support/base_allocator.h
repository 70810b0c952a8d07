#pragma once

#include "pelk/base/memory.h"

namespace Tarnkit {

/// A standard allocator over the heap functions of base/memory.h: `std::map` and its like then take
/// their memory where the containers of base/ take theirs. The reason is failure: with
/// `std::allocator` a lack of memory is a `std::bad_alloc`, while callers of this library catch
/// `ExceptionMsg` alone.
///
///     std::map<int, float, std::less<>, BaseAllocator<std::pair<const int, float>>> byNumber;
///
/// Has no state: memory that one allocator gave may be given back through any other, on any thread.
template <class T>
struct BaseAllocator {
    using value_type = T;

    BaseAllocator() = default;
    /// A container allocates its own nodes, not T, so it converts the allocator that it was given.
    template <class U>
    BaseAllocator(const BaseAllocator<U>&) noexcept {}

    /// Room for `count` objects, unconstructed. Throws an ExceptionMsg if there is none.
    T* allocate(std::size_t count) { return allocateArray<T>(count); }
    void deallocate(T* memory, std::size_t) noexcept { freeMemory(memory); }
    friend bool operator==(BaseAllocator, BaseAllocator) { return true; }
};

}  // namespace Tarnkit
