#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace Tarnkit {

/// Objects keep the order of their file.
using Json = nlohmann::ordered_json;

/// Parses JSON, in which comments may stand. Refuses a key that stands twice in one object.
/// Returns false with a text that starts with the line and column, or with the pointer.
bool parseSceneJson(std::string_view text, Json& out, std::string& error);

/// A JSON pointer with one more step, which is escaped.
std::string pointerTo(const std::string& parent, std::string_view key);
std::string pointerTo(const std::string& parent, size_t index);

/// A value as it would stand in a file, cut if it is long; for messages.
std::string shortText(const Json& value);

}  // namespace Tarnkit
