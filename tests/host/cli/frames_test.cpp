#include <OpenImageIO/imageio.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <limits>
#include <string>
#include <vector>

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

class FramesCommand : public testing::Test {
protected:
    RunResult render(std::vector<std::string> words) {
        words.insert(words.begin(), {"render", "s.json", "--spp", "2"});
        return pelk.run(words);
    }
    std::vector<float> pixels(const std::string& name) {
        return readPicture(pelk.directory.file(name));
    }
    /// A light that grows from frame 0 to frame 24, in a scene with noise.
    void writeScene() {
        pelk.directory.write("s.json", smallScene(
                                           R"(, "sun": {"type": "LightPoint", "position": [0, 0, 3],
                "intensity": {"times": [0, 1], "values": [0, 24]}})"));
    }

    Program pelk;
};

TEST_F(FramesCommand, EachFrameIsAtItsTimeWithItsNoise) {
    writeScene();
    const RunResult all = render({"--frames", "0-12x6", "-o", "a.exr", "--progress", "json"});
    ASSERT_EQ(all.exitCode, 0) << all.err;
    EXPECT_THAT(all.out, HasSubstr("\"frame\":12"));
    EXPECT_EQ(pelk.directory.entryCount(), 4);
    EXPECT_NE(pixels("a.0006.exr"), pixels("a.0012.exr"));
    // A frame is the same alone, and another seed shows another noise.
    ASSERT_EQ(render({"--frames", "6", "-o", "b.<frame>.exr"}).exitCode, 0);
    EXPECT_EQ(pixels("a.0006.exr"), pixels("b.6.exr"));
    ASSERT_EQ(render({"--frames", "6", "-o", "c.exr", "--seed", "4294967295"}).exitCode, 0);
    EXPECT_NE(pixels("a.0006.exr"), pixels("c.0006.exr"));
    // At 12 frames a unit of time frame 6 is where frame 12 was.
    for (const char* fps : {"24", "12"}) {
        const std::string set = std::string("settings.fps=") + fps;
        ASSERT_EQ(
            render({"--set", set, "--frames", "12", "-o", fps + std::string(".exr")}).exitCode, 0);
    }
    EXPECT_EQ(pixels("24.0012.exr"), pixels("a.0012.exr"));
    EXPECT_NE(pixels("12.0012.exr"), pixels("a.0012.exr"));
    ASSERT_EQ(render({"-o", "d.exr", "--seed", "0"}).exitCode, 0);
    ASSERT_EQ(render({"-o", "e.exr"}).exitCode, 0);
    EXPECT_EQ(pixels("d.exr"), pixels("e.exr"));
}

TEST_F(FramesCommand, NothingIsRenderedThatWouldBeOverwritten) {
    writeScene();
    const RunResult clash = render({"--frames", "1-20", "-o", "%1d.exr"});
    EXPECT_EQ(clash.exitCode, 2);
    EXPECT_THAT(clash.err, HasSubstr("frames 1 and 11"));
    const RunResult lost = render({"--frames", "1-2", "-o", "none/<frame>.exr"});
    EXPECT_EQ(lost.exitCode, 3);
    EXPECT_EQ(render({"--frames", "2-1"}).exitCode, 2);
    EXPECT_EQ(render({"--seed", "-1"}).exitCode, 2);
    EXPECT_EQ(render({"--seed", "4294967296"}).exitCode, 2);
    EXPECT_EQ(pelk.directory.entryCount(), 1);
}

TEST_F(FramesCommand, SettingsAreSetAsInTheFile) {
    writeScene();
    ASSERT_EQ(
        render({"--set", "settings.width=8", "--set", "settings.height=4", "-o", "a.exr"}).exitCode,
        0);
    EXPECT_EQ(pixels("a.exr").size(), 8u * 4 * 4);
    const char* const bad[][2] = {{"settings.width=0", "expected a whole number from 1"},
                                  {"settings.widht=8", "\"width\""},
                                  {"settings.fps=0", "expected a number above 0"},
                                  {"settings.camera=sun", "camera"}};
    for (const auto& [set, says] : bad) {
        const RunResult result = render({"--set", set, "-o", "b.exr"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.err,
                    testing::AllOf(HasSubstr(std::string("--set ") + set), HasSubstr(says)));
    }
}

TEST_F(FramesCommand, FileNamesTakeVariablesAndAnyBytes) {
    const std::string mesh = R"(, "x": {"type": "GeomMesh", "file": "${PELK_SHOT}/m.obj"})";
    pelk.directory.write("s.json", smallScene(mesh));
    const RunResult unset = render({"-o", "a.exr"});
    EXPECT_EQ(unset.exitCode, 1);
    EXPECT_THAT(unset.err, testing::AllOf(HasSubstr("/plugins/x/file"), HasSubstr("PELK_SHOT")));
    std::filesystem::create_directory(pelk.directory.path / "\xff");
    pelk.directory.write("\xff/m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    pelk.environment["PELK_SHOT"] = "\xff";
    const RunResult set =
        render({"-o", "\xff/\xfe.exr", "-o", "\xff/\xfe.png", "-o", "\xff/a.pkr"});
    EXPECT_EQ(set.exitCode, 0) << set.err;
    EXPECT_EQ(pixels("\xff/\xfe.exr").size(), 24u * 16 * 4);
    EXPECT_EQ(pixels("\xff/\xfe.png").size(), 24u * 16 * 4);
    for (const std::size_t length : {300, 4096}) {
        const std::string name(length, 'n');
        EXPECT_EQ(render({"-o", name + ".exr"}).exitCode, 3) << length;
        EXPECT_EQ(pelk.run({"render", name + ".json", "-o", "m.exr"}).exitCode, 1) << length;
        EXPECT_EQ(pelk.run({"merge", name + ".pkr", "-o", "m.exr"}).exitCode, 1) << length;
    }
}

TEST_F(FramesCommand, ARegionIsTheDataWindowOfTheWhole) {
    writeScene();
    ASSERT_EQ(render({"-o", "a.exr", "--region", "3,5,10,7"}).exitCode, 0);
    const auto input = OIIO::ImageInput::open(pelk.directory.file("a.exr"));
    ASSERT_TRUE(input);
    const OIIO::ImageSpec& spec = input->spec();
    const int windows[] = {spec.x,      spec.y,      spec.width,      spec.height,
                           spec.full_x, spec.full_y, spec.full_width, spec.full_height};
    EXPECT_THAT(windows, testing::ElementsAre(3, 5, 7, 2, 0, 0, 24, 16));
}

}  // namespace
