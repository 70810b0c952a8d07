#include "pelk/host/cli/status_line.h"

#include <algorithm>
#include <utility>

#include "pelk/platform/console.h"

namespace Tarnkit {

StatusLine::StatusLine() : terminal(platform::errorConsole().isTerminal()) {}

StatusLine::~StatusLine() {
    show({});
}

std::string StatusLine::erased() const {
    if (shown.empty())
        return {};
    std::string blanks(shown.size() + 2, ' ');
    blanks.front() = blanks.back() = '\r';
    return blanks;
}

void StatusLine::show(std::string text) {
    if (!terminal)
        return;
    // A line that wraps can't be erased by going back to its start, and some terminals wrap as soon
    // as the last column is written, so that stays free.
    const int width = consoleWidth(Stream::Error) - 1;
    text.resize(std::min(text.size(), static_cast<std::size_t>(std::max(width, 0))));
    const std::lock_guard lock(mutex);
    Tarnkit::print(Stream::Error, erased() + text);
    shown = std::move(text);
}

void StatusLine::print(const ConsoleText& text) {
    const std::lock_guard lock(mutex);
    // One call for all of it: what other processes print to the same place stays apart.
    Tarnkit::print(Stream::Error, ConsoleText(erased()).append(text).add("\n" + shown));
}

}  // namespace Tarnkit
