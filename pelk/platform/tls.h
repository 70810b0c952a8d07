#pragma once

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// A variable of which each thread has its own: one pointer, null until the thread has set it. Made
/// at run time, unlike `thread_local`, so that each thread manager has one for itself. Nothing that
/// a pointer leads to is freed when a thread ends.
///
/// The object is a handle, and a copy means the same variable; whoever made it by `create` ends it
/// by `destroy`, when no thread uses it any more. `set` and `get` may be called by any thread.
class PELK_API ThreadSlot {
public:
    /// The system has few of them, and when it has none left the slot forgets what is set and
    /// answers null.
    static ThreadSlot create();
    void destroy();

    /// For the calling thread alone.
    void set(void* value) const;
    /// What the calling thread has set; null if nothing.
    void* get() const;

private:
    unsigned key = 0;
    bool exists = false;
};

}  // namespace Tarnkit::platform
