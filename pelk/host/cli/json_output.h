#pragma once

#include "pelk/host/cli/console_text.h"
#include "pelk/host/scene/scene_json.h"

namespace Tarnkit {

/// Prints a value on standard output, on many lines, or on one if `indent` is -1. JSON is UTF-8,
/// but a file name can be any bytes: those that are no UTF-8 become U+FFFD, where the library would
/// throw.
inline void printJson(const Json& value, int indent = 2) {
    printResult(value.dump(indent, ' ', false, Json::error_handler_t::replace) + "\n");
}

}  // namespace Tarnkit
