#include "support/console.h"

#include <gmock/gmock.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/console.h"
#include "scoped_environment.h"
#include "support/bounded_format.h"
#include "support/debug_log.h"
#include "support/machine_info.h"
#include "temporary_directory.h"

using namespace Tarnkit;
using Pieces = std::vector<std::string>;

namespace {

/// Notes each text as "attributes:text".
class RecordingConsole final : public platform::Console {
public:
    RecordingConsole() { platform::setConsole(this); }
    ~RecordingConsole() override { platform::setConsole(nullptr); }

    bool isValid() const override { return valid; }
    bool isTerminal() const override { return terminal; }
    bool getWindow(platform::ConsoleWindow& answer) const override {
        answer = {2, 5, 101, 44};
        return hasWindow;
    }
    unsigned getAttributes() const override { return attributes; }
    void setAttributes(unsigned value) override { attributes = value; }
    void write(const char* text, std::size_t length) override {
        char number[16];
        std::snprintf(number, sizeof number, "%x:", attributes);
        pieces.push_back(number + std::string(text, length));
    }

    bool valid = true, terminal = true, hasWindow = true;
    unsigned attributes = 0x7;
    Pieces pieces;
};

}  // namespace

TEST(BoundedFormatTest, TellsOverflowFromSuccess) {
    const struct {
        int size;
        const char* text;
        int result;
        const char* kept;
    } cases[] = {
        {6, "12345", 5, "12345"}, {6, "123456", -1, "12345"}, {6, "1234567", -1, "12345"},
        {1, "", 0, ""},           {1, "1", -1, ""},           {0, "1", 0, "####"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        char buffer[] = "####\0##";
        EXPECT_EQ(boundedFormat(buffer, c.size, "%s", c.text), c.result);
        EXPECT_STREQ(buffer, c.kept);
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
        {"restored as it was", "a\x1b[0;31mb\x1b[0mc", 0xA, {"a:a", "4:b", "a:c"}, {"a:abc"}},
        {"the background stays", "\x1b[0;32mg\x1b[0mx", 0x97, {"92:g", "97:x"}, {"97:gx"}},
        {"an unknown colour", "\x1b[0;31ma\x1b[0;36mb", 7, {"4:a", "4:b"}, {"7:ab"}},
        {"an unfinished sequence is dropped", "a\x1b[0;3", 7, {"7:a"}, {"7:a"}},
        {"sequences alone", "\x1b[0;31m\x1b[0m", 7, {}, {"7:"}},
        {"63 characters", longSequence.substr(0, 63) + "mb", 7, {"7:a", "7:b"}, {"7:ab"}},
        {"64 characters end the walk", longSequence + "mb", 7, {"7:a"}, {"7:ab"}, tooLong},
        {"an m outside a sequence is text", "m\x1b[0mm\n", 7, {"7:m", "7:m\n"}, {"7:mm\n"}},
        {"no text", "", 7, {}, {}},
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
    tarnkit_cprint(true, nullptr);
}

TEST(ConsolePrintTest, FormattedTextOfAnyLength) {
    for (const int length : {1, 2048, 100000}) {
        RecordingConsole console;
        tarnkit_cprintf(true, "%*d", length, 7);
        EXPECT_EQ(console.pieces, Pieces{"7:" + std::string(length - 1, ' ') + "7"});
    }
}

TEST(ConsoleSizeTest, WindowEdgesAreInsideAndNoConsoleHasNone) {
    RecordingConsole console;
    int columns = 0, rows = 0;
    EXPECT_TRUE(getConsoleSize(&columns, &rows));
    EXPECT_EQ(rows, 40);
    EXPECT_EQ(getConsoleWidth(), 100);
    console.hasWindow = false;
    EXPECT_FALSE(getConsoleSize(&columns, &rows));
    EXPECT_EQ(getConsoleWidth(), 100) << "as last known";
    console.hasWindow = true;
    console.valid = false;
    EXPECT_FALSE(getConsoleSize(&columns, &rows));
    testing::internal::CaptureStdout();
    tarnkit_cprint(true, "lost");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "tarnkit_cprint: Invalid handle!\n");
    EXPECT_EQ(console.pieces, Pieces());
}

TEST(ConsoleColorsTest, OnTerminalsUnlessTheUserRefuses) {
    RecordingConsole console;
    const auto wanted = [](const char* noColorSetting, const char* termSetting) {
        const ScopedEnvironment noColor("NO_COLOR", noColorSetting), term("TERM", termSetting);
        return wantsConsoleColors();
    };
    EXPECT_TRUE(wanted("", nullptr));
    EXPECT_FALSE(wanted("1", "xterm"));
    EXPECT_FALSE(wanted(nullptr, "dumb"));
    console.terminal = false;
    EXPECT_FALSE(wanted(nullptr, "xterm"));
}

TEST(DebugLogTest, GrowsByAppendingWhatFits) {
    const TemporaryDirectory directory;
    const ScopedEnvironment temporary("TMPDIR", directory.path.c_str());
    appendDebugLog(-3, "%s %d|", "one", 1);
    appendDebugLog(-3, "%s", std::string(3000, 'x').c_str());
    EXPECT_EQ(directory.read("pelk_dbg_log_-3"), "one 1|" + std::string(1023, 'x'));
}

TEST(DebugLogTest, TemporaryDirectoryHasNoSeparatorAtItsEnd) {
    const struct {
        const char* setting;
        int size;
        const char* path;
    } cases[] = {
        {"", 100, "/tmp"},    {"/a/b\\//", 100, "/a/b"}, {"///", 100, "/"},
        {"/a/b/", 6, "/a/b"}, {"/a//", 4, "/a/"},        {"/a/b", 1, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.setting);
        const ScopedEnvironment temporary("TMPDIR", c.setting);
        char buffer[100];
        getTempDirectory(buffer, c.size);
        EXPECT_STREQ(buffer, c.path);
    }
}

TEST(MachineInfoTest, PathsAndNames) {
    char path[4096], directory[4096], name[300];
    getModuleFilePath(path, sizeof path);
    EXPECT_TRUE(getModuleDirectory(directory, sizeof directory));
    EXPECT_EQ(directory, std::filesystem::path(path).parent_path().string() + "/");
    EXPECT_FALSE(getModuleDirectory(directory, 5)) << "no room for the path";
    getOSName(name);
    EXPECT_STREQ(name, "Generic Microsoft(tm) Windows(tm)");

    int size = sizeof name;
    ASSERT_EQ(getComputerName(name, &size), 0);
    EXPECT_EQ(size, static_cast<int>(std::strlen(name)) + 1);
    for (int tooSmall : {size - 1, 0, -1}) {
        EXPECT_EQ(getComputerName(name, &tooSmall), -1);
        EXPECT_EQ(tooSmall, 0);
    }
}

TEST(MachineInfoTest, MemoryIsPlausibleAndRounded) {
    EXPECT_EQ(getTotalPhysicalMemoryMB() % 16, 0);
    EXPECT_GE(getTotalVirtualMemoryMB(), getTotalPhysicalMemoryMB());
    EXPECT_EQ(getTotalVirtualMemoryMB() % 4, 0);
    EXPECT_EQ(getFreeMemoryMB() % 16, 0);
    const std::int64_t before = getWorkingSetMB();
    static volatile char touched[16 << 20];
    for (std::size_t i = 0; i < sizeof touched; i += 1024)
        touched[i] = 1;
    EXPECT_GE(getWorkingSetMB(), before + 12);
    char text[100];
    EXPECT_TRUE(formatWorkingSet(text, sizeof text));
    EXPECT_THAT(text, testing::MatchesRegex("Working set: [0-9]+ MB"));
    EXPECT_FALSE(formatWorkingSet(text, 12));
}
