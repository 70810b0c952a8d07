#pragma once

#include <atomic>

#include "pelk/base/api.h"
#include "pelk/platform/fault.h"

namespace Tarnkit {

/// 1 once a thread has begun to write the crash dump of this process, which happens once: threads
/// that crash together would write over one another's file, and a fault that follows the first is
/// mostly its consequence. Set by the handler; a test may put it back to 0.
extern PELK_API std::atomic<int> crashDumpWritten;

/// Writes the dump of a fault of the calling thread and prints its path, as told below, if no
/// thread has done so in this process. For hosts that handle faults in their own way.
PELK_API void writeFirstCrashDump(unsigned code, const platform::Fault& fault);

/// From now on a hardware fault of the calling thread (a bad address, a bad instruction, a division
/// by zero) is thrown there as an ExceptionMsg "Unhandled exception" with its number, so that a
/// host survives a faulty plug-in. For hosts, which call it on each thread of theirs that runs
/// plug-ins; other threads keep what they had. A plug-in leaves it alone: the process is its
/// host's.
///
/// The first fault of the process is written to "Pelk.dmp" in the temporary directory before that,
/// over an older file of that name, and its path printed on the standard output. A dump that can't
/// be written is lost without a word; the exception comes all the same. Later faults throw only.
///
/// The exception is thrown out of a signal handler, from within an instruction: the compiler must
/// be told to expect that (-fnon-call-exceptions) of the code that catches it, and the data that
/// the faulty code was writing may be half done. Neither handler nor dump allocates beside the
/// exception, as the heap may be what is broken. Returns the translator that the thread had before,
/// null for none, to be put back with platform::setFaultTranslator.
PELK_API platform::FaultTranslator installCrashHandler();

}  // namespace Tarnkit
