#include "library/runtime_probe.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>
#include <cstddef>

// The functions below stand in front of the runtime's for the whole process, libpelk and the
// module included, since a program's own names are found first.

namespace {

thread_local RuntimeCalls* counting = nullptr;

void countHeap() {
    if (counting)
        ++counting->heap;
}

template <class Function>
int lockBy(const char* name, Function*& next, auto* lock) {
    if (counting)
        ++counting->locks;
    if (!next)
        next = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
    return next(lock);
}

thread_local RuntimeCalls current;

}  // namespace

// Names that other libraries are to find, whatever the visibility of the rest.
#pragma GCC visibility push(default)
extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);

void* malloc(size_t size) noexcept {
    countHeap();
    return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) noexcept {
    countHeap();
    return __libc_calloc(count, size);
}
void* realloc(void* block, size_t size) noexcept {
    countHeap();
    return __libc_realloc(block, size);
}
void* aligned_alloc(size_t alignment, size_t size) noexcept {
    countHeap();
    return __libc_memalign(alignment, size);
}
int posix_memalign(void** block, size_t alignment, size_t size) noexcept {
    countHeap();
    *block = __libc_memalign(alignment, size);
    return *block ? 0 : ENOMEM;
}
void free(void* block) noexcept {
    countHeap();
    __libc_free(block);
}

int pthread_mutex_lock(pthread_mutex_t* lock) noexcept {
    static decltype(pthread_mutex_lock)* next;
    return lockBy("pthread_mutex_lock", next, lock);
}
int pthread_mutex_trylock(pthread_mutex_t* lock) noexcept {
    static decltype(pthread_mutex_trylock)* next;
    return lockBy("pthread_mutex_trylock", next, lock);
}
int pthread_rwlock_rdlock(pthread_rwlock_t* lock) noexcept {
    static decltype(pthread_rwlock_rdlock)* next;
    return lockBy("pthread_rwlock_rdlock", next, lock);
}
int pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept {
    static decltype(pthread_rwlock_wrlock)* next;
    return lockBy("pthread_rwlock_wrlock", next, lock);
}
}
#pragma GCC visibility pop

RuntimeProbe::RuntimeProbe() {
    current = RuntimeCalls();
    counting = &current;
}

RuntimeProbe::~RuntimeProbe() {
    counting = nullptr;
}

RuntimeCalls RuntimeProbe::calls() const {
    return current;
}
