#include <OpenImageIO/imageio.h>

#include <filesystem>
#include <limits>

#include "host/cli/program.h"
#include "pelk/host/cli/frame_range.h"

using namespace Tarnkit;
using testing::HasSubstr;

TEST(FrameRange, IsReadWholeOrNotAtAll) {
    const std::pair<const char*, FrameRange> good[]{
        {"1-10", {1, 10, 1}},   {"7", {7, 7, 1}},     {"-5", {-5, -5, 1}},
        {"-5--1", {-5, -1, 1}}, {"-1-1", {-1, 1, 1}}, {"1-9x4", {1, 9, 4}},
    };
    for (const auto& [text, expected] : good) {
        FrameRange range;
        EXPECT_TRUE(parseFrameRange(text, range)) << text;
        EXPECT_EQ(range, expected) << text;
    }
    FrameRange range{1, 2, 3};
    for (const char* text : {"", "-", "1-", "1-2x", "3x2", "1-2x0", "1-2x-1", "2-1", "1-2 ", "+1",
                             "a", "1,2", "0-1000000", "1-99999999999", "-2147483648-2147483647"})
        EXPECT_FALSE(parseFrameRange(text, range)) << text;
    EXPECT_EQ(range, (FrameRange{1, 2, 3}));
    constexpr int kLargest = std::numeric_limits<int>::max();
    EXPECT_THAT(framesOf({kLargest - 3, kLargest, 2}),
                testing::ElementsAre(kLargest - 3, kLargest - 1));
}

TEST(FrameName, EveryFrameHasItsOwn) {
    const char* const cases[][2] = {
        {"shot.<frame04>.exr", "shot.0007.exr"},
        {"%03d/shot.exr", "007/shot.exr"},
        {"shot.####.exr", "shot.0007.exr"},
        {"shot#.exr", "shot0007.exr"},
        {"##/##.exr", "07/07.exr"},
        {"shot.exr", "shot.0007.exr"},
        {"shot.<Frame>.exr", "shot.<Frame>.0007.exr"},
        {"a.b/shot", "a.b/shot0007"},
        {"100%.exr", "100%.0007.exr"},
    };
    for (const auto& [pattern, name] : cases)
        EXPECT_EQ(frameName(pattern, 7), name);
    EXPECT_EQ(frameName("#", -12345), "-12345");
    EXPECT_EQ(equalFrameNames({"a.exr", "b.exr"}, {1, 100, 1}), "");
    EXPECT_THAT(equalFrameNames({"%1d.exr"}, {1, 100, 5}), HasSubstr("frames 1 and 11"));
    EXPECT_THAT(equalFrameNames({"a<frame>.exr", "a<frame1>.exr"}, {2, 12, 5}), HasSubstr("a2"));
}

namespace {

class FramesCommand : public CommandTest {
protected:
    /// A light that grows from frame 0 to frame 24, in a scene with noise.
    FramesCommand() {
        directory.write("s.json",
                        smallScene(R"(, "sun": {"type": "LightPoint", "position": [0, 0, 3],
                                       "intensity": {"times": [0, 1], "values": [0, 24]}})"));
    }
};

TEST_F(FramesCommand, EachFrameIsAtItsTimeWithItsNoise) {
    const RunResult all = render({"--frames", "0-12x6", "-o", "a.exr", "--progress", "json"});
    ASSERT_EQ(all.exitCode, 0) << all.err;
    EXPECT_THAT(all.out, HasSubstr("\"frame\":12"));
    EXPECT_EQ(directory.entryCount(), 4);
    EXPECT_NE(pixels("a.0006.exr"), pixels("a.0012.exr"));
    // A frame is the same alone, and another seed shows another noise.
    ASSERT_EQ(render({"--frames", "6", "-o", "b.<frame>.exr"}).exitCode, 0);
    EXPECT_EQ(pixels("a.0006.exr"), pixels("b.6.exr"));
    ASSERT_EQ(render({"--frames", "6", "-o", "c.exr", "--seed", "4294967295"}).exitCode, 0);
    EXPECT_NE(pixels("a.0006.exr"), pixels("c.0006.exr"));
    // At 12 frames a unit of time frame 6 is where frame 12 was.
    for (const std::string fps : {"24", "12"})
        ASSERT_EQ(
            render({"--set", "settings.fps=" + fps, "--frames", "12", "-o", fps + ".exr"}).exitCode,
            0);
    EXPECT_EQ(pixels("24.0012.exr"), pixels("a.0012.exr"));
    EXPECT_NE(pixels("12.0012.exr"), pixels("a.0012.exr"));
    const std::string set = "settings.seed=7";
    ASSERT_EQ(render({"--frames", "6", "-o", "d.exr", "--set", set}).exitCode, 0);
    ASSERT_EQ(render({"--frames", "6", "-o", "e.exr", "--set", set, "--seed", "0"}).exitCode, 0);
    EXPECT_NE(pixels("d.0006.exr"), pixels("a.0006.exr"));
    EXPECT_EQ(pixels("e.0006.exr"), pixels("a.0006.exr"));

    ASSERT_EQ(
        render({"-o", "r.exr", "--region", "3,5,10,7", "--set", "settings.width=32"}).exitCode, 0);
    const auto input = OIIO::ImageInput::open(directory.file("r.exr"));
    ASSERT_TRUE(input);
    const OIIO::ImageSpec& spec = input->spec();
    const int windows[] = {spec.x,      spec.y,      spec.width,      spec.height,
                           spec.full_x, spec.full_y, spec.full_width, spec.full_height};
    EXPECT_THAT(windows, testing::ElementsAre(3, 5, 7, 2, 0, 0, 32, 16)) << "a data window";
}

TEST_F(FramesCommand, WhatWouldBeOverwrittenOrIsNoSettingIsRefused) {
    const std::string most(300, 'n'), beyond(4096, 'n');
    expectRefused({"render", "s.json"},
                  {{{"--frames", "1-20", "-o", "%1d.exr"}, 2, "frames 1 and 11"},
                   {{"--frames", "1-2", "-o", "none/<frame>.exr"}, 3, "none/"},
                   {{"--frames", "2-1"}, 2, "--frames"},
                   {{"--seed", "-1"}, 2, "--seed"},
                   {{"--seed", "4294967296"}, 2, "--seed"},
                   {{"-o", most + ".exr"}, 3, "long"},
                   {{"-o", "b.exr", "--set", "settings.width=0"},
                    1,
                    "--set settings.width=0",
                    "expected a whole number from 1"},
                   {{"--set", "settings.widht=8"}, 1, "--set settings.widht=8", "\"width\""},
                   {{"--set", "settings.fps=0"}, 1, "--set settings.fps=0", "a number above 0"},
                   {{"--set", "settings.camera=sun"}, 1, "--set settings.camera=sun", "camera"}});
    expectRefused({}, {{{"render", most + ".json", "-o", "m.exr"}, 1, "long"},
                       {{"merge", most + ".pkr", "-o", "m.exr"}, 1, "long"}});
    for (const std::string command : {"render", "merge"})
        EXPECT_EQ(pelk.run({command, beyond, "-o", "m.exr"}).exitCode, 1);
    EXPECT_EQ(render({"-o", beyond + ".exr"}).exitCode, 3);
}

TEST_F(FramesCommand, FileNamesTakeVariablesAndAnyBytes) {
    const std::string mesh = R"(, "x": {"type": "GeomMesh", "file": "${PELK_SHOT}/m.obj"})";
    directory.write("s.json", smallScene(mesh));
    expectRefused({"render", "s.json"}, {{{"-o", "a.exr"}, 1, "/plugins/x/file", "PELK_SHOT"}});
    std::filesystem::create_directory(directory.path / "\xff");
    directory.write("\xff/m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    pelk.environment["PELK_SHOT"] = "\xff";
    const RunResult set =
        render({"-o", "\xff/\xfe.exr", "-o", "\xff/\xfe.png", "-o", "\xff/a.pkr"});
    EXPECT_EQ(set.exitCode, 0) << set.err;
    EXPECT_EQ(pixels("\xff/\xfe.exr").size(), 24u * 16 * 4);
    EXPECT_EQ(pixels("\xff/\xfe.png").size(), 24u * 16 * 4);
}

}  // namespace
