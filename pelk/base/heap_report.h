#pragma once

#include "pelk/base/api.h"
#include "pelk/base/types.h"

namespace Tarnkit {

// The state of the runtime's heap, as the text of a memory failure states it. These are sums of the
// allocator's own books, for people to read: between two calls other threads allocate and free. An
// allocator that gives no report makes all three 0. They walk or sum the whole heap, so they have
// no place in a render; nothing here allocates or throws, for memory has just run out when they
// are called. Any thread may call.

/// Sum of the sizes of the heap's free blocks, in bytes. That much may be free and a request below
/// it still fail: no single block is that large. Notes its steps on the debug stream.
PELK_API u64 getFreeHeapMemory();

/// Sum of the sizes of the heap's blocks in use, in bytes, those of other libraries of the process
/// included. Notes its steps on the debug stream.
PELK_API u64 getAllocatedMemory();

/// Sum of the sizes of all blocks of the heap, free or in use, in bytes. Prints nothing.
/// Not the size of the process: code, stacks and files that are mapped into memory aren't the
/// heap's, and some of what the heap has freed may still be held back from the system.
PELK_API u64 getHeapSize();

}  // namespace Tarnkit
