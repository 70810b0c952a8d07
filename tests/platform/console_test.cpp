#include "platform/console.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

using namespace Tarnkit::platform;

namespace {

/// Puts another file in the place of the standard output while it lives.
class OutputInto {
public:
    explicit OutputInto(int file) : saved(dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        if (file < 0)
            close(STDOUT_FILENO);
        else
            dup2(file, STDOUT_FILENO);
    }
    ~OutputInto() {
        dup2(saved, STDOUT_FILENO);
        close(saved);
    }

private:
    int saved;
};

/// What a terminal shows of `size` bytes; it passes on what is written a little later, in parts.
std::string readAll(int terminal, std::size_t size) {
    std::string text;
    for (char c; text.size() < size && read(terminal, &c, 1) == 1;)
        text += c;
    return text;
}

std::string readSome(int file) {
    char buffer[1000];
    const ssize_t length = read(file, buffer, sizeof buffer);
    return {buffer, static_cast<std::size_t>(length > 0 ? length : 0)};
}

void writeInRed() {
    console().setAttributes(kConsoleRed);
    console().write("red", 3);
    console().setAttributes(kConsoleDefault);
}

}  // namespace

TEST(ConsoleTest, AttributesAsATerminalWantsThem) {
    const struct {
        unsigned attributes;
        const char* sequence;
    } cases[] = {
        {0x7, "\x1b[0m"},          // the terminal's own
        {0x4, "\x1b[0;31m"},       // red is bit 2 here and colour 1 there
        {0x1, "\x1b[0;34m"},       // blue
        {0x3, "\x1b[0;36m"},       // blue and green
        {0xB, "\x1b[0;96m"},       // the same, bright
        {0x12, "\x1b[0;32;44m"},   // green on blue
        {0xC7, "\x1b[0;37;101m"},  // plain on bright red
    };
    for (const auto& c : cases) {
        char sequence[32];
        terminalSequence(c.attributes, sequence, sizeof sequence);
        EXPECT_STREQ(sequence, c.sequence);
    }
}

TEST(ConsoleTest, PipeGetsNoSequences) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ConsoleWindow window;
    {
        const OutputInto output(ends[1]);
        EXPECT_TRUE(console().isValid());
        EXPECT_FALSE(console().isTerminal());
        EXPECT_FALSE(console().getWindow(window));
        std::printf("first ");  // still in the runtime's buffer
        writeInRed();
    }
    EXPECT_EQ(readSome(ends[0]), "first red");
    close(ends[0]);
    close(ends[1]);
}

TEST(ConsoleTest, TerminalGetsSequencesWhereColoursChange) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
        GTEST_SKIP() << "this system gives no terminals";
    const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    {
        const OutputInto output(terminal);
        EXPECT_TRUE(console().isTerminal());
        console().setAttributes(console().getAttributes());
        writeInRed();
    }
    const std::string expected = "\x1b[0;31mred\x1b[0m";
    EXPECT_EQ(readAll(master, expected.size()), expected);
    close(terminal);
    close(master);
}

TEST(ConsoleTest, ClosedOutputIsInvalid) {
    const OutputInto nowhere(-1);
    EXPECT_FALSE(console().isValid());
    writeInRed();
}
