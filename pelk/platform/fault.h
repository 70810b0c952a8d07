#pragma once

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// A hardware fault as the system reports it. Lives as long as the call that hands it out.
struct Fault {
    const void* record = nullptr;  ///< what happened and where, in the system's form
    void* context = nullptr;       ///< the registers at that moment, in the system's form
};

/// Gets the number that the system gives to the kind of fault. It ends by throwing; if it
/// returns, the fault goes on its way as if no translator stood.
using FaultTranslator = void (*)(unsigned code, const Fault& fault);

/// Sets the function that hardware faults (bad addresses, bad instructions, bad arithmetic) of
/// the calling thread end in, null for none. Returns the one before. Works on deep recursion
/// too, for the translator runs on a stack of its own. Code that catches what a translator
/// throws must be compiled to expect exceptions from plain instructions. Faults of threads
/// without a translator go to who handled them before. If the process has set another handler
/// since, each call with a translator puts ours first again.
PELK_API FaultTranslator setFaultTranslator(FaultTranslator translator);

/// Writes a report of the fault on the calling thread into a file, in place of an older one:
/// the fault, the registers, the calls that led to it and the process's memory map. Does not
/// allocate. Returns false if the file can't be written.
PELK_API bool writeFaultReport(const char* fileName, unsigned code, const Fault& fault);

}  // namespace Tarnkit::platform
