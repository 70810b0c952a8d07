#pragma once

#include <atomic>

#include "pelk/base/api.h"
#include "pelk/platform/fault.h"

namespace Tarnkit {

/// 1 once a thread has begun to write the crash dump of this process, which happens once.
extern PELK_API std::atomic<int> crashDumpWritten;

/// Makes hardware faults of the calling thread exceptions (ExceptionMsg), the first of the
/// process after a crash dump in the temporary directory. Each thread that wants this calls it.
/// Returns the translator that the thread had before, null for none.
PELK_API platform::FaultTranslator installCrashHandler();

}  // namespace Tarnkit
