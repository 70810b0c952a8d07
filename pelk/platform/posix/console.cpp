#include "pelk/platform/console.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace Tarnkit::platform {

namespace {

/// The system's number of the first failure to write to the standard output; 0 for none.
constinit std::atomic<int> outputFailure{0};

void noteOutputFailure() {
    int none = 0;
    outputFailure.compare_exchange_strong(none, errno);
}

void flushOutput() {
    if (std::fflush(stdout) != 0)
        noteOutputFailure();
}

/// The standard output or error of the process. A terminal can't be asked for its attributes, so
/// what was set is kept here.
class StandardConsole final : public Console {
public:
    explicit constexpr StandardConsole(int descriptor) : stream(descriptor) {}

    bool isValid() const override { return fcntl(stream, F_GETFD) != -1; }
    bool isTerminal() const override { return isatty(stream); }

    bool getWindow(ConsoleWindow& window) const override {
        winsize size = {};
        if (ioctl(stream, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
            return false;
        window = {0, 0, size.ws_col - 1, size.ws_row - 1};
        return true;
    }

    unsigned getAttributes() const override { return attributes; }

    void setAttributes(unsigned value) override {
        if (attributes.exchange(value) == value || !isTerminal())
            return;
        char sequence[32];
        terminalSequence(value, sequence, sizeof sequence);
        flushOutput();  // what was printed before keeps its colour
        writeAll(sequence);
    }

    void write(const char* text, std::size_t length) override {
        flushOutput();  // what was printed before comes before
        writeAll({text, length});
    }

private:
    void writeAll(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t written = ::write(stream, text.data(), text.size());
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0) {
                if (stream == STDOUT_FILENO)
                    noteOutputFailure();
                return;
            }
            text.remove_prefix(written);
        }
    }

    const int stream;
    std::atomic<unsigned> attributes{kConsoleDefault};
};

constinit StandardConsole standardConsole(STDOUT_FILENO);
constinit StandardConsole standardError(STDERR_FILENO);
constinit std::atomic<Console*> current{&standardConsole};

/// The ANSI number of a colour: its lowest bit is red, that of our attributes is blue.
unsigned terminalColor(unsigned attributes) {
    return (attributes & kConsoleRed ? 1 : 0) | (attributes & kConsoleGreen ? 2 : 0) |
           (attributes & kConsoleBlue ? 4 : 0);
}

}  // namespace

Console& console() {
    return *current.load();
}

Console& errorConsole() {
    return standardError;
}

void setConsole(Console* replacement) {
    current = replacement ? replacement : &standardConsole;
}

void fillClosedStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // open() takes the lowest free number, which is this one: those below are open by now.
        if (fcntl(stream, F_GETFD) < 0 && errno == EBADF)
            (void)!open("/dev/null", stream == STDIN_FILENO ? O_RDONLY : O_WRONLY);
    }
}

bool finishStandardOutput(std::string& error) {
    flushOutput();
    const int failure = outputFailure;
    const bool isWhole = failure == 0 && !std::ferror(stdout);
    if (isWhole || failure == EPIPE || !standardConsole.isValid())
        return true;
    error = failure != 0 ? std::strerror(failure) : "a write failed";
    return false;
}

void terminalSequence(unsigned attributes, char* buffer, std::size_t size) {
    if (attributes == kConsoleDefault) {
        std::snprintf(buffer, size, "\x1b[0m");
        return;
    }
    const unsigned background = attributes >> 4;
    const unsigned textBase = attributes & kConsoleIntensity ? 90 : 30;
    const unsigned text = textBase + terminalColor(attributes);
    if (background == 0)
        std::snprintf(buffer, size, "\x1b[0;%um", text);
    else
        std::snprintf(buffer, size, "\x1b[0;%u;%um", text,
                      (background & kConsoleIntensity ? 100 : 40) + terminalColor(background));
}

}  // namespace Tarnkit::platform
