#include "pelk/support/frame_numbers.h"

#include <gtest/gtest.h>

#include <climits>

using namespace Tarnkit;

TEST(ExpandFrameNumberTest, TakesBothSpellingsAndNothingElse) {
    const struct {
        int frame;
        const char *pattern, *name;
    } cases[] = {
        {7,
         "%%d%d %%%d <frame3>|<frame03>|<frame> <frame<frame> <%d<<frame> %20d|%020d %99999999999d",
         "%%d7 %%7   7|007|7 <frame7 <%d<<frame>            7|000000000007            7"},
        {7, "a%%b %5x %-4d <framex><Frame><frame04 %04 %",
         "a%%b %5x %-4d <framex><Frame><frame04 %04 %"},
        {-5, "%04d|%4d|%0d|%00d", "-005|  -5|-5|-5"},
        {-1, "%u|%U|%3u", "4294967295|4294967295|295"},
        {3, "%d%D%i%I", "3333"},
        // Where digits fill all places the sign takes the leftmost.
        {12345, "%03d|%3d", "345|345"},
        {-12345, "%03d|%3i|%1d", "-45|-45|-"},
        {INT_MIN, "%d", "-2147483648"},
        {7, nullptr, ""},
        {7, "", ""},
    };
    for (const auto& c : cases)
        EXPECT_STREQ(expandFrameNumber(c.pattern, c.frame).c_str(), c.name);
    EXPECT_STREQ(convertFrameFormat("%04d.exr %u%I%012D %%04d %4x %4%5i %04").c_str(),
                 "<frame04>.exr <frame><frame><frame012> %<frame04> %4x %4<frame5> %04");
    EXPECT_STREQ(convertFrameFormat("%").c_str(), "%");
}

TEST(InsertFrameNumberTest, ReplacesMarksOrGoesBeforeTheExtension) {
    const struct {
        const char *name, *out;
        int digits, frame = 5, size = 64;
        bool addDot = true;
    } cases[] = {
        {"image.exr", "image.0005.exr", 4},
        {"image.exr", "image0005.exr", 4, 5, 64, false},
        {"a.b\\name", "a.b\\name0005", 4},
        {"a.b/name", "a.b/name0005", 4},
        {"a..exr", "a.05.exr", 2},
        {".exr", ".exr05", 2},
        {"a#b#.exr", "a-05b-05.exr", 3, -5},
        {"a#.exr", "a123.exr", 1, 123},
        {"a#b#.exr", "ab.exr", 0},
        {"", "05", 2},
        {nullptr, "", 2},
        {"image.exr", "image.00", 4, 5, 9},
        {"#", "00000000", INT_MAX, 12345, 9},
        {"a", "a-0", INT_MAX, -12345, 4},
        {"a", "", 4, 5, 1},
        {"a", "~", 4, 5, 0},
    };
    for (const auto& c : cases) {
        char out[65] = "~";
        insertFrameNumber(c.name, c.digits, c.frame, out, c.size, c.addDot);
        EXPECT_STREQ(out, c.out) << c.name << ", " << c.digits << " digits";
    }
    insertFrameNumber("a", 4, 5, nullptr, 64, true);
}
