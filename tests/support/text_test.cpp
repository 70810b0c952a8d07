#include <gmock/gmock.h>

#include <climits>
#include <clocale>
#include <cstring>
#include <string>
#include <vector>

#include "pelk/platform/debug_stream.h"
#include "pelk/platform/environment.h"
#include "pelk/platform/heap_walk.h"
#include "pelk/support/debug_log.h"
#include "pelk/support/environment.h"
#include "pelk/support/heap_check.h"
#include "pelk/support/number_text.h"
#include "pelk/support/text_tools.h"
#include "pelk/support/time_text.h"
#include "pelk/support/timer.h"
#include "scoped_environment.h"

using namespace Tarnkit;

TEST(NumberTextTest, NumbersAreReadWholeOrNotAtAll) {
    const struct {
        const char* text;
        std::int64_t number;
    } cases[] = {
        {nullptr, 0}, {"", 0},    {" \t\n\v\f\r12", 12},
        {"12a", 0},   {"12 ", 0}, {"-+5", 5},
        {"+-5", 0},   {"--5", 0}, {"-", 0},
        {"+7", 7},    {"- 7", 0}, {"4294967297", 1ll << 32 | 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parseInt64(c.text), c.number) << c.text;
        EXPECT_EQ(parseInt(c.text), static_cast<int>(c.number)) << c.text;
    }
    EXPECT_EQ(parseInt64("-9223372036854775808"), INT64_MIN);
    EXPECT_EQ(parseInt64("18446744073709551617"), 1);
}

TEST(NumberTextTest, NumbersAreWrittenInTheirRoom) {
    const struct {
        std::int64_t value;
        int base, size;
        const char* text;
    } cases[] = {
        {0, 2, 70, "0"},      {-255, 16, 70, "FF"},  {-255, 10, 70, "-255"},
        {1234, 10, 4, "234"}, {-1234, 10, 4, "-34"}, {-1234, 10, 5, "-234"},
        {-1, 10, 2, "-"},     {5, 10, 1, ""},        {5, 1, 70, ""},
        {5, 17, 70, ""},      {5, 10, 0, "~"},       {INT64_MIN, 10, 70, "-9223372036854775808"},
        {-1, 2, 70, "1"},
    };
    for (const auto& c : cases) {
        char text[70] = "~";
        int64ToText(c.value, text, c.base, c.size);
        EXPECT_STREQ(text, c.text) << c.value << " in base " << c.base << ", size " << c.size;
    }
    char text[70];
    int64ToText(INT64_MIN, text, 2, sizeof text);
    EXPECT_EQ(text, "1" + std::string(63, '0'));
    intToText(INT_MIN, text, 16, sizeof text);
    EXPECT_STREQ(text, "80000000");
    toUnsignedDecimalText(UINT64_MAX, text);
    EXPECT_STREQ(text, "18446744073709551615");
    const std::pair<std::int64_t, const char*> groups[]{{0, "0"},
                                                        {-999, "-999"},
                                                        {1000, "1,000"},
                                                        {-1234567, "-1,234,567"},
                                                        {INT64_MIN, "-9,223,372,036,854,775,808"}};
    for (const auto& [value, grouped] : groups) {
        toGroupedText(value, text);
        EXPECT_STREQ(text, grouped);
        toDecimalText(value, text);
        EXPECT_EQ(text, std::to_string(value));
    }
    EXPECT_EQ(versionText(0xFF01020Fu, text, sizeof text), 7);
    EXPECT_STREQ(text, "1.02.0f");
}

TEST(NumberTextTest, TheLocalesPointTakesTheFirstPlace) {
    char text[32];
    for (const char* number : {"1.5,7", "1,5,7"}) {
        localizeDecimal(number, text);
        EXPECT_STREQ(text, "1.5,7");
    }
    const ScopedEnvironment locales("LOCPATH", PELK_TEST_LOCALES);
    ASSERT_TRUE(std::setlocale(LC_NUMERIC, "comma")) << "the test's locale was not built";
    localizeDecimal("1.5.7", text);
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_STREQ(text, "1,5.7");
}

TEST(TextToolsTest, ReplacementsAreNotSearchedAgain) {
    const struct {
        const char *text, *find, *replacement, *result;
    } cases[] = {
        {"abab", "ab", "abb", "abbabb"}, {"aaa", "aa", "b", "ba"}, {"abc", "b", "", "ac"},
        {"abc", "", "x", "abc"},         {"", "a", "b", ""},       {"abc", "abcd", "x", "abc"},
    };
    for (const auto& c : cases) {
        CharString text = c.text;
        replaceAll(text, c.find, c.replacement);
        EXPECT_STREQ(text.c_str(), c.result);
        char buffer[16];
        std::strcpy(buffer, c.text);
        replaceInBuffer(buffer, sizeof buffer, c.find, c.replacement);
        EXPECT_STREQ(buffer, c.result);
        // What is cut is the end of the whole result.
        for (int size = 1 + static_cast<int>(std::strlen(c.text)); size < 16; ++size) {
            std::strcpy(buffer, c.text);
            buffer[size] = '~';
            replaceInBuffer(buffer, size, c.find, c.replacement);
            EXPECT_EQ(buffer, std::string(c.result).substr(0, static_cast<std::size_t>(size) - 1));
            EXPECT_EQ(buffer[size], '~');
        }
    }
}

TEST(EnvironmentTest, ReferencesAreExpandedInnerFirst) {
    const ScopedEnvironment a("PELK_A", "1"), b("PELK_B1", "${PELK_A}x"), none("PELK_N", nullptr);
    const ScopedEnvironment self("PELK_S", "${PELK_S}"), twice("PELK_T", "${PELK_T}${PELK_T}");
    const char* const cases[][2] = {
        {"${PELK_A}${PELK_A}", "11"}, {"<${PELK_B${PELK_A}}>", "<1x>"}, {"a${PELK_N}b", "ab"},
        {"}${PELK_A}", "}${PELK_A}"}, {"${PELK_A", "${PELK_A"},         {"$PELK_A ${}", "$PELK_A "},
        {"${PELK_S}", "${PELK_S}"},
    };
    for (const auto& [text, expanded] : cases) {
        CharString result = text;
        expandEnvironment(result);
        EXPECT_STREQ(result.c_str(), expanded);
    }
    CharString result = "${PELK_T}";
    expandEnvironment(result);
    EXPECT_LE(result.length(), 64 * 1024 + 9);
}

TEST(EnvironmentTest, TheRuntimeFollowsTheProcess) {
    static std::vector<std::string> written;
    const platform::Environment made{
        [] {
            return std::vector<std::string>{"=C:=C:\\", "SAME=1", "NEW=a=b",
                                            "OTHER=2",  "LONG=3", "none"};
        },
        [](const char* name, char* buffer, std::size_t size) -> long {
            std::strcpy(buffer, "1");
            return std::strcmp(name, "NEW") == 0    ? -1
                   : std::strcmp(name, "LONG") == 0 ? static_cast<long>(size)
                                                    : 1;
        },
        [](const char* name, const char* value) {
            written.push_back(std::string(name) + ":" + value);
        }};
    platform::setEnvironment(&made);
    syncEnvironment();
    platform::setEnvironment(nullptr);
    EXPECT_THAT(written, testing::ElementsAre("NEW:a=b", "OTHER:2"));
    syncEnvironment();
}

TEST(HeapCheckTest, TellsEachBlockThatWasChanged) {
    static unsigned char blocks[3][64];
    std::memset(blocks, 0xFA, sizeof blocks);
    blocks[1][63] = blocks[1][3] = 0;
    EXPECT_FALSE(checkHeap()) << "this system has no walk";
    platform::setHeapWalk([](void (*visit)(const platform::FreeBlock&)) {
        for (const auto& block : blocks)
            visit({block, sizeof block});
        return true;
    });
    testing::internal::CaptureStderr();
    EXPECT_TRUE(checkHeap());
    platform::setHeapWalk(nullptr);
    char expected[128];
    std::snprintf(expected, sizeof expected,
                  "[Tarnkit::checkHeap] Block %x modified after it was freed.\n",
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(blocks[1])));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
}

TEST(TimeTest, UnitsFollowTheFrequency) {
    Timer timer;
    const struct {
        std::int64_t frequency;
        int resolution, tick;
    } cases[] = {{0, 0, 0},          {999, 0, 1001001}, {1000, 1, 1000000},
                 {1000000, 2, 1000}, {999999999, 2, 1}, {1000000000, 3, 1}};
    for (const auto& c : cases) {
        timer.frequency = c.frequency;
        EXPECT_EQ(timer.getResolution(), c.resolution) << c.frequency;
        EXPECT_EQ(timer.getTickLength(), c.tick) << c.frequency;
    }
    timer.last -= 20'000'000'000'000;  // more than all nanoseconds times a billion
    EXPECT_EQ(timer.getElapsed(kMilliseconds) / 1000, 0);
    EXPECT_EQ(timer.lap(kNanoseconds) / 1'000'000'000, 20000);
    EXPECT_EQ(timer.lap(kMilliseconds) / 1000, 0);
    timer.start -= 5'000'000'000;
    EXPECT_EQ(timer.restart(4), 0);
    EXPECT_EQ(timer.restart(kMicroseconds) / 1'000'000, 0);
    EXPECT_EQ(timer.start, timer.last);
    timer.frequency = 0;
    EXPECT_EQ(timer.getElapsed(kMilliseconds), 0);
}

TEST(TimeTest, TextsOfTimes) {
    const ScopedEnvironment zone("TZ", "UTC");
    const std::pair<std::int64_t, const char*> durations[]{{0, " 0h  0m  0.0s"},
                                                           {5405200, " 1h 30m  5.2s"},
                                                           {420000, " 0h  7m  0.0s"},
                                                           {360000000, "100h  0m  0.0s"}};
    char text[32];
    for (const auto& [milliseconds, expected] : durations) {
        formatDuration(milliseconds, text);
        EXPECT_STREQ(text, expected);
    }
    constexpr std::int64_t kLeapDay = 1709197500;  // 19782 days, 9 hours and 5 minutes
    EXPECT_EQ(clockText(text, sizeof text, kLeapDay), 8);
    EXPECT_STREQ(text, "09:05:00");
    EXPECT_EQ(dateText(text, sizeof text, kLeapDay), 11);
    EXPECT_STREQ(text, "2024/Feb/29");
    EXPECT_EQ(dateText(text, 5, kLeapDay), -1);
    EXPECT_STREQ(text, "2024");
    EXPECT_EQ(dateText(text, sizeof text, INT64_MAX) + clockText(text, sizeof text, INT64_MAX), 0);
    EXPECT_STREQ(text, "");
}

TEST(DebugLogTest, APathThatFillsTheBufferKeepsItsSeparator) {
    const ScopedEnvironment place("TMPDIR", "/abc");
    const std::pair<int, const char*> cases[]{{7, "/abc"}, {6, "/abc/"}, {5, "/abc"}, {1, ""}};
    for (const auto& [size, path] : cases) {
        char text[8];
        getTempDirectory(text, size);
        EXPECT_STREQ(text, path) << size;
    }
}
