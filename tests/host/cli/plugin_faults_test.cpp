// What becomes of a render when a plug-in throws or faults, at each of its operations.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "host/cli/program.h"

using testing::HasSubstr;

namespace {

const std::string kLibrary = PELK_TEST_CULPRIT "/culprit.so";

/// The culprit alone, below other materials, and between a light and a surface.
constexpr char kCulprits[] = R"(,
    "bad": {"type": "MtlCulprit"},
    "wrap": {"type": "MtlWrapper", "base_material": "bad"},
    "shell": {"type": "MtlSingleBRDF", "brdf": "bad"},
    "sides": {"type": "Mtl2Sided", "front": "bad", "back": "matte"},
    "blocker": {"type": "GeomQuad", "width": 9, "height": 9, "translate": [0, 0, 2],
                "material": "wrap"},
    "sun": {"type": "LightSun", "direction": [0, 0, -1], "angle": 0})";

struct Case {
    const char *kind, *operation;
    int every;             ///< which calls of it go wrong: each so many-th
    const char* material;  ///< of the square
    int exitCode;
    bool picture;
};

/// `place`: how standard error is to name the culprit.
void expectOutcome(const Case& c, const std::string& place) {
    const std::string plan =
        c.kind + std::string(" ") + c.operation + " " + std::to_string(c.every);
    SCOPED_TRACE(plan + " under " + c.material);
    Program pelk;
    pelk.pluginPath = PELK_TEST_CULPRIT;
    // What the culprit doesn't delete, as it throws there, is no leak of the program.
    pelk.environment = {{"CULPRIT", plan},
                        {"TMPDIR", pelk.directory.path.string()},
                        {"LSAN_OPTIONS", "detect_leaks=0"}};
    pelk.directory.write("s.json", smallScene(kCulprits));
    const RunResult result = pelk.run({"render", "s.json", "-o", "a.exr", "--spp", "8", "--set",
                                       std::string("square.material=") + c.material, "--strict"});
    EXPECT_EQ(result.exitCode, c.exitCode) << result.err;
    EXPECT_THAT(result.err, HasSubstr(place));
    EXPECT_THAT(result.err, HasSubstr(*c.kind == 't' ? "no licence" : "Segmentation fault in "));
    // A plane sees itself neither directly nor by indirect light: one call for each sample.
    const bool counted = c.exitCode == 4 && c.material != std::string("matte");
    EXPECT_THAT(result.err, HasSubstr(counted ? "768 samples were left out" : ""));
    const auto lines = std::count(result.err.begin(), result.err.end(), '\n');
    EXPECT_TRUE(lines == 1 || place == kLibrary) << result.err;
    EXPECT_EQ(readPicture(pelk.directory.file("a.exr")).empty(), !c.picture);
    EXPECT_EQ(std::filesystem::exists(pelk.directory.file("Pelk.dmp")), c.exitCode == 6);
}

void expectNamed(const Case& c, const char* operation) {
    expectOutcome(c, operation + (" of \"bad\" (MtlCulprit of " + kLibrary) + ")");
}

TEST(PluginFaults, WhatAnInstanceThrowsIsToldAndCostsNoMoreThanTheSample) {
    const Case cases[] = {
        {"throw", "newPlugin", 1, "bad", 1, false},
        {"throw", "frameBegin", 1, "bad", 5, false},
        {"throw", "shade", 4, "wrap", 4, true},
        {"throw", "shade", 4, "matte", 4, true},  // of what stands before the sun, at shadow rays
        {"throw", "getBSDF", 4, "shell", 4, true},
        {"throw", "eval", 4, "shell", 4, true},
        {"throw", "traceBSDFForward", 4, "shell", 4, true},
        {"throw", "releaseBSDF", 4, "shell", 4, true},
        {"throw", "frameEnd", 1, "bad", 0, true},
        {"throw", "renderEnd", 1, "bad", 0, true},
        {"throw", "deletePlugin", 1, "bad", 0, true},
    };
    for (const Case& c : cases)
        expectNamed(c, c.operation);
    // It can't leave a destructor.
    expectNamed({"throw", "destructor", 1, "bad", 6, true}, "deletePlugin");
}

TEST(PluginFaults, AFaultOfAnInstanceIsToldAndThePictureSoFarIsWritten) {
    const Case cases[] = {
        {"fault", "newPlugin", 1, "bad", 6, false},
        {"fault", "renderBegin", 1, "bad", 6, false},
        {"fault", "shade", 2000, "bad", 6, true},
        {"overflow", "shade", 2000, "matte", 6, true},
        {"fault", "getBSDF", 2000, "shell", 6, true},
        {"fault", "eval", 2000, "shell", 6, true},
        {"fault", "releaseBSDF", 2000, "sides", 6, true},
        {"fault", "frameEnd", 1, "bad", 6, true},
        {"fault", "renderEnd", 1, "bad", 6, true},
        {"fault", "deletePlugin", 1, "bad", 6, true},
    };
    for (const Case& c : cases)
        expectNamed(c, c.operation);
}

TEST(PluginFaults, AThrowOrFaultInALibraryNamesIt) {
    for (const char* operation : {"getLibDesc", "registerPlugin"}) {
        expectOutcome({"throw", operation, 1, "bad", 1, false}, kLibrary);
        expectOutcome({"fault", operation, 1, "bad", 6, false}, kLibrary);
    }
}

}  // namespace
