#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>

namespace Tarnkit {

/// Keeps the members of an object in their order.
using OutputJson = nlohmann::ordered_json;

/// Prints a value on standard output, on many lines, or on one if `indent` is -1. File names are
/// bytes: what is no valid text in them is replaced.
inline void printJson(const OutputJson& value, int indent = 2) {
    const auto text = value.dump(indent, ' ', false, OutputJson::error_handler_t::replace);
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

}  // namespace Tarnkit
