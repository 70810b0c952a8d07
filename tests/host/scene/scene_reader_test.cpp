#include "pelk/host/scene/scene_reader.h"

#include <gmock/gmock.h>

#include <climits>
#include <stdexcept>

#include "pelk/contract/desc_of.h"
#include "pelk/contract/pelk_material.h"
#include "pelk/host/plugins/camera_perspective.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/host/scene/scene_json.h"
#include "pelk/host/scene/setting_limits.h"
#include "pelk/support/plugin_manager.h"
#include "temporary_directory.h"

namespace Tarnkit {
namespace {

using testing::AllOf;
using testing::HasSubstr;

/// A material with a parameter of every type.
class Probe final : public PelkMaterial {
public:
    static constexpr const char* kName = "Probe";
    static constexpr u32 kID = 0x7E1F0001;
    using Offered = InterfaceList<MaterialInterface>;

    explicit Probe(PelkPluginDesc* pluginDesc) : PelkMaterial(pluginDesc) {}
    static void addParameters(PelkParameterListDesc& list) {
        list.addParamBool("flag", false);
        list.addParamInt("int", 0);
        list.addParamFloat("float", 0);
        list.addParamColor("color", Color());
        list.addParamString("text", "");
        list.addParamPlugin("base", MaterialInterface::kInterfaceID);
        list.addParamPlugin("bump_brdf", BSDFInterface::kInterfaceID);
        list.addParamTexture("tex");
        list.addParamTextureFloat("tex_float");
        list.addParamInt("ints", 0, 0);
        list.addParamString("texts", "", 0);
        list.addParamPlugin("bases", MaterialInterface::kInterfaceID, 0);
        list.addParam({.name = "pairs",
                       .type = ParameterType::Plugin,
                       .count = 0,
                       .ofPairs = true,
                       .interfaceID = MaterialInterface::kInterfaceID});
        list.addParam("positions", 12);
    }

    void shade(PelkContext&) override {}
    BSDFSampler* getBSDF(PelkContext&, int) override { return nullptr; }
    void releaseBSDF(PelkContext&, BSDFSampler*) override {}
};

class SceneReaderTest : public testing::Test {
protected:
    SceneReaderTest() {
        session.getManager().registerPluginDesc(&probeDesc, session.getPluginHost());
        session.loadModules("", nullptr);  // lists the kinds anew
    }
    ~SceneReaderTest() override {
        scene.reset();
        session.getManager().unregisterPluginDesc(&probeDesc, session.getPluginHost());
    }

    bool read(const std::string& text, const std::vector<std::string>& overrides = {}) {
        dir.write("scene.json", text);
        error.clear();
        scene = readScene(session, dir.file("scene.json"), overrides, error);
        // An error always names the file.
        EXPECT_EQ(scene == nullptr, error.starts_with(dir.file("scene.json") + ":")) << error;
        return scene != nullptr;
    }
    void expectWrong(const std::string& text, const std::vector<std::string>& overrides,
                     const std::string& place, const std::string& told = "") {
        SCOPED_TRACE(text + place);
        EXPECT_FALSE(read(text, overrides));
        EXPECT_THAT(error, AllOf(HasSubstr(place), HasSubstr(told)));
        EXPECT_EQ(session.getManager().enumPlugins(nullptr), 0) << "instances left over";
    }
    /// A scene with the probe `a`, another one and a texture.
    static std::string probe(const std::string& parameters) {
        return R"({"plugins": {"a": {"type": "Probe", )" + parameters +
               R"(}, "check": {"type": "TexChecker"}, "b": {"type": "Probe"}}})";
    }
    bool readProbe(const std::string& parameters, const std::vector<std::string>& overrides = {}) {
        return read(probe(parameters), overrides);
    }
    PelkPluginParameter& parameter(const char* name) {
        auto* face = findInterface<PelkPluginInterface>(scene->findPlugin("a"));
        return *face->getParameter(name);
    }

    DescOf<Probe> probeDesc;
    HostSession session;
    TemporaryDirectory dir;
    std::unique_ptr<Scene> scene;
    std::string error;
};

TEST_F(SceneReaderTest, EveryTypeOfValueArrives) {
    ASSERT_TRUE(readProbe(R"("flag": true, "int": -2147483648, "float": 2,
        "color": {"times": [1, 3], "values": [[1, 2, 3], [3, 4, 5]]},
        "text": "x", "base": "b", "tex": [1, 2, 3, 0.5], "tex_float": "check",
        "ints": [], "texts": ["p", "q"],
        "bases": ["b", null], "positions": [0.25, "check"], "pairs": [[3, null], [4, "b"]])"))
        << error;
    Plugin* const b = scene->findPlugin("b");
    Plugin* const check = scene->findPlugin("check");
    EXPECT_EQ(parameter("flag").getInt(0, 0), 1);
    EXPECT_EQ(parameter("int").getInt(0, 0), INT_MIN);
    EXPECT_EQ(parameter("float").getFloat(0, 0), 2.0f);
    EXPECT_EQ(parameter("color").getColor(0, 2), (AColor{{2, 3, 4}, 1}));
    EXPECT_STREQ(parameter("text").getString(0, 0), "x");
    EXPECT_EQ(parameter("base").getObject(0, 0), b);
    EXPECT_EQ(parameter("tex").getColor(0, 0), (AColor{{1, 2, 3}, 0.5f}));
    EXPECT_EQ(parameter("tex_float").getObject(0, 0), check);
    EXPECT_EQ(parameter("ints").getCount(0), 0);
    EXPECT_STREQ(parameter("texts").getString(1, 0), "q");
    EXPECT_EQ(parameter("bases").getCount(0), 2);
    EXPECT_EQ(parameter("bases").getObject(1, 0), nullptr);
    EXPECT_EQ(parameter("positions").getFloat(0, 0), 0.25f);
    EXPECT_EQ(parameter("positions").getObject(1, 0), check);
    const int item = parameter("pairs").openItem(1);
    EXPECT_EQ(parameter("pairs").getInt(0, 0), 4);
    EXPECT_EQ(parameter("pairs").getObject(1, 0), b);
    parameter("pairs").closeItem(item);
}

TEST_F(SceneReaderTest, OverridesAreValuesToo) {
    ASSERT_TRUE(readProbe(R"("int": 1)", {"a.int=2", "a.base=b", "a.texts=[\"x=y\"]",
                                          "a.text=2 words", "a.text=3", "a.float=0.5"}))
        << error;
    EXPECT_EQ(parameter("int").getInt(0, 0), 2);
    EXPECT_STREQ(parameter("text").getString(0, 0), "3");
    EXPECT_EQ(parameter("float").getFloat(0, 0), 0.5f);
    EXPECT_EQ(parameter("base").getObject(0, 0), scene->findPlugin("b"));
    EXPECT_STREQ(parameter("texts").getString(0, 0), "x=y");
}

TEST_F(SceneReaderTest, WhatIsWrongIsToldWithItsPlace) {
    const char* const parameters[][2] = {
        {R"("flot": 1)", "/plugins/a/flot: Probe has no parameter \"flot\", did you mean"},
        {R"("flag": 1)", "/plugins/a/flag: expected true or false, not 1"},
        {R"("int": true)", "/plugins/a/int: expected a whole number"},
        {R"("int": 2147483648)", "/plugins/a/int: expected a whole number"},
        {R"("float": 1e39)", "/plugins/a/float: expected a number"},
        {R"("color": [1, 2])", "/plugins/a/color: expected three or four"},
        {R"("base": "check")", "\"check\" is a TexChecker"},
        {R"("bases": ["b", "c"])", "/plugins/a/bases/1: expected the name"},
        {R"("pairs": [[1, "c"]])", "/a/pairs/0/1: expected"},
        {R"("float": {"times": [1, 1], "values": [1, 2]})", "/float/times/1: "},
        {R"("float": {"times": [1, 2], "values": [1]})", "/float/values: "},
        {R"("int": 1, "int": 1)", "/plugins/a/int: the key stands here twice"},
    };
    for (const auto& [text, told] : parameters)
        expectWrong(probe(text), {}, told);
    const char* const overrides[][2] = {
        {"chek.squares=3", "did you mean \"check\"?"},
        {"a.type=GeomBox", "no parameter \"type\""},
        {"a.int=x", "expected a whole number of 32 bits, not \"x\""},
    };
    for (const auto& [text, told] : overrides)
        expectWrong(probe(R"("int": 1)"), {text}, "--set " + std::string(text) + ": ", told);
    const std::string two = R"({"plugins": {"l": {"type": "CameraPerspective"},
        "r": {"type": "CameraPerspective"}})";
    const std::pair<std::string, const char*> files[] = {
        {"", "scene.json:1:1: "},
        {"{\"plugins\": 1e999}", "scene.json:1:"},
        {"{}", "/plugins: expected an object"},
        {R"({"plugin": {}})", "/plugin: there is no such entry, did you mean \"plugins\""},
        {R"({"plugins": {"x/~y": {"type": "GeomBx"}}})", "/plugins/x~1~0y/type: "},
        {R"({"plugins": {}, "settings": {"width": 0}})", "/settings/width: expected"},
        {R"({"plugins": {}, "settings": {"samples": 18446744073709551615}})", "/settings"},
        {R"({"plugins": {"a": {"type": "Probe"}}, "settings": {"backplate": "a"}})",
         "/settings/backplate: expected the name of an instance with EXT_TEXTURE"},
        {std::string(1000, '['), "nested too deeply"},
        {two + "}", "/settings/camera: there are 2 cameras"},
    };
    for (const auto& [text, told] : files)
        expectWrong(text, {}, told);
    ASSERT_TRUE(read(two + R"(, "settings": {"camera": "r"}})")) << error;
    EXPECT_EQ(scene->camera->getPlugin(), scene->findPlugin("r"));
}

TEST_F(SceneReaderTest, MaterialsMustEnd) {
    // A chain of probes, m1 to the last one, whose parameters are `end`.
    const auto readChain = [&](int length, const std::string& end) {
        std::string text = R"({"plugins": {)";
        for (int i = 1; i < length; ++i)
            text += "\"m" + std::to_string(i) + R"(": {"type": "Probe", "base": "m)" +
                    std::to_string(i + 1) + "\"},";
        return read(text + "\"m" + std::to_string(length) + R"(": {"type": "Probe")" + end + "}}}");
    };
    EXPECT_TRUE(readChain(100, "")) << error;
    EXPECT_FALSE(readChain(101, ""));
    EXPECT_THAT(error, HasSubstr("more than 100"));
    EXPECT_FALSE(readChain(3, R"(, "bases": ["m2"])"));
    EXPECT_THAT(error, HasSubstr("in a loop: m2 -> m3 -> m2"));
    EXPECT_TRUE(readChain(3, R"(, "bump_brdf": "m1")")) << error;
}

TEST_F(SceneReaderTest, PluginsThatFailSpoilNoOthers) {
    struct OddDesc final : PelkPluginDesc {
        explicit OddDesc(const char* n) : name(n) { paramDesc = &list; }
        u32 getPluginID() override { return name ? 0x7E1F0002 : 0x7E1F0003; }
        const char* getName() override { return name; }
        Plugin* newPlugin(PelkPluginHost*) override { throw std::runtime_error("no licence"); }
        void deletePlugin(Plugin*) override {}
        int supportsInterface(u64) override { return 0; }
        const char* const name;
        PelkParameterListDesc list;
    } odd("Odd"), nameless(nullptr);
    for (OddDesc* desc : {&odd, &nameless})
        session.getManager().registerPluginDesc(desc, session.getPluginHost());
    session.loadModules("", nullptr);
    EXPECT_TRUE(session.getInterfaceNames(*session.findKind("Odd")).empty());
    ASSERT_EQ(session.getRejected().size(), 2u);
    EXPECT_EQ(session.getRejected()[0].reason, "a plug-in without a name");
    EXPECT_EQ(session.getRejected()[1].reason, "Odd gives no instance: no licence");
    EXPECT_FALSE(read(R"({"plugins": {"x": {"type": "Odd"}}})"));
    EXPECT_THAT(error, HasSubstr("/plugins/x: no instance of the plug-in \"Odd\": no licence"));
    for (OddDesc* desc : {&odd, &nameless})
        session.getManager().unregisterPluginDesc(desc, session.getPluginHost());
}

// Editors check scenes by the schema, the reader by the limits: a scene must please both.
TEST(SettingLimits, AreThoseOfTheSchema) {
    std::ifstream file(PELK_SCENE_SCHEMA);
    const Json schema = Json::parse(file);
    const Json& settings = schema["definitions"]["settings"]["properties"];
    const std::pair<const char*, IntLimits> rows[] = {{"width", kPictureSideLimits},
                                                      {"height", kPictureSideLimits},
                                                      {"samples", kSampleLimits},
                                                      {"seed", kSeedLimits},
                                                      {"max_depth", kDepthLimits}};
    for (const auto& [name, limits] : rows) {
        EXPECT_EQ(settings.at(name).at("minimum"), limits.least) << name;
        EXPECT_EQ(settings.at(name).at("maximum"), limits.most) << name;
    }
}

}  // namespace
}  // namespace Tarnkit
