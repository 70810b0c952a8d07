// For programs in which all that allocates is to be in the test: their operator new takes from the
// heap that a test can replace, whoever asks.

#include <new>

#include "pelk/platform/heap.h"

using Tarnkit::platform::heap;

void* operator new(std::size_t size) {
    if (void* const block = heap().allocate(size))
        return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return heap().allocate(size);
}
void operator delete(void* block) noexcept {
    heap().release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    heap().release(block);
}
