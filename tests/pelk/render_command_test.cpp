#include <OpenImageIO/imageio.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>

#include "pelk/program.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// Red, green, blue and alpha of each pixel; empty if there is no such picture.
std::vector<float> readPicture(const std::string& file) {
    const auto input = OIIO::ImageInput::open(file);
    if (!input)
        return {};
    const OIIO::ImageSpec& spec = input->spec();
    std::vector<float> pixels(spec.image_pixels() * static_cast<size_t>(spec.nchannels));
    input->read_image(0, 0, 0, spec.nchannels, OIIO::TypeDesc::FLOAT, pixels.data());
    return pixels;
}

class RenderCommand : public testing::Test {
protected:
    RenderCommand() { directory.write("s.json", smallScene()); }

    RunResult render(std::vector<std::string> words) {
        words.insert(words.begin(), "render");
        return pelk.run(words);
    }

    std::vector<float> pixelsOf(std::vector<std::string> words) {
        words.insert(words.begin(), {"s.json", "-o", "pixels.exr"});
        const RunResult result = render(words);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return readPicture(directory.file("pixels.exr"));
    }

    Program pelk;
    TemporaryDirectory& directory = pelk.directory;
};

TEST_F(RenderCommand, WritesEachPictureAndIsSilentElsewhere) {
    const RunResult result = render({"s.json", "-o", "a.png", "-o", "b.exr"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out,
              "Wrote " + directory.file("a.png") + "\nWrote " + directory.file("b.exr") + "\n");
    EXPECT_THAT(result.err, IsEmpty());
    for (const char* name : {"a.png", "b.exr"})
        EXPECT_EQ(readPicture(directory.file(name)).size(), 24u * 16 * 4) << name;

    EXPECT_EQ(render({"s.json"}).exitCode, 0);
    EXPECT_TRUE(std::filesystem::exists(directory.file("s.png"))) << "the name without -o";
}

TEST_F(RenderCommand, EverySceneOfTheProjectRenders) {
    int scenes = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(PELK_SCENES)) {
        if (entry.path().extension() != ".json")
            continue;
        const RunResult result = render({entry.path(), "-o", "a.png", "--size", "24x10", "--spp",
                                         "1", "--channels", "all", "--strict"});
        EXPECT_EQ(result.exitCode, 0) << entry.path() << result.err;
        EXPECT_THAT(result.err, IsEmpty()) << entry.path();
        ++scenes;
    }
    EXPECT_GT(scenes, 8);
}

TEST_F(RenderCommand, OptionsOverrideTheScene) {
    EXPECT_EQ(pixelsOf({"--size", "8x4"}).size(), 8u * 4 * 4);
    const std::vector<float> black = pixelsOf({"--set", "matte.diffuse=[0, 0, 0]"});
    EXPECT_EQ(black[0], 0.0f);
    EXPECT_EQ(black[3], 1.0f);
}

TEST_F(RenderCommand, PartsMakeTheWholeOnAnyNumberOfThreads) {
    const std::vector<float> whole = pixelsOf({"--threads", "1"});
    ASSERT_EQ(whole.size(), 24u * 16 * 4);
    EXPECT_EQ(pixelsOf({"--threads", "3"}), whole);

    const std::vector<std::vector<std::string>> cuts[] = {
        {{"--tile", "1/3"}, {"--tile", "2/3"}, {"--tile", "3/3"}},
        {{"--region", "0,0,7,16"}, {"--region", "7,0,24,5"}, {"--region", "7,5,24,16"}},
    };
    for (const auto& cut : cuts) {
        std::vector<float> sum(whole.size());
        for (const auto& part : cut) {
            const std::vector<float> pixels = pixelsOf(part);
            ASSERT_EQ(pixels.size(), sum.size());
            std::transform(sum.begin(), sum.end(), pixels.begin(), sum.begin(), std::plus<>());
        }
        EXPECT_EQ(sum, whole) << cut[0][0];
    }
}

TEST_F(RenderCommand, BadInputIsExplainedAndWritesNothing) {
    directory.write("broken.json", "{\n  \"plugins\": [1,,2]\n}");
    directory.write("cut.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 7\n");
    directory.write("cut.png", "\x89PNG\r\n\x1a\n");
    const struct {
        const char *plugins, *says, *place;
    } cases[] = {
        {R"(, "x": {"type": "MtlDifuse"})", "did you mean \"MtlDiffuse\"", "/plugins/x/type"},
        {R"(, "x": {"type": "MtlDiffuse", "difuse": 1})", "\"diffuse\"", "/plugins/x/difuse"},
        {R"(, "x": {"type": "MtlDiffuse", "diffuse": "red"})", "red", "/plugins/x/diffuse"},
        {R"(, "x": {"type": "MtlSingleBRDF", "brdf": "mate"})", "\"matte\"", "/plugins/x/brdf"},
        {R"(, "x": {"type": "MtlSingleBRDF", "brdf": "camera"})", "EXT_BSDF", "/plugins/x/brdf"},
        {R"(, "x": {"type": "MtlSingleBRDF", "brdf": "y"},
              "y": {"type": "MtlSingleBRDF", "brdf": "x"})",
         "loop", "x -> y"},
        {R"(, "x": {"type": "GeomMesh", "file": "none.obj"})", "none.obj", "/plugins/x"},
        {R"(, "x": {"type": "GeomMesh", "file": "cut.obj"})", "cut.obj", "/plugins/x"},
        {R"(, "x": {"type": "TexImage", "file": "none.png"})", "none.png", "/plugins/x"},
        {R"(, "x": {"type": "TexImage", "file": "cut.png"})", "cut.png", "/plugins/x"},
    };
    const std::ptrdiff_t before = directory.entryCount();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.plugins);
        directory.write("s.json", smallScene(c.plugins));
        const RunResult result = render({"s.json", "-o", "a.exr"});
        EXPECT_EQ(result.exitCode, 1);
        for (const char* text : {"s.json", c.says, c.place})
            EXPECT_THAT(result.err, HasSubstr(text));
        EXPECT_EQ(directory.entryCount(), before) << "something was written";
    }
    EXPECT_THAT(render({"none.json"}).err, HasSubstr("none.json: no such scene file"));
    EXPECT_THAT(render({"broken.json"}).err, HasSubstr("broken.json:2:17"));
    directory.write("s.json", smallScene());
    const RunResult badOverride = render({"s.json", "--set", "matte.difuse=1"});
    EXPECT_EQ(badOverride.exitCode, 1);
    EXPECT_THAT(badOverride.err, HasSubstr("--set matte.difuse=1"));
    EXPECT_EQ(directory.entryCount(), before);
}

TEST_F(RenderCommand, WithoutMaterialsItSaysWhatItLookedFor) {
    const std::string path = directory.file("plugins");
    const auto expectRefused = [&](const char* what) {
        SCOPED_TRACE(what);
        const RunResult result = render({"s.json", "--plugins", path});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.err, HasSubstr("getLibDesc in " + path));
        EXPECT_FALSE(std::filesystem::exists(directory.file("s.png")));
    };
    expectRefused("missing directory");
    std::filesystem::create_directory(path);
    expectRefused("empty directory");
    directory.write("plugins/text.so", "no library");
    expectRefused("no library");
    std::filesystem::create_symlink(PELK_OTHER_LIBRARY, path + "/other.so");
    expectRefused("library without entry");
    // One bad library beside good ones is no reason to stop.
    directory.write("text.so", "no library");
    pelk.pluginPath = directory.path.string();
    const RunResult result = render({"s.json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, HasSubstr("warning: " + directory.file("text.so")));
}

TEST_F(RenderCommand, PicturesThatCannotBeWrittenAreRefusedBeforeTheRender) {
    std::filesystem::create_directory(directory.file("folder.exr"));
    for (const char* name : {"a.jpg", "a", "missing/a.exr", "folder.exr"}) {
        // A render of this size would not end.
        const RunResult result =
            render({"s.json", "--size", "9999x9999", "--spp", "999999", "-o", name});
        EXPECT_EQ(result.exitCode, 3) << name;
        EXPECT_THAT(result.err, HasSubstr(name));
    }
    EXPECT_EQ(directory.entryCount(), 2);
}

TEST_F(RenderCommand, AnOlderPictureSurvivesAFailedRender) {
    directory.write("a.exr", "older");
    directory.write("s.json", smallScene(R"(, "x": {"type": "GeomMesh", "file": "none.obj"})"));
    EXPECT_EQ(render({"s.json", "-o", "a.exr"}).exitCode, 1);
    EXPECT_EQ(directory.read("a.exr"), "older");
}

TEST_F(RenderCommand, ColoursWithoutANumberAreErrorsOnlyIfAskedFor) {
    directory.write("s.json", smallScene(R"(, "sun": {"type": "LightSun", "direction": [0, 0, -1],
        "color": [3e38, 3e38, 3e38], "intensity": 1e30})"));
    const RunResult lax = render({"s.json", "-o", "a.exr"});
    EXPECT_EQ(lax.exitCode, 0);
    EXPECT_THAT(lax.err, HasSubstr("\"matte\""));
    EXPECT_EQ(render({"s.json", "-o", "b.exr", "--strict"}).exitCode, 4);
    for (const float value : readPicture(directory.file("b.exr")))
        EXPECT_TRUE(std::isfinite(value));
}

TEST_F(RenderCommand, ThreadsAreAsTheUserWantsAndToldOnDemand) {
    pelk.environment = {{"PELK_NUM_THREADS", "3"},
                        {"PELK_USE_THREAD_AFFINITY", "0"},
                        {"TMPDIR", directory.path.string()}};
    const RunResult result = render({"s.json", "--verbose", "--nice", "--debug-log", "0"});
    EXPECT_EQ(result.exitCode, 0);
    for (const char* text : {"priority below normal", "3 threads, which the system places"})
        EXPECT_THAT(result.err, HasSubstr(text));
    EXPECT_THAT(directory.read("pelk_dbg_log_0"),
                HasSubstr("[WinThreadManager] All threads terminated"));
    EXPECT_THAT(render({"s.json", "-v", "--threads", "2"}).err, HasSubstr("2 threads, which"));
}

TEST_F(RenderCommand, CtrlCWritesWhatIsDone) {
    pelk.start({"render", "s.json", "-o", "a.exr", "--size", "2048x2048", "--spp", "256",
                "--progress=json"});
    ASSERT_TRUE(pelk.waitForOutput("\"progress\""));
    pelk.interrupt();
    const RunResult result = pelk.wait();
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_THAT(result.err, HasSubstr("interrupted"));
    const std::vector<float> pixels = readPicture(directory.file("a.exr"));
    EXPECT_EQ(pixels.size(), 2048u * 2048 * 4);
    EXPECT_GT(*std::max_element(pixels.begin(), pixels.end()), 0.0f);

    nlohmann::json line;
    std::istringstream lines(result.out);
    for (std::string text; std::getline(lines, text);)
        line = nlohmann::json::parse(text);
    EXPECT_EQ(line["event"], "finished");
    EXPECT_EQ(line["interrupted"], true);
    EXPECT_EQ(line["pictures"], nlohmann::json::array({directory.file("a.exr")}));
}

TEST_F(RenderCommand, ATerminalShowsTheProgressAndTakesItAway) {
    if (!Program::canHaveTerminal())
        GTEST_SKIP() << "this system gives out no terminals";
    pelk.start({"render", "s.json"}, true);
    const RunResult result = pelk.wait();
    EXPECT_EQ(result.exitCode, 0);
    for (const char* text : {"100.0 %", "samples/s", "0:00 left", "768 samples in"})
        EXPECT_THAT(result.err, HasSubstr(text));
    EXPECT_THAT(result.err, testing::Not(HasSubstr("left7")));
}

}  // namespace
