#pragma once

namespace Tarnkit {

// Text for the user, on the console or whatever the standard output is. Colours are asked for by
// escape sequences inside the text, so that one string carries both:
//
//     tarnkit_cprint(wantsConsoleColors(), "\x1b[0;31merror:\x1b[0m no camera\n");
//
// A sequence is ESC and all behind it up to the next `m`. These are known: ESC[0;31m red, 32 green,
// 33 yellow, 34 blue, 35 magenta, ESC[1;34m bright blue, and ESC[0m for the colours that the
// console had. Both blues have green in them, as plain blue can't be read on black. Any other
// sequence is dropped and changes nothing; one of 64 characters without an `m` ends the text there.
//
// A colour sets the *attributes* of what is written next: a bit each for blue, green, red and
// intensity of the letters, and the same four of the background, which keep what they were.
//
// No operation throws; without memory a text is lost. None takes a lock: two threads that print in
// colours at one time can mix their texts and colours, so a program of several threads guards them.

/// Prints a text; null and the empty one do nothing. With `colors` false it goes out in one piece
/// without its sequences. With `colors` true a terminal shows them, and keeps its background; no
/// colour outlasts the call. On a file or a pipe the sequences are dropped either way. If the
/// standard output is closed, a line about it goes to the C library's stream of that name.
void tarnkit_cprint(bool colors, const char* text);

/// The same for a text that is formatted as by printf, of any length. Up to 2,047 characters are
/// formatted on the stack.
void tarnkit_cprintf(bool colors, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Whether a user would like colours: the output is a terminal that can show them (TERM is not
/// "dumb"), and the environment does not speak against it by a NO_COLOR that isn't empty.
bool wantsConsoleColors();

/// The size of the console's window in characters. False if the output is no console; both are then
/// left alone.
bool getConsoleSize(int* columns, int* rows);

/// The columns alone; what they were last known to be, 80 at first, if the output is no console.
/// For line breaks, which need some answer.
int getConsoleWidth();

}  // namespace Tarnkit
