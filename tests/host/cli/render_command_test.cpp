#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <functional>

#include "host/cli/program.h"

using testing::AllOf;
using testing::HasSubstr;

namespace {

/// Seconds in which a render ends after a signal, on a machine that has other work too.
constexpr int kPatience = 10;

class RenderCommand : public CommandTest {
protected:
    std::string attributeOf(const std::string& picture, const char* name) {
        const auto input = OIIO::ImageInput::open(directory.file(picture));
        return input ? std::string(input->spec().get_string_attribute(name)) : "no picture";
    }
};

TEST_F(RenderCommand, WritesEachPictureAndIsSilentElsewhere) {
    const RunResult result = render({"-o", "a.png", "-o", "b.exr"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out,
              "Wrote " + directory.file("a.png") + "\nWrote " + directory.file("b.exr") + "\n");
    EXPECT_EQ(result.err, "");
    for (const char* name : {"a.png", "b.exr"})
        EXPECT_EQ(pixels(name).size(), 24u * 16 * 4) << name;

    EXPECT_EQ(render({}).exitCode, 0);
    EXPECT_TRUE(std::filesystem::exists(directory.file("s.png"))) << "the name without -o";
}

TEST_F(RenderCommand, EverySceneOfTheProjectRenders) {
    int scenes = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(PELK_SCENES)) {
        if (entry.path().extension() != ".json")
            continue;
        const RunResult result = pelk.run({"render", entry.path(), "-o", "a.png", "--size", "24x10",
                                           "--spp", "1", "--channels", "all", "--strict"});
        EXPECT_EQ(result.exitCode, 0) << entry.path() << result.err;
        EXPECT_EQ(result.err, "") << entry.path();
        ++scenes;
    }
    EXPECT_GT(scenes, 8);
}

TEST_F(RenderCommand, TheCornellBoxHasTheLightThatOthersFind) {
    const std::string scene = PELK_SCENES "/cornell.json";
    const RunResult result =
        pelk.run({"render", scene, "-o", "a.exr", "--size", "64x64", "--spp", "256"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const std::vector<float> found = pixels("a.exr");
    const double expected[] = {0.3101, 0.2872, 0.2590};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        double sum = 0;
        for (std::size_t i = channel; i < found.size(); i += 4)
            sum += found[i];
        EXPECT_NEAR(sum / (64 * 64) / expected[channel], 1.0, 0.005) << channel;
    }
}

TEST_F(RenderCommand, RegionsMakeTheWhole) {
    std::vector<float> sum(24u * 16 * 4);
    for (const char* region : {"0,0,7,16", "7,0,24,5", "7,5,24,16"}) {
        ASSERT_EQ(render({"--region", region, "-o", "part.exr"}).exitCode, 0);
        const std::vector<float> part = pixels("part.exr");
        ASSERT_EQ(part.size(), sum.size());
        std::transform(sum.begin(), sum.end(), part.begin(), sum.begin(), std::plus<>());
    }
    ASSERT_EQ(render({"--threads", "1", "-o", "whole.exr"}).exitCode, 0);
    EXPECT_EQ(sum, pixels("whole.exr"));
}

TEST_F(RenderCommand, WithoutMaterialsItSaysWhatItLookedFor) {
    const std::string path = directory.file("plugins"), says = "getLibDesc in " + path;
    const std::vector<std::string> words{"render", "s.json", "--plugins", path};
    expectRefused(words, {{{}, 1, says}});
    std::filesystem::create_directory(path);
    expectRefused(words, {{{}, 1, says}});
    directory.write("plugins/text.so", "no library");
    expectRefused(words, {{{}, 1, says}});
    std::filesystem::create_symlink(PELK_OTHER_LIBRARY, path + "/other.so");
    expectRefused(words, {{{}, 1, says}});
    // One bad library beside good ones is no reason to stop.
    pelk.pluginPath = path;
    const RunResult result = render({});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, HasSubstr("warning: " + path + "/text.so"));
}

TEST_F(RenderCommand, PicturesThatCannotBeWrittenAreRefusedBeforeTheRender) {
    std::filesystem::create_directory(directory.file("folder.exr"));
    std::filesystem::create_symlink(".", directory.file("here"));
    // A render of this size would not end.
    expectRefused(
        {"render", "s.json", "--size", "9999x9999", "--spp", "999999"},
        {{{"-o", "a.jpg"}, 2, "a.jpg"},
         {{"-o", "missing/a.exr"}, 3, "missing/a.exr"},
         {{"-o", "folder.exr"}, 3, "folder.exr"},
         {{"--checkpoint-file", "./s.png"}, 2, "./s.png"},
         {{"--checkpoint-file", "s.json"}, 1, "s.json"},
         {{"-o", "new.png", "-o", "here/new.png"}, 2, "\"new.png\" and \"here/new.png\" are one"}});
}

TEST_F(RenderCommand, ColoursWithoutANumberAreErrorsOnlyIfAskedFor) {
    directory.write("s.json", smallScene(R"(, "sun": {"type": "LightSun", "direction": [0, 0, -1],
        "color": [3e38, 3e38, 3e38], "intensity": 1e30})"));
    const RunResult lax = render({"-o", "a.exr", "--channels", "all"});
    EXPECT_EQ(lax.exitCode, 0);
    EXPECT_THAT(lax.err, HasSubstr("\"matte\""));
    for (const float value : pixels("a.exr"))
        EXPECT_TRUE(std::isfinite(value));
    EXPECT_EQ(render({"-o", "b.exr", "--strict"}).exitCode, 4);
}

TEST_F(RenderCommand, ThreadsAreAsTheUserWantsAndToldOnDemand) {
    pelk.environment = {{"PELK_NUM_THREADS", "3"}, {"PELK_USE_THREAD_AFFINITY", "0"}};
    EXPECT_THAT(
        render({"--verbose", "--nice"}).err,
        AllOf(HasSubstr("priority below normal"), HasSubstr("3 threads, which the system")));
    EXPECT_THAT(render({"-v", "--threads", "2"}).err, HasSubstr("2 threads, which"));
}

TEST_F(RenderCommand, StopsAtASignalWithAWholePictureAndGoesOn) {
    const struct { int signal, exitCode; } cases[] = {{SIGHUP, 129}, {SIGINT, 130}, {SIGTERM, 143}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.signal);
        pelk.start({"render", "s.json", "-o", "a.exr", "--size", "64x64", "--spp", "9999999",
                    "--progress=json", "--resume"});
        ASSERT_TRUE(pelk.waitForOutput("\"progress\""));
        pelk.send(c.signal);
        const auto start = std::chrono::steady_clock::now();
        const RunResult result = pelk.wait();
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(kPatience));
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_THAT(result.err, HasSubstr("interrupted"));
        const std::vector<float> found = pixels("a.exr");
        EXPECT_EQ(found.size(), 64u * 64 * 4);
        EXPECT_GT(*std::min_element(found.begin(), found.end()), 0.0f);
        EXPECT_EQ(attributeOf("a.exr", "ended"), "interrupted");
        const std::string lastLine = result.out.substr(result.out.rfind("{"));
        EXPECT_THAT(lastLine, AllOf(HasSubstr("\"finished\""), HasSubstr("\"interrupted\":true"),
                                    HasSubstr("[\"" + directory.file("a.exr") + "\"]")));
    }
}

TEST_F(RenderCommand, WithoutASampleInEveryPixelAnOlderPictureStands) {
    directory.write("a.exr", "older");
    const std::vector<std::string> words = {"render",  "s.json", "-o",      "a.exr",   "--size",
                                            "999x999", "--spp",  "9999999", "--order", "tiles"};
    expectRefused(words, {{{"--time", "0.01"}, 1, "--time: the time was over before every pixel"}});

    // As under nohup: the first signal is ignored, the second is not.
    std::signal(SIGHUP, SIG_IGN);
    std::vector<std::string> kept = words;
    kept.insert(kept.end(), {"--progress", "json"});
    pelk.start(kept);
    std::signal(SIGHUP, SIG_DFL);
    ASSERT_TRUE(pelk.waitForOutput("\"progress\""));
    pelk.send(SIGHUP);
    pelk.send(SIGTERM);
    const RunResult stopped = pelk.wait();
    EXPECT_EQ(stopped.exitCode, 143);
    EXPECT_THAT(stopped.err, HasSubstr("interrupted before every pixel"));
    EXPECT_EQ(directory.read("a.exr"), "older");
    EXPECT_EQ(directory.entryCount(), 2);

    const RunResult inTime = render({"-o", "a.exr", "--spp", "9999999", "--time", "0.5"});
    EXPECT_EQ(inTime.exitCode, 0) << inTime.err;
    EXPECT_EQ(attributeOf("a.exr", "ended"), "out of time");
}

// The sanitizers need more address space than a machine has memory.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(RenderCommand, WithTooLittleMemoryItSaysSoAndLeavesNothing) {
    constexpr std::size_t kStep = 12u << 20, kEnough = std::size_t{6} << 30;
    // The limit below which the system can't even load the program.
    std::size_t bare = 0;
    for (std::size_t above = kEnough; above - bare > kStep / 2;) {
        pelk.memory = bare + (above - bare) / 2;
        (pelk.run({"--version"}).exitCode == 127 ? bare : above) = pelk.memory;
    }
    int failures = 0;
    for (int i = 1; i <= 21; ++i) {
        pelk.memory = i < 21 ? bare + static_cast<std::size_t>(i) * kStep : kEnough;
        const RunResult result =
            pelk.run({"render", PELK_SCENES "/showcase.json", "-o", "a.exr", "-o", "a.png",
                      "--size", "32x24", "--spp", "1", "--checkpoint", "9"});
        SCOPED_TRACE(std::to_string(pelk.memory >> 20) + " MB: " + result.err);
        ASSERT_TRUE(result.exitCode == 5 || result.exitCode == 0) << result.exitCode;
        failures += result.exitCode == 5;
        if (result.exitCode == 5) {
            EXPECT_THAT(result.err, HasSubstr("pelk: "));
            EXPECT_EQ(result.err.find("pelk: ", result.err.find('\n')), result.err.npos);
        }
        for (const char* name : {"a.exr", "a.png", "a.exr.pkc"})
            std::filesystem::remove(directory.file(name));
        EXPECT_EQ(directory.entryCount(), 1) << "a temporary file was left";
    }
    EXPECT_GT(failures, 3);
    EXPECT_LT(failures, 21);
}
#endif

}  // namespace
