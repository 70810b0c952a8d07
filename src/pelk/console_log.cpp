#include "pelk/console_log.h"

#include <cstdarg>
#include <cstdio>
#include <string>

namespace Tarnkit {

namespace {

void print(StatusLine& status, const char* level, const char* format, va_list arguments) {
    char text[4096];
    std::vsnprintf(text, sizeof text, format, arguments);
    status.print(std::string(level) + text);
}

}  // namespace

void ConsoleLog::debug(const char* format, ...) {
    if (!verbose)
        return;
    va_list arguments;
    va_start(arguments, format);
    print(status, "debug: ", format, arguments);
    va_end(arguments);
}

void ConsoleLog::info(const char* format, ...) {
    if (!verbose)
        return;
    va_list arguments;
    va_start(arguments, format);
    print(status, "", format, arguments);
    va_end(arguments);
}

void ConsoleLog::warning(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    print(status, "warning: ", format, arguments);
    va_end(arguments);
}

void ConsoleLog::error(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    print(status, "error: ", format, arguments);
    va_end(arguments);
}

}  // namespace Tarnkit
