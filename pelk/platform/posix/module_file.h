#pragma once

#include <string>

namespace Tarnkit::platform {

/// Tells whether a library's file holds all that its head says is to be mapped. The system maps a
/// file that was cut short without a word, and ends the program when it reads what isn't there.
/// What is no library at all passes, for the loader to refuse, but for what is no plain file: the
/// loader would wait for the writer of a pipe. On false, `reason` is in words.
bool isWholeModule(const std::string& path, std::string& reason);

}  // namespace Tarnkit::platform
