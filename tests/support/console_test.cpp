#include "pelk/support/console.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "pelk/platform/console.h"
#include "pelk/support/bounded_format.h"

using namespace Tarnkit;
using Pieces = std::vector<std::string>;

namespace {

/// Notes each text as "attributes:text".
struct RecordingConsole final : platform::Console {
    RecordingConsole() { platform::setConsole(this); }
    ~RecordingConsole() override { platform::setConsole(nullptr); }

    bool isValid() const override { return true; }
    bool isTerminal() const override { return true; }
    bool getWindow(platform::ConsoleWindow&) const override { return false; }
    unsigned getAttributes() const override { return attributes; }
    void setAttributes(unsigned value) override { attributes = value; }
    void write(const char* text, std::size_t length) override {
        char number[16];
        std::snprintf(number, sizeof number, "%x:", attributes);
        pieces.push_back(number + std::string(text, length));
    }

    unsigned attributes = 0x7;
    Pieces pieces;
};

}  // namespace

TEST(BoundedFormatTest, TellsOverflowFromSuccess) {
    char buffer[] = "####\0##";
    EXPECT_EQ(boundedFormat(buffer, 0, "1"), 0) << "nothing is asked for";
    EXPECT_STREQ(buffer, "####");
    EXPECT_EQ(boundedFormat(buffer, 6, "%s", "12345"), 5);
    for (const char* tooLong : {"123456", "1234567"}) {
        EXPECT_EQ(boundedFormat(buffer, 6, "%s", tooLong), -1);
        EXPECT_STREQ(buffer, "12345");
        EXPECT_EQ(buffer[6], '#');
    }
}

TEST(ConsolePrintTest, SequencesBecomeAttributesOrNothing) {
    const std::string longSequence = "a\x1b[" + std::string(61, '1');
    const std::string all = "\x1b[0;31mr\x1b[0;32mg\x1b[0;33my\x1b[0;34mb\x1b[1;34mB\x1b[0;35mm";
    const std::string tooLong = "tarnkit_cprint: Incorrect ESC length!\n";
    const struct {
        const char* what;
        std::string text;
        unsigned attributes;
        Pieces colored, plain;
        std::string complaint = "";
    } cases[] = {
        {"each colour", all, 7, {"4:r", "2:g", "6:y", "3:b", "b:B", "5:m"}, {"7:rgybBm"}},
        {"the background stays", "\x1b[0;32mg\x1b[0mx", 0x97, {"92:g", "97:x"}, {"97:gx"}},
        {"an unfinished sequence is dropped", "a\x1b[0;3", 7, {"7:a"}, {"7:a"}},
        {"63 characters", longSequence.substr(0, 63) + "mb", 7, {"7:a", "7:b"}, {"7:ab"}},
        {"64 characters end the walk", longSequence + "mb", 7, {"7:a"}, {"7:ab"}, tooLong},
        {"an m outside a sequence is text", "m\x1b[0mm\n", 7, {"7:m", "7:m\n"}, {"7:mm\n"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        for (const bool colors : {true, false}) {
            RecordingConsole console;
            console.attributes = c.attributes;
            testing::internal::CaptureStdout();
            tarnkit_cprint(colors, c.text.c_str());
            EXPECT_EQ(testing::internal::GetCapturedStdout(), colors ? c.complaint : "");
            EXPECT_EQ(console.pieces, colors ? c.colored : c.plain);
            EXPECT_EQ(console.attributes, c.attributes) << "a colour outlasts the print";
        }
    }
}
