#include "pelk/host/cli/console_text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <mutex>

#include "pelk/platform/console.h"
#include "pelk/support/console.h"
#include "pelk/support/message_text.h"

namespace Tarnkit {

namespace {

constexpr const char* sequenceOf(Tone tone) {
    switch (tone) {
        case Tone::Heading:
            return "\x1b[1;34m";
        case Tone::Good:
            return "\x1b[0;32m";
        case Tone::Detail:
            return "\x1b[0;35m";
        case Tone::Warning:
            return "\x1b[0;33m";
        case Tone::Error:
            return "\x1b[0;31m";
        case Tone::Plain:
            break;
    }
    return "";
}

constinit std::mutex consoleMutex;

/// Makes a stream the one that tarnkit_cprint writes to, until the end of the scope and for one
/// thread at a time: the console in use is the process's.
class StreamInUse {
public:
    explicit StreamInUse(Stream stream) : hold(consoleMutex), former(platform::console()) {
        if (stream == Stream::Error)
            platform::setConsole(&platform::errorConsole());
    }
    ~StreamInUse() { platform::setConsole(&former); }
    StreamInUse(const StreamInUse&) = delete;
    StreamInUse& operator=(const StreamInUse&) = delete;

private:
    const std::lock_guard<std::mutex> hold;
    platform::Console& former;
};

}  // namespace

ConsoleText& ConsoleText::add(std::string_view piece, Tone tone) {
    const char* const sequence = sequenceOf(tone);
    text += sequence;
    const std::size_t start = text.size();
    text += piece;
    std::replace(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(), '\x1b', '?');
    if (*sequence)
        text += "\x1b[0m";
    return *this;
}

ConsoleText& ConsoleText::addf(const char* format, ...) {
    va_list arguments, again;
    va_start(arguments, format);
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string formatted(static_cast<std::size_t>(std::max(length, 0)) + 1, '\0');
    std::vsnprintf(formatted.data(), formatted.size(), format, again);
    va_end(again);
    formatted.pop_back();
    return add(formatted);
}

ConsoleText& ConsoleText::append(const ConsoleText& other) {
    text += other.text;
    return *this;
}

ConsoleText complaint(std::string_view text) {
    return ConsoleText().add("pelk:", Tone::Error).add(" ").add(messageText(text));
}

void print(Stream stream, const ConsoleText& text) {
    const StreamInUse inUse(stream);
    // The console would complain on the other stream, where results may stand.
    if (platform::console().isValid())
        tarnkit_cprint(wantsConsoleColors(), text.getSequences().c_str());
}

void printResult(std::string_view text) {
    const StreamInUse inUse(Stream::Output);
    if (platform::console().isValid())
        platform::console().write(text.data(), text.size());
}

int consoleWidth(Stream stream) {
    const StreamInUse inUse(stream);
    return getConsoleWidth();
}

}  // namespace Tarnkit
