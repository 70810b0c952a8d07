#include "pelk/platform/tls.h"

#include <pthread.h>

#include <utility>

namespace Tarnkit::platform {

static_assert(sizeof(pthread_key_t) == sizeof(unsigned));

ThreadSlot ThreadSlot::create() {
    ThreadSlot slot;
    slot.exists = pthread_key_create(&slot.key, nullptr) == 0;
    return slot;
}

void ThreadSlot::destroy() {
    if (std::exchange(exists, false))
        pthread_key_delete(key);
}

void ThreadSlot::set(void* value) const {
    if (exists)
        pthread_setspecific(key, value);
}

void* ThreadSlot::get() const {
    return exists ? pthread_getspecific(key) : nullptr;
}

}  // namespace Tarnkit::platform
