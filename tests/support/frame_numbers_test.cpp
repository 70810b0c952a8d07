#include "pelk/support/frame_numbers.h"

#include <gtest/gtest.h>

#include <string>

using namespace Tarnkit;

TEST(ExpandFrameNumberTest, TakesBothSpellingsAndNothingElse) {
    const struct {
        const char* pattern;
        int frame;
        const char* name;
    } cases[] = {
        {"a%%b", 7, "a%%b"},
        {"%%d%d", 7, "%%d7"},
        {"%%%d", 7, "%%7"},
        {"<frame3>|<frame03>|<frame>", 7, "  7|007|7"},
        {"<framex><Frame><frame04", 7, "<framex><Frame><frame04"},
        {"<frame<frame>", 7, "<frame7"},
        {"<%d<<frame>", 7, "<%d<<frame>"},
        {"%20d|%020d", 7, "           7|000000000007"},
        {"%99999999999d", 7, "           7"},
        {"%04d|%4d|%0d|%00d", -5, "-005|  -5|-5|-5"},
        {"%u|%U|%3u", -1, "4294967295|4294967295|295"},
        {"%d%D%i%I", 3, "3333"},
        {"%03d|%3d", 12345, "345|345"},
        // Where digits fill all places the sign takes the leftmost.
        {"%03d|%3i|%1d", -12345, "-45|-45|-"},
        {"%5x%04", 7, "%5x%04"},
        {"%-4d %", 7, "%-4d %"},
        {"", 7, ""},
        {nullptr, 7, ""},
    };
    for (const auto& c : cases)
        EXPECT_STREQ(expandFrameNumber(c.pattern, c.frame).c_str(), c.name) << c.pattern;
    EXPECT_STREQ(expandFrameNumber("%d", -2147483647 - 1).c_str(), "-2147483648");
}

TEST(ConvertFrameFormatTest, TurnsPercentsIntoWords) {
    const char* const cases[][2] = {
        {"img.%04d.exr", "img.<frame04>.exr"},
        {"%u%I%012D", "<frame><frame><frame012>"},
        {"%%04d", "%<frame04>"},
        {"%4x%", "%4x%"},
        {"%04", "%04"},
        {"%4%5i", "%4<frame5>"},
    };
    for (const auto& [pattern, converted] : cases)
        EXPECT_STREQ(convertFrameFormat(pattern).c_str(), converted);
}

TEST(InsertFrameNumberTest, ReplacesMarksOrGoesBeforeTheExtension) {
    const struct {
        const char* name;
        int digits, frame, size;
        bool addDot;
        const char* out;
    } cases[] = {
        {"image.exr", 4, 5, 64, true, "image.0005.exr"},
        {"image.exr", 4, 5, 64, false, "image0005.exr"},
        {"a.b\\name", 4, 5, 64, true, "a.b\\name0005"},
        {"a.b/name", 4, 5, 64, true, "a.b/name0005"},
        {"a..exr", 2, 5, 64, true, "a.05.exr"},
        {".exr", 2, 5, 64, true, ".exr05"},
        {"a#b#.exr", 3, -5, 64, true, "a-05b-05.exr"},
        {"a#.exr", 1, 123, 64, true, "a123.exr"},
        {"a#b#.exr", 0, 5, 64, true, "ab.exr"},
        {"", 2, 5, 64, true, "05"},
        {nullptr, 2, 5, 64, true, ""},
        {"image.exr", 4, 5, 9, true, "image.00"},
        {"#", 2147483647, 12345, 9, true, "00000000"},
        {"a", 2147483647, -12345, 4, true, "a-0"},
        {"a", 4, 5, 1, true, ""},
        {"a", 4, 5, 0, true, "~"},
    };
    for (const auto& c : cases) {
        char out[65] = "~";
        insertFrameNumber(c.name, c.digits, c.frame, out, c.size, c.addDot);
        EXPECT_STREQ(out, c.out) << c.name << ", " << c.digits << " digits";
    }
    insertFrameNumber("a", 4, 5, nullptr, 64, true);
}
