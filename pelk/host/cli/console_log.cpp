#include "pelk/host/cli/console_log.h"

#include <cstdio>
#include <string>
#include <string_view>

#include "pelk/support/message_text.h"

namespace Tarnkit {

void ConsoleLog::add(const char* level, Tone tone, bool shown, const char* format,
                     va_list arguments) {
    char buffer[4096];
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    std::string_view line = buffer;
    while (line.ends_with('\n'))
        line.remove_suffix(1);
    const std::string text = messageText(line);
    diagnostics.add(level + text);
    if (shown)
        status.print(ConsoleText().add(level, tone).add(text));
}

void ConsoleLog::complain(const std::string& text) {
    diagnostics.add("pelk: " + messageText(text));
    status.print(complaint(text));
}

void ConsoleLog::debug(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add("debug: ", Tone::Detail, verbose, format, arguments);
    va_end(arguments);
}

void ConsoleLog::info(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add("", Tone::Plain, verbose, format, arguments);
    va_end(arguments);
}

void ConsoleLog::warning(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add("warning: ", Tone::Warning, true, format, arguments);
    va_end(arguments);
}

void ConsoleLog::error(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add("error: ", Tone::Error, true, format, arguments);
    va_end(arguments);
}

}  // namespace Tarnkit
