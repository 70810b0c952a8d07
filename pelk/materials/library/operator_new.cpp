// The operator new family of the module: all of it, so that none of its memory comes from one heap
// and goes back to another. Failure is the ExceptionMsg of base/memory.h, not std::bad_alloc. The
// names stay inside the module; programs and other libraries keep their own.

#include <new>

#include "pelk/base/exception_msg.h"
#include "pelk/base/memory.h"

namespace {

void* allocateAligned(std::size_t size, std::align_val_t alignment) {
    return Tarnkit::allocate(size, static_cast<std::size_t>(alignment));
}

template <class Allocate>
void* orNull(Allocate allocate) noexcept {
    try {
        return allocate();
    } catch (const Tarnkit::ExceptionMsg&) {
        return nullptr;
    }
}

}  // namespace

void* operator new(std::size_t size) {
    return Tarnkit::allocate(size);
}
void* operator new[](std::size_t size) {
    return Tarnkit::allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocateAligned(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return allocateAligned(size, alignment);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return orNull([=] { return Tarnkit::allocate(size); });
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return orNull([=] { return Tarnkit::allocate(size); });
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return orNull([=] { return allocateAligned(size, alignment); });
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return orNull([=] { return allocateAligned(size, alignment); });
}

void operator delete(void* memory) noexcept {
    Tarnkit::freeMemory(memory);
}
void operator delete[](void* memory) noexcept {
    Tarnkit::freeMemory(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    Tarnkit::freeMemory(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    Tarnkit::freeMemory(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    Tarnkit::freeMemory(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    Tarnkit::freeMemory(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    Tarnkit::freeMemory(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    Tarnkit::freeMemory(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    Tarnkit::freeMemory(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    Tarnkit::freeMemory(memory);
}
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    Tarnkit::freeMemory(memory);
}
void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    Tarnkit::freeMemory(memory);
}
