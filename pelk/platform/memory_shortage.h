#pragma once

#include <cstddef>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// From now on a `new` anywhere in the process that can't have its memory counts as a shortage, and
/// throws std::bad_alloc as before. Keeps a reserve of a megabyte for the words about it, which the
/// first shortage gives back. For the main function of a program, once.
PELK_API void watchMemory();

/// Notes a shortage that another way of having memory met with: the system's loader, or a library
/// with an allocator of its own. Any thread, also where nothing may be allocated.
PELK_API void noteMemoryShortage();

/// Whether there was one in this process. Libraries turn theirs into all kinds of failures, such as
/// files that they call broken; with this, what a program answers needs not be wrong.
PELK_API bool hadMemoryShortage();

/// Whether so many bytes, and the stacks of so many further threads, could be had at this moment by
/// what the process may have. Nothing is kept, and nothing of the runtime is used but the system's
/// calls, so that it can be asked before any library is ready.
PELK_API bool canHaveMemory(std::size_t bytes, int threads);

}  // namespace Tarnkit::platform
