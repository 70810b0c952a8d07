#pragma once

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// Called on any thread at any moment, with the number of the signal. May use lock-free atomics,
/// writeErrorOutput, dropUnfinishedOutput and endBySignal, and nothing else of the system. Others
/// of these signals wait until it returns.
using StopHandler = void (*)(int signal);

/// Gives the signals that ask a program to end to `handler`: Ctrl-C, a request to terminate, and
/// the end of the terminal. One that is ignored stays ignored, as programs expect that were started
/// by `nohup` or in the background of a script. Null: they end the program again. One thread at a
/// time calls this.
PELK_API void setStopHandler(StopHandler handler);

/// Ends the program by a signal of those, as if it had no handler: whoever started it learns which
/// one it was. Meant for a handler.
PELK_API void endBySignal(int signal);

/// Ignores the signals that would end the program at a write past the largest size that files may
/// have, or to a pipe whose reader has gone. The write then fails as one on a full disk does.
PELK_API void ignoreWriteSignals();

}  // namespace Tarnkit::platform
