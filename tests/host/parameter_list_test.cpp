#include <gtest/gtest.h>

#include <initializer_list>

#include "fake_host/fake_renderer.h"
#include "fake_host/heap_probe.h"
#include "fake_host/print.h"
#include "fake_host/recorders.h"
#include "frame/exception_msg.h"
#include "frame/material.h"
#include "host/plugin_parameters.h"

namespace {

struct Fields {
    int whole = -1, flag = -1;
    float number = -1;
    Color color{-1, -1, -1};
    PluginBase* plugin = nullptr;
    TextureInterface* texture = nullptr;
    TextureFloatInterface* textureFloat = nullptr;
    TextureIntInterface* textureInt = nullptr;
    PelkPluginList plugins;
};

constexpr ParamTable kTable{
    intParam("whole", &Fields::whole, 3),
    boolParam("flag", &Fields::flag, true),
    floatParam("number", &Fields::number, 0.5f),
    colorParam("color", &Fields::color, Color(0.25f, 0.5f, 1)),
    pluginParam("plugin", &Fields::plugin, EXT_MATERIAL),
    textureParam("texture", &Fields::texture, AColor{Color(1), 1}),
    textureFloatParam("texture_float", &Fields::textureFloat, 1.0f),
    textureIntParam("texture_int", &Fields::textureInt),
    pluginListParam("plugins", &Fields::plugins, EXT_RENDER_CHANNEL),
};

class TestDesc : public PelkPluginDesc {
public:
    TestDesc() {
        kTable.addTo(list);
        paramDesc = &list;
    }
    u32 getPluginID() override { return 1; }
    Plugin* newPlugin(PelkPluginHost*) override { return nullptr; }
    void deletePlugin(Plugin*) override {}
    int supportsInterface(u64) override { return 0; }
    const char* getName() override { return "Test"; }

private:
    PelkParameterListDesc list;
};

class ParameterListTest : public testing::Test, protected Fields {
protected:
    ParameterListTest() { kTable.bind(list, *this); }

    void cache(std::initializer_list<PelkPluginParameter*> parameters = {}) {
        for (PelkPluginParameter* parameter : parameters)
            list.setParam(parameter);
        list.cacheParams(0.0, {});
    }

    void expectDefaults() const {
        EXPECT_EQ(whole, 3);
        EXPECT_EQ(flag, 1);
        EXPECT_EQ(number, 0.5f);
        EXPECT_EQ(color, Color(0.25f, 0.5f, 1));
        EXPECT_TRUE(!plugin && !texture && !textureFloat && !textureInt);
        EXPECT_EQ(plugins.count, 0);
    }

    TestDesc desc;
    PelkParameterList list{&desc};
};

TEST_F(ParameterListTest, FieldsHoldDefaultsFromBindingOnAndWhateverOverwritesThem) {
    expectDefaults();
    FakeTexture stray;
    Plugin* strays[] = {&stray};
    static_cast<Fields&>(*this) = {7, 7, 7, Color(7), &stray, &stray, &stray, &stray, {1, strays}};
    cache();
    expectDefaults();
}

TEST_F(ParameterListTest, FieldsFollowWhatIsSetUnderTheirNameLast) {
    Plugin faceless;
    IntParameter eight("whole", 8), nine("whole", 9);
    PluginParameter anyPlugin("plugin", &faceless);
    FloatParameter stranger("stranger", 1);
    list.setParam(&eight);
    EXPECT_EQ(whole, 3) << "a value arrives with cacheParams";
    cache({&anyPlugin, &stranger, nullptr});
    EXPECT_EQ(whole, 8);
    EXPECT_EQ(number, 0.5f);
    EXPECT_EQ(plugin, &faceless) << "bound whatever faces it has";
    cache({&nine});
    EXPECT_EQ(whole, 9);
    EXPECT_EQ(list.getParam("whole"), &nine);
    EXPECT_EQ(list.getParam("stranger"), &stranger);
    EXPECT_EQ(list.getParam("number"), nullptr) << "set is not the same as registered";

    // Bound after a value was set, and of names that the plug-in's kind does not have.
    int late = 0;
    float unknown = 5, known = 0;
    list.setParamCache("whole", late);
    list.setParamCache("unknown", unknown);
    list.setParamCache("stranger", known);
    cache();
    EXPECT_EQ(late, 9);
    EXPECT_EQ(unknown, 5);
    EXPECT_EQ(known, 1);
}

TEST_F(ParameterListTest, TexturesAreTheFaceAskedForOrNull) {
    class ColorTexture : public FakeTexture {
    public:
        PluginInterface* getInterface(u64 id) override {
            return id == EXT_TEXTURE ? FakeTexture::getInterface(id) : nullptr;
        }
    } colorOnly;
    FakeTexture all;
    TextureParameter right("texture", &colorOnly), wrong("texture_float", &colorOnly);
    cache({&right, &wrong});
    EXPECT_EQ(texture, &colorOnly);
    EXPECT_EQ(textureFloat, nullptr);
    TextureParameter none("texture", nullptr), other("texture_float", &all);
    cache({&none, &other});
    EXPECT_EQ(texture, nullptr);
    EXPECT_EQ(textureFloat, &all);

    // Plain values stand for textures, whatever their type.
    FloatParameter half("texture", 0.5f);
    IntParameter two("texture_float", 2);
    ColorParameter three("texture_int", Color(3));
    cache({&half, &two, &three});
    PelkContext context;
    ASSERT_TRUE(texture && textureFloat && textureInt);
    EXPECT_EQ(texture->getTexColor(context), (AColor{Color(0.5f), 1}));
    EXPECT_EQ(textureFloat->getTexFloat(context), 2);
    EXPECT_EQ(textureFloat->getTexBump(context), Vector());
    EXPECT_EQ(textureInt->getTexInt(context), 3);
    FloatListParameter numbers("texture", {1.0f});
    StringParameter text("texture_float", "1");
    cache({&numbers, &text});
    EXPECT_TRUE(!texture && !textureFloat);
}

TEST_F(ParameterListTest, PluginListsFollowInLengthAndKeepTheirArray) {
    Plugin a, b;
    PluginListParameter three("plugins", {&a, nullptr, &b}), four("plugins", {&a, &a, &a, &a}),
        none("plugins", std::vector<PluginBase*>());
    PluginParameter single("plugins", &b);
    cache({&three});
    const auto expectThree = [&] {
        ASSERT_EQ(plugins.count, 3);
        EXPECT_EQ(plugins.items[0], &a);
        EXPECT_EQ(plugins.items[1], nullptr);
        EXPECT_EQ(plugins.items[2], &b);
    };
    expectThree();
    HeapProbe heap;
    plugins = {};  // as plug-ins do that have used up their list
    cache();
    expectThree();
    EXPECT_EQ(heap.requests(), 0) << "the array was long enough";

    heap.refuseAfter(0);
    EXPECT_THROW(cache({&four}), ExceptionMsg);
    expectThree();
    cache({&none});
    EXPECT_EQ(plugins.count, 0);
    cache({&single});
    ASSERT_EQ(plugins.count, 1) << "a single plug-in is a list of one";
    EXPECT_EQ(plugins.items[0], &b);
}

TEST_F(ParameterListTest, FrameBeginReadsValuesAtTheFramesTime) {
    class TestPlugin : public PelkPlugin {
    public:
        TestPlugin(PelkPluginDesc* pluginDesc, Fields& fields) : PelkPlugin(pluginDesc) {
            kTable.bind(paramList, fields);
        }
    };
    Fields bound, kept;
    TestPlugin withDesc(&desc, bound), withoutDesc(nullptr, kept);
    FloatKeyframes keyframes("number", {{0.0, 0.0f}, {2.0, 8.0f}});
    withDesc.setParameter(&keyframes);
    FakeRenderer renderer;
    renderer.frameData.frameTime = 0.5;
    withDesc.frameBegin(renderer);
    withoutDesc.frameBegin(renderer);
    EXPECT_EQ(bound.number, 2.0f);
    EXPECT_EQ(kept.number, -1.0f) << "a plug-in without parameters has no defaults";
}

}  // namespace
