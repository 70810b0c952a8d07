#include <gtest/gtest.h>

#include <initializer_list>

#include "base/test_heap.h"
#include "fake_host/recorders.h"
#include "pelk/base/exception_msg.h"
#include "pelk/contract/material.h"
#include "pelk/contract/plugin_parameters.h"
#include "support/plugin_modules/listed_library.h"

namespace {

struct Fields {
    int whole = -1;
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
    floatParam("number", &Fields::number, 0.5f),
    colorParam("color", &Fields::color, Color(0.25f, 0.5f, 1)),
    pluginParam<MaterialInterface>("plugin", &Fields::plugin),
    textureParam("texture", &Fields::texture, AColor{Color(1), 1}),
    textureFloatParam("texture_float", &Fields::textureFloat, 1.0f),
    textureIntParam("texture_int", &Fields::textureInt),
    pluginListParam<RenderChannelInterface>("plugins", &Fields::plugins),
};

struct TestDesc : ListedDesc {
    TestDesc() : ListedDesc(1, "Test") {
        kTable.addTo(list);
        paramDesc = &list;
    }
    PelkParameterListDesc list;
};

class ParameterListTest : public testing::Test, protected Fields {
protected:
    ParameterListTest() { kTable.bind(list, *this); }

    void cache(std::initializer_list<PelkPluginParameter*> parameters = {}) {
        for (PelkPluginParameter* parameter : parameters)
            list.setParam(parameter);
        list.cacheParams(0.5, {});
    }

    TestDesc desc;
    PelkParameterList list{&desc};
};

TEST_F(ParameterListTest, DefaultsReplaceWhateverTheFieldsHeld) {
    FakeTexture stray;
    Plugin* strays[] = {&stray};
    static_cast<Fields&>(*this) = {7, 7, Color(7), &stray, &stray, &stray, &stray, {1, strays}};
    cache();
    EXPECT_EQ(whole, 3);
    EXPECT_EQ(color * number, Color(0.125f, 0.25f, 0.5f));
    EXPECT_TRUE(!plugin && !texture && !textureFloat && !textureInt);
    EXPECT_EQ(plugins.count, 0);
}

TEST_F(ParameterListTest, FieldsFollowWhatIsSetUnderTheirNameLast) {
    Plugin bare;
    IntParameter eight("whole", 8), nine("whole", 9);
    PluginParameter anyPlugin("plugin", &bare);
    FloatKeyframes keyframes("number", {{0.0, 0.0f}, {2.0, 8.0f}});
    cache({&eight, &anyPlugin, &keyframes, nullptr});
    EXPECT_EQ(whole, 8);
    EXPECT_EQ(plugin, &bare) << "bound whatever it offers";
    EXPECT_EQ(number, 2) << "at its time";
    cache({&nine});
    EXPECT_EQ(list.getParam("whole"), &nine);

    // Bound after a value was set, and of a name that the plug-in's kind does not have.
    int late = 0;
    float unknown = 5;
    list.setParamCache("whole", late);
    list.setParamCache("unknown", unknown);
    cache();
    EXPECT_EQ(late, 9);
    EXPECT_EQ(unknown, 5);
}

TEST_F(ParameterListTest, TexturesAreTheFaceAskedForOrNull) {
    Plugin bare;
    FakeTexture other;
    FloatParameter half("texture", 0.5f);
    PluginParameter wrong("texture_float", &bare), right("texture_int", &other);
    cache({&half, &wrong, &right});
    EXPECT_EQ(textureFloat, nullptr);
    EXPECT_EQ(textureInt, &other);

    // Plain values stand for textures, whatever their type.
    IntParameter two("texture_float", 2);
    ColorParameter three("texture_int", Color(3));
    cache({&two, &three});
    PelkContext context;
    ASSERT_TRUE(texture && textureFloat && textureInt);
    EXPECT_EQ(texture->getTexColor(context), (AColor{Color(0.5f), 1}));
    EXPECT_EQ(textureFloat->getTexFloat(context), 2);
    EXPECT_EQ(textureInt->getTexInt(context), 3);
}

TEST_F(ParameterListTest, PluginListsFollowInLengthAndKeepTheirArray) {
    Plugin a, b;
    using Plugins = std::vector<PluginBase*>;
    PluginListParameter two("plugins", {&a, nullptr}), four("plugins", {&a, &a, &a, &a});
    PluginParameter single("plugins", &b);
    const auto bound = [&] { return Plugins(plugins.items, plugins.items + plugins.count); };
    cache({&two});
    EXPECT_EQ(bound(), (Plugins{&a, nullptr}));
    const DebugRecorder quiet;
    const TestHeap heap;
    heap.refuseAfter(0);
    plugins = {};  // as plug-ins do that have used up their list
    cache();
    EXPECT_EQ(bound(), (Plugins{&a, nullptr}));
    EXPECT_THROW(cache({&four}), ExceptionMsg);
    EXPECT_EQ(bound(), (Plugins{&a, nullptr}));
    cache({&single});
    EXPECT_EQ(bound(), Plugins{&b}) << "a single plug-in is a list of one";
}

}  // namespace
