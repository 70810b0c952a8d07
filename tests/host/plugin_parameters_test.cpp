#include "host/plugin_parameters.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <memory>

#include "fake_host/heap_probe.h"
#include "fake_host/print.h"
#include "frame/context.h"
#include "frame/exception_msg.h"
#include "frame/plugin.h"

namespace {

TEST(ValueParameterTest, AnswersInEveryTypeThatItsOwnCanBeTurnedInto) {
    const float inf = std::numeric_limits<float>::infinity();
    const AColor grey{Color(-2.75f), 1.0f}, color{{0, 3, 6}, 0.5f};
    const struct {
        const char* what;
        std::unique_ptr<PelkPluginParameter> parameter;
        int whole;
        float number;
        AColor color;
    } cases[] = {
        {"int", std::make_unique<IntParameter>("p", -7), -7, -7.0f, {Color(-7), 1}},
        {"float, cut towards 0", std::make_unique<FloatParameter>("p", -2.75f), -2, -2.75f, grey},
        {"too great", std::make_unique<FloatParameter>("p", 3e9f), INT_MAX, 3e9f, {Color(3e9f), 1}},
        {"too small", std::make_unique<FloatParameter>("p", -inf), INT_MIN, -inf, {Color(-inf), 1}},
        {"color", std::make_unique<ColorParameter>("p", color), 3, 3.0f, color},
        {"text", std::make_unique<StringParameter>("p", "5"), 0, 0.0f, {}},
        {"no keyframes",
         std::make_unique<FloatKeyframes>("p", std::vector<Keyframe<float>>()),
         0,
         0.0f,
         {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.parameter->getCount(0), -1);
        EXPECT_EQ(c.parameter->getInt(0, 0), c.whole);
        EXPECT_EQ(c.parameter->getFloat(0, 0), c.number);
        EXPECT_EQ(c.parameter->getColor(0, 0), c.color);
        EXPECT_EQ(c.parameter->openItem(0), -1);
    }
    EXPECT_EQ(FloatParameter("p", std::nanf("")).getInt(0, 0), 0);
}

TEST(ValueParameterTest, IndexThatIsNotThereGivesNothing) {
    Plugin plugin;
    FloatParameter single("p", 5);
    FloatListParameter numbers("p", {1.5f, 2.5f});
    StringListParameter texts("p", {"a", nullptr, "c"});
    PluginListParameter plugins("p", {&plugin, nullptr});
    FloatListParameter empty("p", {});
    TexturedFloatListParameter positions("p", {{0.5f, nullptr}, {0.75f, &plugin}});
    EXPECT_EQ(numbers.getCount(0), 2);
    EXPECT_EQ(empty.getCount(0), 0) << "an empty list is not a single value";
    EXPECT_EQ(numbers.getFloat(1, 0), 2.5f);
    EXPECT_STREQ(texts.getString(2, 0), "c");
    EXPECT_EQ(texts.getString(1, 0), nullptr);
    EXPECT_EQ(plugins.getObject(0, 0), &plugin);
    EXPECT_EQ(positions.getFloat(1, 0), 0.75f);
    EXPECT_EQ(positions.getObject(0, 0), nullptr);
    EXPECT_EQ(positions.getObject(1, 0), &plugin);
    for (int outside : {-1, 3, INT_MIN, INT_MAX}) {
        EXPECT_EQ(single.getFloat(outside, 0), 0.0f);
        EXPECT_EQ(single.getObject(outside, 0), nullptr);
        EXPECT_EQ(numbers.getFloat(outside, 0), 0.0f);
        EXPECT_EQ(numbers.getColor(outside, 0), AColor());
        EXPECT_EQ(texts.getString(outside, 0), nullptr);
        EXPECT_EQ(plugins.getObject(outside, 0), nullptr);
        EXPECT_EQ(positions.getObject(outside, 0), nullptr);
    }
    EXPECT_EQ(empty.getFloat(0, 0), 0.0f);
}

TEST(PairListParameterTest, ValuesAreThereWhileAnItemIsOpen) {
    Plugin plugin;
    PairListParameter pairs("p", {{7, nullptr}, {-2, &plugin}});
    EXPECT_EQ(pairs.openItem(2), -1);
    const int token = pairs.openItem(1);
    EXPECT_EQ(pairs.openItem(0), -1) << "no list of lists of lists";
    EXPECT_EQ(pairs.getInt(0, 0), -2);
    EXPECT_EQ(pairs.getObject(1, 0), &plugin);
    EXPECT_TRUE(!pairs.getInt(1, 0) && !pairs.getObject(0, 0));
    pairs.closeItem(token);
    EXPECT_EQ(pairs.getCount(0), 2);
    EXPECT_TRUE(!pairs.getInt(0, 0) && !pairs.getObject(1, 0));
}

TEST(ValueParameterTest, KeyframesBlendWhatCanBeBlendedAndStepElse) {
    Plugin a, b;
    // A jump at 4: two values at one time, of which the later holds.
    FloatKeyframes number("p", {{1, 10.0f}, {3, 20.0f}, {4, 30.0f}, {4, 50.0f}});
    ColorKeyframes color("p", {{1, {Color(0, 1, 2), 0}}, {3, {Color(4, 1, 0), 1}}});
    IntKeyframes whole("p", {{1, 10}, {3, 20}});
    PluginKeyframes plugin("p", {{1, &a}, {3, &b}});
    const struct {
        double time;
        float number;
        AColor color;
        int whole;
        PluginBase* plugin;
    } cases[] = {
        {-1e300, 10.0f, {{0, 1, 2}, 0}, 10, &a},     {1.0, 10.0f, {{0, 1, 2}, 0}, 10, &a},
        {1.5, 12.5f, {{1, 1, 1.5f}, 0.25f}, 10, &a}, {3.0, 20.0f, {{4, 1, 0}, 1}, 20, &b},
        {3.5, 25.0f, {{4, 1, 0}, 1}, 20, &b},        {4.0, 50.0f, {{4, 1, 0}, 1}, 20, &b},
        {HUGE_VAL, 50.0f, {{4, 1, 0}, 1}, 20, &b},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.time);
        EXPECT_EQ(number.getFloat(0, c.time), c.number);
        EXPECT_EQ(color.getColor(0, c.time), c.color);
        EXPECT_EQ(whole.getInt(0, c.time), c.whole);
        EXPECT_EQ(plugin.getObject(0, c.time), c.plugin);
        const PelkIntList integers = whole.getIntList(c.time);
        ASSERT_EQ(integers.count, 1);
        EXPECT_EQ(integers.items[0], c.whole);
    }
    EXPECT_EQ(number.getCount(0), -1);
    // As a texture it follows the time of the ray.
    PelkContext context;
    context.time = 1.5;
    auto* texture = findInterface<TextureFloatInterface>(number.getObject(0, 0), EXT_TEXTURE_FLOAT);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->getTexFloat(context), 12.5f);
}

TEST(ValueParameterTest, OnlyASingleNumberOrColorStandsForATexture) {
    IntParameter plain("p", 1);
    FloatListParameter list("p", {1.0f});
    StringParameter text("p", "1");
    for (u64 id : {EXT_TEXTURE, EXT_TEXTURE_FLOAT, EXT_TEXTURE_INT}) {
        PluginInterface* face = plain.getInterface(id);
        ASSERT_TRUE(face);
        EXPECT_EQ(face->getInterfaceID(), id);
        EXPECT_TRUE(!list.getInterface(id) && !text.getInterface(id));
    }
    EXPECT_EQ(plain.getInterface(EXT_MATERIAL), nullptr);
    EXPECT_EQ(plain.getObject(0, 0), &plain);
    EXPECT_TRUE(!list.getObject(0, 0) && !text.getObject(0, 0));
}

TEST(ValueParameterTest, RefusedMemoryIsReportedAndLeaksNothing) {
    HeapProbe heap;
    // Name, array and the first text are granted.
    heap.refuseAfter(3);
    EXPECT_THROW(StringListParameter("p", {"a", "b"}), ExceptionMsg);
}

}  // namespace
