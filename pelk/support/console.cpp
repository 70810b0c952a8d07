#include "pelk/support/console.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "pelk/platform/console.h"

namespace Tarnkit {

namespace {

constexpr char kEscape = '\x1b';

struct ColorRow {
    std::string_view sequence;
    unsigned attribute;
};

/// Plain blue is hard to read on black, so both blues have green in them.
constexpr ColorRow kColors[] = {
    {"\x1b[0;31m", 0x4}, {"\x1b[0;32m", 0x2}, {"\x1b[0;33m", 0x6},
    {"\x1b[0;34m", 0x3}, {"\x1b[1;34m", 0xB}, {"\x1b[0;35m", 0x5},
};
constexpr std::string_view kRestore = "\x1b[0m";

/// The console as last read. Shared by all threads that print.
struct ConsoleState {
    std::atomic<unsigned> attributes{platform::kConsoleDefault};
    std::atomic<unsigned> backgroundBits{0};
    std::atomic<int> columns{80};

    void read(const platform::Console& console) {
        attributes = console.getAttributes();
        backgroundBits = attributes & 0xF0;
    }
};

constinit ConsoleState consoleState;

using Buffer = std::unique_ptr<char[]>;

/// Null if there is no memory: a report must not stop its caller.
Buffer newBuffer(std::size_t size) {
    return Buffer(new (std::nothrow) char[size]);
}

/// Sets the attributes that a sequence stands for; one that isn't known changes nothing.
void applySequence(platform::Console& console, std::string_view sequence) {
    for (const ColorRow& row : kColors) {
        if (sequence.starts_with(row.sequence))
            return console.setAttributes(row.attribute | consoleState.backgroundBits);
    }
    if (sequence.starts_with(kRestore))
        console.setAttributes(consoleState.attributes);
}

/// Takes a text character by character, and writes it out in pieces of one colour each.
class ColorWalk {
public:
    ColorWalk(platform::Console& target, char* textBuffer) : console(target), text(textBuffer) {}

    /// False if a sequence is too long; the rest of the text is then dropped.
    bool take(char character) {
        if (character == kEscape || sequenceLength > 0)
            return takeOfSequence(character);
        text[textLength++] = character;
        return true;
    }

    void flush() {
        if (textLength > 0)
            console.write(text, textLength);
        textLength = 0;
    }

private:
    bool takeOfSequence(char character) {
        sequence[sequenceLength++] = character;
        if (sequenceLength == sizeof sequence) {
            std::puts("tarnkit_cprint: Incorrect ESC length!");
            return false;
        }
        if (character == 'm') {
            flush();
            applySequence(console, {sequence, sequenceLength});
            sequenceLength = 0;
        }
        return true;
    }

    platform::Console& console;
    char* text;
    std::size_t textLength = 0;
    char sequence[64];
    std::size_t sequenceLength = 0;
};

void printColored(platform::Console& console, std::string_view text) {
    const Buffer buffer = newBuffer(text.size());
    if (!buffer)
        return;
    ColorWalk walk(console, buffer.get());
    for (const char character : text)
        if (!walk.take(character))
            break;
    walk.flush();
    console.setAttributes(consoleState.attributes);
}

void printPlain(platform::Console& console, std::string_view text) {
    const Buffer buffer = newBuffer(text.size());
    if (!buffer)
        return;
    std::size_t length = 0;
    bool inSequence = false;
    for (const char character : text) {
        inSequence = inSequence || character == kEscape;
        if (!inSequence)
            buffer[length++] = character;
        else if (character == 'm')
            inSequence = false;
    }
    console.write(buffer.get(), length);
}

}  // namespace

void tarnkit_cprint(bool colors, const char* text) {
    if (!text || !*text)
        return;
    platform::Console& console = platform::console();
    consoleState.read(console);
    if (!console.isValid())
        std::puts("tarnkit_cprint: Invalid handle!");
    else if (colors)
        printColored(console, text);
    else
        printPlain(console, text);
}

void tarnkit_cprintf(bool colors, const char* format, ...) {
    va_list arguments, again;
    va_start(arguments, format);
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    char onStack[2048];
    const std::size_t size = length + std::size_t{1};
    const Buffer onHeap = length >= 0 && size > sizeof onStack ? newBuffer(size) : nullptr;
    char* text = onHeap ? onHeap.get() : onStack;
    if (length >= 0 && (onHeap || size <= sizeof onStack)) {
        std::vsnprintf(text, size, format, again);
        tarnkit_cprint(colors, text);
    }
    va_end(again);
}

bool wantsConsoleColors() {
    const char* refusal = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return !(refusal && *refusal) && !(terminal && std::strcmp(terminal, "dumb") == 0) &&
           platform::console().isTerminal();
}

bool getConsoleSize(int* columns, int* rows) {
    const platform::Console& console = platform::console();
    platform::ConsoleWindow window;
    if (!console.isValid() || !console.getWindow(window))
        return false;
    *columns = window.right - window.left + 1;
    *rows = window.bottom - window.top + 1;
    return true;
}

int getConsoleWidth() {
    platform::ConsoleWindow window;
    if (platform::console().getWindow(window))
        consoleState.columns = window.right - window.left + 1;
    return consoleState.columns;
}

}  // namespace Tarnkit
