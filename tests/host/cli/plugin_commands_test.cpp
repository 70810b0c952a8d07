#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/cli/program.h"

using nlohmann::json;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

json entryNamed(const json& list, const std::string& name) {
    const auto at = std::find_if(list.begin(), list.end(),
                                 [&name](const auto& entry) { return entry["name"] == name; });
    return at == list.end() ? json() : *at;
}

using PluginCommands = CommandTest;

TEST_F(PluginCommands, ListShowsModulesAndOwnPluginsInTheManagersOrderAndWhatWasRefused) {
    directory.write("text.so", "no library");
    pelk.pluginPath = directory.path.string() + ";" + directory.file("missing");
    const RunResult result = pelk.run({"list", "--json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    const json list = json::parse(result.out);
    ASSERT_EQ(list["rejected"].size(), 2u);
    EXPECT_EQ(list["rejected"][1]["path"], directory.file("text.so"));
    EXPECT_NE(list["rejected"][1]["reason"], "");
    EXPECT_EQ(list["rejected"][0]["path"], directory.file("missing"));

    const json diffuse = entryNamed(list["plugins"], "MtlDiffuse");
    EXPECT_EQ(diffuse["id"], 2004101502u);
    EXPECT_THAT(diffuse["library"].get<std::string>(), EndsWith("/pelk_materials.so"));
    EXPECT_THAT(diffuse["interfaces"], testing::Contains("EXT_MATERIAL"));
    EXPECT_EQ(entryNamed(list["plugins"], "TexChecker")["library"], "");

    // The last library comes first, and in it the descriptor that was made last.
    const std::size_t first = result.out.find("\"MtlDiffuse");
    const std::size_t second = result.out.find("\"MtlSingle");
    EXPECT_LT(first, second);
    EXPECT_LT(second, result.out.find("\"TexChecker"));
}

TEST_F(PluginCommands, WhatIsWrongWithPluginsOfOthersIsToldAndEndsNothing) {
    for (const char* const library : {"empty.so", "wrong_plugins.so"})
        std::filesystem::copy_file(TEST_PLUGIN_MODULES + std::string(library),
                                   directory.file(library));
    pelk.pluginPath = directory.path.string();
    EXPECT_THAT(pelk.run({"list"}).out,
                AllOf(HasSubstr("/wrong_plugins.so\n  MtlWrong "),
                      HasSubstr("/empty.so: no plug-in in it\n"),
                      HasSubstr("/wrong_plugins.so: a plug-in without a name\n"),
                      HasSubstr(": Taken: its id 2004101502 is that of MtlDiffuse of /"),
                      HasSubstr(": MtlWrong: parameter 2 has no name\n"),
                      HasSubstr(": MtlWrong: the parameter \"amount\" is there twice\n"),
                      HasSubstr(": MtlDiffuse (id 202) is passed over for that of /")));
    const json list = json::parse(pelk.run({"list", "--json"}).out);
    EXPECT_THAT(list["shadowed"][0]["by"].get<std::string>(), EndsWith("/pelk_materials.so"));
    EXPECT_THAT(pelk.run({"info", "MtlDiffuse"}).out, HasSubstr("id 2004101502"));

    directory.write("s.json", smallScene(R"(, "bad": {"type": "MtlWrong"})"));
    const auto messages = [&](const std::string& wrong) {
        return render({"--verbose", "--frames", "0-1", "--set", "square.material=bad", "--set",
                       "bad.wrong=" + wrong})
            .err;
    };
    const std::string told = messages("0");
    for (const char* const finding :
         {"a field is bound to \"\", which", "the field for \"amount\" is of another type",
          "the default of \"amount\" lies outside of its own guide, minValue=(0)",
          "frameBegin doesn't call", "768 of its samplers were never given back"}) {
        const std::size_t at = told.find(std::string("\"bad\": ") + finding);
        ASSERT_NE(at, std::string::npos) << finding << " in " << told;
        EXPECT_EQ(told.find(finding, at + 9), std::string::npos) << "once for all frames";
    }
    for (const char* const wrong : {"1", "2", "3", "4", "5"})
        EXPECT_THAT(messages(wrong), HasSubstr("\"bad\" made one of them")) << wrong;
}

TEST_F(PluginCommands, InfoGivesTheParametersInOrderWithTheirTypesAndDefaults) {
    const json info = json::parse(pelk.run({"info", "MtlDiffuse", "--json"}).out);
    EXPECT_EQ(info["parameters"][0]["name"], "diffuse");
    EXPECT_EQ(info["parameters"].back()["name"], "render_channel_alpha");
    const struct {
        const char *plugin, *parameter;
        json type, defaultValue, interface;
    } cases[] = {
        {"MtlDiffuse", "diffuse", "color", {0.5, 0.5, 0.5}, nullptr},
        {"MtlDiffuse", "diffuse_tex", "texture", nullptr, nullptr},
        {"MtlDiffuse", "diffuse_tex_mult", "float", 1.0, nullptr},
        {"MtlSingleBRDF", "brdf", "plugin", nullptr, "EXT_BSDF"},
        {"MtlSingleBRDF", "allow_negative_colors", "bool", false, nullptr},
        {"GeomSphere", "segments", "int", 128, nullptr},
        {"GeomMesh", "file", "string", "", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.plugin) + "." + c.parameter);
        const json plugin = json::parse(pelk.run({"info", c.plugin, "--json"}).out);
        const json parameter = entryNamed(plugin["parameters"], c.parameter);
        EXPECT_EQ(parameter["type"], c.type);
        EXPECT_EQ(parameter["default"], c.defaultValue);
        EXPECT_EQ(parameter["interface"], c.interface);
    }
    expectRefused({"info"}, {{{"MtlDifuse"}, 1, "did you mean \"MtlDiffuse\"?"}});
}

TEST_F(PluginCommands, DescribePrintsASectionAndKnowsWhoHasNone) {
    directory.write("s.json", smallScene(R"(,
        "shell": {"type": "MtlSingleBRDF", "brdf": "matte", "double_sided": 1})"));
    EXPECT_EQ(pelk.run({"describe", "s.json", "shell", "--set", "matte.diffuse=[1, 1, 1]"}).out,
              "double_sided 1\ndiffuse\ncolor_value 1.000000 1.000000 1.000000\n");
    const RunResult camera = pelk.run({"describe", "s.json", "camera"});
    EXPECT_EQ(camera.exitCode, 1);
    EXPECT_EQ(camera.out, "");
    EXPECT_THAT(camera.err, HasSubstr("EXT_RTMTL"));
}

TEST_F(PluginCommands, ProbeTellsTheHitItsMaterialTreeAndAllChannelsAsThePictureHasThem) {
    directory.write("a.json", smallScene(R"(,
        "tiles": {"type": "TexChecker"},
        "tiled": {"type": "MtlDiffuse", "diffuse_tex": "tiles"},
        "ball": {"type": "GeomSphere", "radius": 0.1, "material": "tiled"})"));
    const RunResult result =
        pelk.run({"probe", "a.json", "--pixel", "12,8", "--spp", "4", "--json"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const json probe = json::parse(result.out);
    EXPECT_EQ(probe["hit"]["object"], "ball");
    const json texture = probe["material"]["references"][0];
    EXPECT_EQ(texture["parameter"], "diffuse_tex");
    EXPECT_EQ(texture["name"], "tiles");
    EXPECT_EQ(probe["channels"]["material_id"], 0);

    // The same numbers as in a picture of that size and those samples.
    pelk.run({"render", "a.json", "-o", "a.exr", "--spp", "4", "--region", "12,8,13,9"});
    const std::vector<float> found = pixels("a.exr");
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(probe["channels"]["beauty"][i], found.at((24 * 8 + 12) * 4 + i));
}

}  // namespace
