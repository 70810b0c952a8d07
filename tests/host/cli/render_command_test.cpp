#include <OpenImageIO/imageio.h>
#include <gmock/gmock.h>
#include <sys/resource.h>

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

    std::string attributeOf(const std::string& picture, const char* name) {
        const auto input = OIIO::ImageInput::open(directory.file(picture));
        return input ? std::string(input->spec().get_string_attribute(name)) : "no picture";
    }

    Program pelk;
    TemporaryDirectory& directory = pelk.directory;
};

TEST_F(RenderCommand, WritesEachPictureAndIsSilentElsewhere) {
    const RunResult result = render({"s.json", "-o", "a.png", "-o", "b.exr"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out,
              "Wrote " + directory.file("a.png") + "\nWrote " + directory.file("b.exr") + "\n");
    EXPECT_EQ(result.err, "");
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
        EXPECT_EQ(result.err, "") << entry.path();
        ++scenes;
    }
    EXPECT_GT(scenes, 8);
}

TEST_F(RenderCommand, TheCornellBoxHasTheLightThatOthersFind) {
    const std::string scene = PELK_SCENES "/cornell.json";
    ASSERT_EQ(render({scene, "-o", "a.exr", "--size", "64x64", "--spp", "256"}).exitCode, 0);
    const std::vector<float> pixels = readPicture(directory.file("a.exr"));
    const double expected[] = {0.3101, 0.2872, 0.2590};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        double sum = 0;
        for (std::size_t i = channel; i < pixels.size(); i += 4)
            sum += pixels[i];
        EXPECT_NEAR(sum / (64 * 64) / expected[channel], 1.0, 0.005) << channel;
    }
}

TEST_F(RenderCommand, PartsMakeTheWhole) {
    const std::vector<float> whole = pixelsOf({"--threads", "1"});
    const std::vector<std::vector<std::string>> cuts[] = {
        {{"--tile", "1/3"}, {"--tile", "2/3"}, {"--tile", "3/3"}},
        {{"--region", "0,0,7,16"}, {"--region", "7,0,24,5"}, {"--region", "7,5,24,16"}},
    };
    for (const auto& cut : cuts) {
        std::vector<float> sum(24u * 16 * 4);
        for (const auto& part : cut) {
            const std::vector<float> pixels = pixelsOf(part);
            ASSERT_EQ(pixels.size(), sum.size());
            std::transform(sum.begin(), sum.end(), pixels.begin(), sum.begin(), std::plus<>());
        }
        EXPECT_EQ(sum, whole) << cut[0][0];
    }
}

TEST_F(RenderCommand, BadInputIsExplainedAndAnOlderPictureSurvives) {
    directory.write("cut.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 7\n");
    directory.write("cut.png", "\x89PNG\r\n\x1a\n");
    directory.write("a.exr", "older");
    const struct {
        std::string scene;
        const char *says, *place;
    } cases[] = {
        {"{\n  \"plugins\": [1,,2]\n}", "", "s.json:2:17"},
        {smallScene(R"(, "x": {"type": "MtlDifuse"})"), "\"MtlDiffuse\"", "/plugins/x/type"},
        {smallScene(R"(, "x": {"type": "MtlDiffuse", "difuse": 1})"), "\"diffuse\"", "/x/difuse"},
        {smallScene(R"(, "x": {"type": "MtlDiffuse", "diffuse": "red"})"), "red", "/x/diffuse"},
        {smallScene(R"(, "x": {"type": "MtlSingleBRDF", "brdf": "mate"})"), "\"matte\"", "/x/brdf"},
        {smallScene(R"(, "x": {"type": "MtlSingleBRDF", "brdf": "x"})"), "loop", "x -> x"},
        {smallScene(R"(, "x": {"type": "GeomMesh", "file": "none.obj"})"), "none.obj", "/x"},
        {smallScene(R"(, "x": {"type": "GeomMesh", "file": "cut.obj"})"), "cut.obj", "/x"},
        {smallScene(R"(, "x": {"type": "TexImage", "file": "none.png"})"), "none.png", "/x"},
        {smallScene(R"(, "x": {"type": "TexImage", "file": "cut.png"})"), "cut.png", "/x"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.scene);
        directory.write("s.json", c.scene);
        const RunResult result = render({"s.json", "-o", "a.exr"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.err, AllOf(HasSubstr("s.json"), HasSubstr(c.says), HasSubstr(c.place)));
        EXPECT_EQ(directory.read("a.exr"), "older");
        EXPECT_EQ(directory.entryCount(), 4) << "something was written";
    }
    // What would move the cursor must not reach a terminal.
    EXPECT_THAT(render({"\x1b[2J.json"}).err,
                HasSubstr("pelk: \\x1b[2J.json: the scene can't be read: No"));
}

TEST_F(RenderCommand, WithoutMaterialsItSaysWhatItLookedFor) {
    const std::string path = directory.file("plugins");
    const auto expectRefused = [&](const char* what) {
        SCOPED_TRACE(what);
        const RunResult result = render({"s.json", "--plugins", path});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.err, HasSubstr("getLibDesc in " + path));
    };
    expectRefused("missing directory");
    std::filesystem::create_directory(path);
    directory.write("plugins/text.so", "no library");
    expectRefused("no library");
    std::filesystem::create_symlink(PELK_OTHER_LIBRARY, path + "/other.so");
    expectRefused("library without entry");
    // One bad library beside good ones is no reason to stop.
    pelk.pluginPath = path;
    const RunResult result = render({"s.json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, HasSubstr("warning: " + path + "/text.so"));
}

TEST_F(RenderCommand, PicturesThatCannotBeWrittenAreRefusedBeforeTheRender) {
    std::filesystem::create_directory(directory.file("folder.exr"));
    const std::string scene = directory.read("s.json");
    const struct {
        const char *option, *name;
        int exitCode;
    } cases[] = {{"-o", "a.jpg", 2},
                 {"-o", "missing/a.exr", 3},
                 {"-o", "folder.exr", 3},
                 {"--checkpoint-file", "./s.png", 2},
                 {"--checkpoint-file", "s.json", 1}};
    for (const auto& c : cases) {
        // A render of this size would not end.
        const RunResult result =
            render({"s.json", "--size", "9999x9999", "--spp", "999999", c.option, c.name});
        EXPECT_EQ(result.exitCode, c.exitCode) << c.name;
        EXPECT_THAT(result.err, HasSubstr(c.name));
    }
    std::filesystem::create_symlink(".", directory.file("here"));
    const RunResult twice = render({"s.json", "-o", "new.png", "-o", "here/new.png"});
    EXPECT_EQ(twice.exitCode, 2);
    EXPECT_THAT(twice.err, HasSubstr("\"new.png\" and \"here/new.png\" are one file"));
    EXPECT_EQ(directory.read("s.json"), scene);
}

TEST_F(RenderCommand, ColoursWithoutANumberAreErrorsOnlyIfAskedFor) {
    directory.write("s.json", smallScene(R"(, "sun": {"type": "LightSun", "direction": [0, 0, -1],
        "color": [3e38, 3e38, 3e38], "intensity": 1e30})"));
    const RunResult lax = render({"s.json", "-o", "a.exr", "--channels", "all"});
    EXPECT_EQ(lax.exitCode, 0);
    EXPECT_THAT(lax.err, HasSubstr("\"matte\""));
    for (const float value : readPicture(directory.file("a.exr")))
        EXPECT_TRUE(std::isfinite(value));
    EXPECT_EQ(render({"s.json", "-o", "b.exr", "--strict"}).exitCode, 4);
}

TEST_F(RenderCommand, ThreadsAreAsTheUserWantsAndToldOnDemand) {
    pelk.environment = {{"PELK_NUM_THREADS", "3"}, {"PELK_USE_THREAD_AFFINITY", "0"}};
    EXPECT_THAT(
        render({"s.json", "--verbose", "--nice"}).err,
        AllOf(HasSubstr("priority below normal"), HasSubstr("3 threads, which the system")));
    EXPECT_THAT(render({"s.json", "-v", "--threads", "2"}).err, HasSubstr("2 threads, which"));
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
        const std::vector<float> pixels = readPicture(directory.file("a.exr"));
        EXPECT_EQ(pixels.size(), 64u * 64 * 4);
        EXPECT_GT(*std::min_element(pixels.begin(), pixels.end()), 0.0f);
        EXPECT_EQ(attributeOf("a.exr", "ended"), "interrupted");
        const std::string lastLine = result.out.substr(result.out.rfind("{"));
        EXPECT_THAT(lastLine, AllOf(HasSubstr("\"finished\""), HasSubstr("\"interrupted\":true"),
                                    HasSubstr("[\"" + directory.file("a.exr") + "\"]")));
    }
}

TEST_F(RenderCommand, WithoutASampleInEveryPixelAnOlderPictureStands) {
    directory.write("a.exr", "older");
    const std::vector<std::string> words = {"s.json",  "-o",    "a.exr", "--size", "999x999",
                                            "--order", "tiles", "--spp", "9999999"};
    std::vector<std::string> timed = words, kept = words;
    timed.insert(timed.end(), {"--time", "0.01"});
    const RunResult result = render(timed);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, HasSubstr("--time: the time was over before every pixel"));

    // As under nohup: the first signal is ignored, the second is not.
    std::signal(SIGHUP, SIG_IGN);
    kept.insert(kept.begin(), "render");
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

    const RunResult inTime = render({"s.json", "-o", "a.exr", "--spp", "9999999", "--time", "0.5"});
    EXPECT_EQ(inTime.exitCode, 0) << inTime.err;
    EXPECT_EQ(attributeOf("a.exr", "ended"), "out of time");
}

TEST_F(RenderCommand, OutputThatDoesNotFitIsAnErrorAndTheOlderPictureStands) {
    for (const char* name : {"a.png", "a.exr"})
        directory.write(name, "older");
    rlimit former;
    getrlimit(RLIMIT_FSIZE, &former);
    rlimit tight = former;
    tight.rlim_cur = 250;  // the program inherits it
    setrlimit(RLIMIT_FSIZE, &tight);
    const RunResult result = render({"s.json", "-o", "a.png", "-o", "a.exr"});
    const RunResult list = pelk.run({"list", "--json"});
    setrlimit(RLIMIT_FSIZE, &former);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.err, HasSubstr("File too large"));
    for (const char* name : {"a.png", "a.exr"})
        EXPECT_EQ(directory.read(name), "older");
    EXPECT_EQ(directory.entryCount(), 3) << "a temporary file was left";
    EXPECT_EQ(list.exitCode, 3);
    EXPECT_THAT(list.err, HasSubstr("cannot write the results"));
}

}  // namespace
