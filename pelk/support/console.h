#pragma once

namespace Tarnkit {

// Text for the user, on the console or whatever the standard output is. Colours are asked for by
// the sequences ESC[0;31m red, 32 green, 33 yellow, 34 blue, 35 magenta, ESC[1;34m bright blue,
// and ESC[0m for the colours that the console had. Other sequences are dropped. Two threads that
// print in colours at one time can mix their texts and colours.

/// Prints a text; null and the empty one do nothing. With `colors` false it goes out in one piece
/// without its sequences. With `colors` true a terminal shows them, and keeps its background; no
/// colour outlasts the call.
void tarnkit_cprint(bool colors, const char* text);

/// The same for a text that is formatted as by printf.
void tarnkit_cprintf(bool colors, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Whether a user would like colours: the output is a terminal that can show them, and the
/// environment does not speak against it by a NO_COLOR that isn't empty.
bool wantsConsoleColors();

/// The size of the console's window in characters. False if the output is no console.
bool getConsoleSize(int* columns, int* rows);

/// The columns alone; what they were last known to be, 80 at first, if the output is no console.
int getConsoleWidth();

}  // namespace Tarnkit
