#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace Tarnkit {

/// Objects keep the order of their file, since instances are made and begun in that order.
using Json = nlohmann::ordered_json;

/// Parses JSON, in which comments may stand. Refuses a key that stands twice in one object, which
/// JSON allows: of two instances of one name one would vanish without a word. Refuses more than 64
/// levels. Returns false with a text that starts with line and column ("3:14: ...") where the text
/// is no JSON, or with the JSON pointer ("/plugins/red: ...") where its content is refused.
bool parseSceneJson(std::string_view text, Json& out, std::string& error);

/// The value of a whole number of 32 bits, which may stand as 10, 10.0 or 1e1. False for anything
/// else; `out` is then untouched.
bool toWholeNumber(const Json& value, int& out);

/// A JSON pointer (RFC 6901) with one more step; `~` and `/` in a key are escaped as ~0 and ~1.
std::string pointerTo(const std::string& parent, std::string_view key);
std::string pointerTo(const std::string& parent, std::size_t index);

/// A value as it would stand in a file, cut behind 40 characters; for messages.
std::string shortText(const Json& value);

}  // namespace Tarnkit
