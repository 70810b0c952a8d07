#include <OpenImageIO/imageio.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "pelk/program.h"

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

json entryNamed(const json& list, const std::string& name) {
    const auto at = std::find_if(list.begin(), list.end(),
                                 [&name](const json& entry) { return entry["name"] == name; });
    return at == list.end() ? json() : *at;
}

std::vector<std::string> keysOf(const nlohmann::ordered_json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items())
        keys.push_back(key);
    return keys;
}

TEST(ListCommand, ShowsModulesAndOwnPluginsInTheManagersOrder) {
    Program pelk;
    const RunResult result = pelk.run({"list", "--json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, IsEmpty());
    const json list = json::parse(result.out);
    EXPECT_EQ(list["rejected"], json::array());

    const json diffuse = entryNamed(list["plugins"], "MtlDiffuse");
    EXPECT_EQ(diffuse["id"], 2004101502u);
    EXPECT_THAT(diffuse["library"].get<std::string>(), EndsWith("/pelk_materials.so"));
    for (const char* name : {"EXT_MATERIAL", "EXT_BSDF", "EXT_OPAQUE_SHADEABLE", "EXT_RTMTL"})
        EXPECT_THAT(diffuse["interfaces"], testing::Contains(name));
    EXPECT_EQ(entryNamed(list["plugins"], "TexChecker")["library"], "");

    // The last library comes first, and in it the descriptor that was made last.
    const auto place = [&list](const char* name) {
        const json& plugins = list["plugins"];
        return std::find(plugins.begin(), plugins.end(), entryNamed(plugins, name)) -
               plugins.begin();
    };
    EXPECT_LT(place("MtlDiffuse"), place("MtlSingleBRDF"));
    EXPECT_LT(place("MtlSingleBRDF"), place("TexChecker"));
    EXPECT_THAT(keysOf(nlohmann::ordered_json::parse(result.out)["plugins"][0]),
                testing::ElementsAre("name", "id", "interfaces", "library"));
}

TEST(ListCommand, RefusedLibrariesHaveReasons) {
    Program pelk;
    pelk.directory.write("text.so", "no library");
    pelk.pluginPath = pelk.directory.path.string() + ";" + pelk.directory.file("missing");
    const json list = json::parse(pelk.run({"list", "--json"}).out);
    ASSERT_EQ(list["rejected"].size(), 2u);
    EXPECT_EQ(list["rejected"][0]["path"], pelk.directory.file("text.so"));
    EXPECT_NE(list["rejected"][0]["reason"], "");
    EXPECT_THAT(list["rejected"][1]["path"].get<std::string>(), HasSubstr("missing"));
    EXPECT_TRUE(entryNamed(list["plugins"], "MtlDiffuse").is_object()) << "lost by a neighbour";
    EXPECT_THAT(pelk.run({"list"}).out, HasSubstr("text.so: "));
}

TEST(InfoCommand, GivesTheParametersInOrderOfRegistration) {
    Program pelk;
    const RunResult result = pelk.run({"info", "MtlDiffuse", "--json"});
    EXPECT_EQ(result.exitCode, 0);
    const auto info = nlohmann::ordered_json::parse(result.out);
    EXPECT_THAT(keysOf(info), testing::ElementsAre("name", "id", "interfaces", "parameters"));
    EXPECT_THAT(keysOf(info["parameters"][0]),
                testing::ElementsAre("name", "type", "list", "default", "interface", "description",
                                     "guide"));
    std::vector<std::string> names;
    for (const auto& parameter : info["parameters"])
        names.push_back(parameter["name"]);
    EXPECT_THAT(names, testing::ElementsAre("diffuse", "diffuse_tex", "diffuse_tex_mult",
                                            "reflection", "transparency", "render_channel_color",
                                            "render_channel_alpha"));
}

TEST(InfoCommand, EachTypeHasItsFormOfDefault) {
    const struct {
        const char *plugin, *parameter;
        json type, list, defaultValue, interface;
    } cases[] = {
        {"MtlDiffuse", "diffuse", "color", false, {0.5, 0.5, 0.5}, nullptr},
        {"MtlDiffuse", "diffuse_tex", "texture", false, nullptr, nullptr},
        {"MtlDiffuse", "diffuse_tex_mult", "float", false, 1.0, nullptr},
        {"MtlDiffuse", "render_channel_color", "plugin", false, nullptr, "EXT_RENDER_CHANNEL"},
        {"MtlSingleBRDF", "brdf", "plugin", false, nullptr, "EXT_BSDF"},
        {"MtlSingleBRDF", "allow_negative_colors", "bool", false, false, nullptr},
        {"TexChecker", "color1", "color", false, {0.8, 0.8, 0.8}, nullptr},
        {"GeomSphere", "segments", "int", false, 128, nullptr},
        {"GeomMesh", "file", "string", false, "", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.plugin) + "." + c.parameter);
        Program pelk;
        const json info = json::parse(pelk.run({"info", c.plugin, "--json"}).out);
        const json parameter = entryNamed(info["parameters"], c.parameter);
        EXPECT_EQ(parameter["type"], c.type);
        EXPECT_EQ(parameter["list"], c.list);
        EXPECT_EQ(parameter["default"], c.defaultValue);
        EXPECT_EQ(parameter["interface"], c.interface);
    }
}

TEST(InfoCommand, AnUnknownPluginBringsTheNearestName) {
    Program pelk;
    const RunResult result = pelk.run({"info", "MtlDifuse"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, HasSubstr("did you mean \"MtlDiffuse\"?"));
}

TEST(DescribeCommand, PrintsASectionAndKnowsWhoHasNone) {
    Program pelk;
    pelk.directory.write(
        "s.json",
        smallScene(R"(, "shell": {"type": "MtlSingleBRDF", "brdf": "matte", "double_sided": 1})"));
    const auto describe = [&pelk](std::vector<std::string> words) {
        words.insert(words.begin(), {"describe", "s.json"});
        return pelk.run(words);
    };
    const std::string matte = "diffuse\ncolor_value 0.500000 0.250000 0.125000\n";
    EXPECT_EQ(describe({"matte"}).out, matte);
    EXPECT_EQ(describe({"shell"}).out, "double_sided 1\n" + matte);
    EXPECT_EQ(describe({"matte", "--set", "matte.diffuse=[1, 1, 1]"}).out,
              "diffuse\ncolor_value 1.000000 1.000000 1.000000\n");
    const RunResult empty = describe({"matte", "--section", "HierarchyDescriptor"});
    EXPECT_EQ(empty.exitCode, 0);
    EXPECT_EQ(empty.out, "");
    EXPECT_THAT(describe({"mate"}).err, HasSubstr("did you mean \"matte\"?"));
    const RunResult camera = describe({"camera"});
    EXPECT_EQ(camera.exitCode, 1);
    EXPECT_EQ(camera.out, "");
    EXPECT_THAT(camera.err, HasSubstr("EXT_RTMTL"));
}

TEST(ProbeCommand, TellsTheHitItsMaterialTreeAndAllChannelsAsThePictureHasThem) {
    Program pelk;
    pelk.directory.write("a.json", smallScene(R"(,
        "tiles": {"type": "TexChecker"},
        "tiled": {"type": "MtlDiffuse", "diffuse_tex": "tiles"},
        "ball": {"type": "GeomSphere", "radius": 0.1, "material": "tiled"})"));
    const RunResult result =
        pelk.run({"probe", "a.json", "--pixel", "12,8", "--spp", "4", "--json"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const json probe = json::parse(result.out);
    EXPECT_EQ(probe["hit"]["object"], "ball");
    EXPECT_EQ(probe["material"]["type"], "MtlDiffuse");
    const json texture = probe["material"]["references"][0];
    EXPECT_EQ(texture["parameter"], "diffuse_tex");
    EXPECT_EQ(texture["name"], "tiles");
    EXPECT_EQ(probe["results"]["alpha"], json::array({1, 1, 1}));
    EXPECT_EQ(probe["channels"]["material_id"], 0);
    EXPECT_GT(probe["channels"]["depth"], 0.1);

    // The same numbers as in a picture of that size and those samples.
    pelk.run({"render", "a.json", "-o", "a.exr", "--spp", "4", "--region", "12,8,13,9"});
    const auto picture = OIIO::ImageInput::open(pelk.directory.file("a.exr"));
    ASSERT_TRUE(picture);
    std::vector<float> pixels(24 * 16 * 4);
    picture->read_image(0, 0, 0, 4, OIIO::TypeDesc::FLOAT, pixels.data());
    for (size_t i = 0; i < 3; ++i)
        EXPECT_EQ(probe["channels"]["beauty"][i].get<float>(), pixels[(24 * 8 + 12) * 4 + i]);

    const RunResult text = pelk.run({"probe", "a.json", "--pixel", "12,8"});
    EXPECT_THAT(text.out, HasSubstr("  tiled (MtlDiffuse)\n    diffuse_tex: tiles (TexChecker)"));
    const RunResult outside = pelk.run({"probe", "a.json", "--pixel", "24,0"});
    EXPECT_EQ(outside.exitCode, 2);
    EXPECT_THAT(outside.err, HasSubstr("--pixel lies outside; the picture has 24 x 16 pixels"));
}

}  // namespace
