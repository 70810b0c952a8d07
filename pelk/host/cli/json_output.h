#pragma once

#include "pelk/host/cli/console_text.h"
#include "pelk/host/scene/scene_json.h"

namespace Tarnkit {

/// Prints a value on standard output, on many lines, or on one if `indent` is -1. File names are
/// bytes: what is no valid text in them is replaced.
inline void printJson(const Json& value, int indent = 2) {
    printResult(value.dump(indent, ' ', false, Json::error_handler_t::replace) + "\n");
}

}  // namespace Tarnkit
