#pragma once

#include "pelk/base/api.h"
#include "pelk/base/types.h"

namespace Tarnkit {

/// Sum of the sizes of the heap's free blocks, in bytes. Notes its steps on the debug stream.
PELK_API u64 getFreeHeapMemory();

/// Sum of the sizes of the heap's blocks in use, in bytes. Notes its steps on the debug stream.
PELK_API u64 getAllocatedMemory();

/// Sum of the sizes of all blocks of the heap, in bytes. Prints nothing.
PELK_API u64 getHeapSize();

}  // namespace Tarnkit
