#pragma once

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// A hardware fault as the system reports it. Lives as long as the call that hands it out.
struct Fault {
    const void* record = nullptr;  ///< what happened and where, in the system's form
    void* context = nullptr;       ///< the registers at that moment, in the system's form
};

/// Turns a hardware fault into an exception. `code`: the system's number for the kind of fault, on
/// POSIX that of the signal. It ends by throwing, on the thread of the fault and inside the signal
/// handler, so it takes no memory beside the exception's. If it returns, the fault is handled as
/// without a translator.
using FaultTranslator = void (*)(unsigned code, const Fault& fault);

/// Sets the function that hardware faults (bad addresses, bad instructions, bad arithmetic) of
/// the calling thread are given to, null for none. Returns the one before. A stack overflow is
/// caught too, for the translator runs on a stack of its own.
///
/// Code that catches what a translator throws must be compiled with -fnon-call-exceptions:
/// otherwise the compiler takes it that a plain instruction never throws, and leaves out the way to
/// the catch.
///
/// The handlers of a process belong to all its parts. Faults of threads without a translator, and
/// signals that were sent and stand for no fault, go to the handler that stood before ours. If the
/// process has set another one since, each call with a translator puts ours first again.
PELK_API FaultTranslator setFaultTranslator(FaultTranslator translator);

/// The kind of fault in the system's words, such as "Segmentation fault". `code`: as a translator
/// gets it.
PELK_API const char* faultName(unsigned code);

/// The instruction at which the fault happened; the one that called, if that led to no code at all.
/// Null if it isn't known.
PELK_API const void* faultInstruction(const Fault& fault);

/// Writes a report of the fault on the calling thread into a file, in place of an older one:
/// the fault, the registers, the calls that led to it and the process's memory map. Does not
/// allocate. Returns false if the file can't be written.
PELK_API bool writeFaultReport(const char* fileName, unsigned code, const Fault& fault);

}  // namespace Tarnkit::platform
