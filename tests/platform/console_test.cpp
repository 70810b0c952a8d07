#include "platform/console.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <string>

using namespace Tarnkit::platform;

TEST(ConsoleTest, AttributesAsATerminalWantsThem) {
    const auto sequence = [](unsigned attributes) {
        char text[32];
        terminalSequence(attributes, text, sizeof text);
        return std::string(text);
    };
    EXPECT_EQ(sequence(0x7), "\x1b[0m") << "the terminal's own";
    EXPECT_EQ(sequence(0xCB), "\x1b[0;96;101m") << "bright on bright";
}

TEST(ConsoleTest, FilesGetTheTextInItsOrderAndNoSequences) {
    testing::internal::CaptureStdout();
    std::printf("first ");  // still in the runtime's buffer
    console().setAttributes(kConsoleRed);
    console().write("red", 3);
    console().setAttributes(kConsoleDefault);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "first red");
}
