#pragma once

#include "pelk/base/char_string.h"

namespace Tarnkit {

// The variables of the process's environment. Not while another thread changes one.

/// Replaces each reference `${NAME}` in a text by the variable's value, or by nothing if it isn't
/// set. References may be nested, the inner one first: "${DIR_${OS}}"; a value may hold references
/// too. All equal ones are replaced at once. A `}` that no `${` stands before ends the expansion,
/// there and for all that follows.
/// Values that lead back to themselves never end: after 1,000 replacements, or before one that
/// would make the text longer by more than 64 KiB in all, the rest stays as it is then. Memory
/// failure leaves the text as it was.
void expandEnvironment(CharString& text);

/// The name of the first variable that expandEnvironment would find unset in `text` and replace by
/// nothing; null if there is none. For callers who would rather tell their user.
CharString findUnsetVariable(const CharString& text);

/// Brings the C runtime's variables, those that getenv knows, up to date with the process's own, on
/// systems that keep two sets (platform/environment.h). An entry without a name is passed over, and
/// so is one whose runtime value has 32,768 bytes or more. Nothing is taken away from the runtime.
void syncEnvironment();

}  // namespace Tarnkit
