#pragma once

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// A place that holds one pointer for each thread, null until the thread has set it. A copy means
/// the same place, which `create` makes and `destroy` gives back to the system.
class PELK_API ThreadSlot {
public:
    /// Without a place left in the system the slot takes nothing and answers null.
    static ThreadSlot create();
    void destroy();

    void set(void* value) const;
    void* get() const;

private:
    unsigned key = 0;
    bool exists = false;
};

}  // namespace Tarnkit::platform
