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

/// The next `size` bytes; a terminal passes on what is written a little later, in parts.
std::string readAll(int file, std::size_t size) {
    std::string text;
    for (char c; text.size() < size && read(file, &c, 1) == 1;)
        text += c;
    return text;
}

void writeInRed() {
    console().setAttributes(kConsoleRed);
    console().write("red", 3);
    console().setAttributes(kConsoleDefault);
}

}  // namespace

TEST(ConsoleTest, AttributesAsATerminalWantsThem) {
    const auto sequence = [](unsigned attributes) {
        char text[32];
        terminalSequence(attributes, text, sizeof text);
        return std::string(text);
    };
    EXPECT_EQ(sequence(0x7), "\x1b[0m") << "the terminal's own";
    EXPECT_EQ(sequence(0xCB), "\x1b[0;96;101m") << "bright on bright";
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
    close(ends[1]);
    EXPECT_EQ(readAll(ends[0], 100), "first red");
    close(ends[0]);
}

TEST(ConsoleTest, TerminalGetsSequencesWhereColoursChange) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0)
        GTEST_SKIP() << "this system gives out no terminals";
    ASSERT_EQ(grantpt(master), 0);
    ASSERT_EQ(unlockpt(master), 0);
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
