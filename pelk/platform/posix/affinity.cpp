#include <sched.h>
#include <unistd.h>

#include "pelk/platform/affinity.h"

namespace Tarnkit::platform {

bool processAffinity(ProcessorSet& set) {
    static_assert(sizeof(ProcessorSet) == sizeof(cpu_set_t), "the system's set has our layout");
    set = {};
    // By the process's id and not 0: a worker that is bound to a node would get its own set.
    return sched_getaffinity(getpid(), sizeof set, reinterpret_cast<cpu_set_t*>(&set)) == 0;
}

}  // namespace Tarnkit::platform
