#pragma once

#include <string>
#include <string_view>

namespace Tarnkit {

/// A message in the form in which it is shown and logged: one line, of at most a thousand
/// characters or so of its text. Every message passes through here on its way out, since much of it
/// may be quoted from an input that nobody has looked at: a name in a scene may hold line ends, by
/// which it could pretend to be a message of its own, or the codes by which terminals are
/// commanded, or a million letters.
///
/// - Line ends and tabs become `\n`, `\r` and `\t`, other control characters `\x1b` and the like,
///   those of UTF-8 beyond ASCII (U+0080 to U+009F) included. Bytes that are no UTF-8 stay.
/// - Of a text that is too long the middle goes, and " [...] " stands there: messages begin with
///   the place and end with what was expected. No character of UTF-8 is cut in two.
///
/// A line end of the message's own is added behind, by whoever prints it.
std::string messageText(std::string_view text);

}  // namespace Tarnkit
