#include "pelk/status_line.h"

#include <cstdio>

#include "platform/terminal.h"

namespace Tarnkit {

StatusLine::StatusLine() : terminal(platform::errorIsTerminal()) {}

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

void StatusLine::show(const std::string& text) {
    if (!terminal)
        return;
    const std::lock_guard lock(mutex);
    std::fputs((erased() + text).c_str(), stderr);
    shown = text;
}

void StatusLine::print(std::string text) {
    while (text.ends_with('\n'))
        text.pop_back();
    const std::lock_guard lock(mutex);
    // One write for all of it: what other processes print to the same place stays apart.
    std::fputs((erased() + text + "\n" + shown).c_str(), stderr);
}

}  // namespace Tarnkit
