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
    const auto expectAnswers = [](PelkPluginParameter&& parameter, int whole, float number,
                                  AColor color) {
        EXPECT_EQ(parameter.getCount(0), -1);
        EXPECT_EQ(parameter.getInt(0, 0), whole);
        EXPECT_EQ(parameter.getFloat(0, 0), number);
        EXPECT_EQ(parameter.getColor(0, 0), color);
        EXPECT_EQ(parameter.openItem(0), -1);
    };
    expectAnswers(IntParameter("int", -7), -7, -7.0f, {Color(-7), 1});
    expectAnswers(FloatParameter("cut to 0", -2.75f), -2, -2.75f, {Color(-2.75f), 1});
    expectAnswers(FloatParameter("too great", 3e9f), INT_MAX, 3e9f, {Color(3e9f), 1});
    expectAnswers(FloatParameter("too small", -inf), INT_MIN, -inf, {Color(-inf), 1});
    expectAnswers(ColorParameter("color", {{0, 3, 6}, 0.5f}), 3, 3.0f, {{0, 3, 6}, 0.5f});
    expectAnswers(StringParameter("text", "5"), 0, 0.0f, {});
    expectAnswers(FloatKeyframes("no keyframes", {}), 0, 0.0f, {});
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
        EXPECT_EQ(numbers.getFloat(outside, 0), 0.0f);
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
    const auto expectAt = [&](double time, float n, AColor c, int w, PluginBase* p) {
        SCOPED_TRACE(time);
        EXPECT_EQ(number.getFloat(0, time), n);
        EXPECT_EQ(color.getColor(0, time), c);
        EXPECT_EQ(whole.getInt(0, time), w);
        EXPECT_EQ(plugin.getObject(0, time), p);
        const PelkIntList integers = whole.getIntList(time);
        ASSERT_EQ(integers.count, 1);
        EXPECT_EQ(integers.items[0], w);
    };
    expectAt(-1e300, 10.0f, {{0, 1, 2}, 0}, 10, &a);
    expectAt(1.0, 10.0f, {{0, 1, 2}, 0}, 10, &a);
    expectAt(1.5, 12.5f, {{1, 1, 1.5f}, 0.25f}, 10, &a);
    expectAt(3.0, 20.0f, {{4, 1, 0}, 1}, 20, &b);
    expectAt(3.5, 25.0f, {{4, 1, 0}, 1}, 20, &b);
    expectAt(4.0, 50.0f, {{4, 1, 0}, 1}, 20, &b);
    expectAt(HUGE_VAL, 50.0f, {{4, 1, 0}, 1}, 20, &b);
    EXPECT_EQ(number.getCount(0), -1);
    // As a texture it follows the time of the ray.
    PelkContext context;
    context.time = 1.5;
    auto* texture = findInterface<TextureFloatInterface>(number.getObject(0, 0), EXT_TEXTURE_FLOAT);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->getTexFloat(context), 12.5f);
}

TEST(ValueParameterTest, RefusedMemoryIsReportedAndLeaksNothing) {
    HeapProbe heap;
    // Name, array and the first text are granted.
    heap.refuseAfter(3);
    EXPECT_THROW(StringListParameter("p", {"a", "b"}), ExceptionMsg);
}

}  // namespace
