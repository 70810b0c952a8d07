#include "pelk/contract/plugin_parameters.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "fake_host/print.h"

TEST(ValueParameterTest, AnswersInEveryTypeThatItsOwnCanBeTurnedInto) {
    const float inf = std::numeric_limits<float>::infinity();
    const auto expectAnswers = [](PelkPluginParameter&& parameter, int whole, float number,
                                  AColor color) {
        EXPECT_EQ(parameter.getCount(0), -1);
        EXPECT_EQ(parameter.getInt(0, 0), whole);
        EXPECT_EQ(parameter.getFloat(0, 0), number);
        EXPECT_EQ(parameter.getColor(0, 0), color);
    };
    expectAnswers(IntParameter("int", -7), -7, -7.0f, {Color(-7), 1});
    expectAnswers(FloatParameter("too great", 3e9f), INT_MAX, 3e9f, {Color(3e9f), 1});
    expectAnswers(FloatParameter("too small", -inf), INT_MIN, -inf, {Color(-inf), 1});
    expectAnswers(ColorParameter("color", {{0, 3, 6}, 0.5f}), 3, 3.0f, {{0, 3, 6}, 0.5f});
    expectAnswers(StringParameter("text", "5"), 0, 0.0f, {});
    expectAnswers(FloatKeyframes("no keyframes", {}), 0, 0.0f, {});
    EXPECT_EQ(FloatParameter("p", std::nanf("")).getInt(0, 0), 0);
}

TEST(ValueParameterTest, IndexThatIsNotThereGivesNothing) {
    FloatParameter single("p", 5);
    FloatListParameter numbers("p", {1.5f, 2.5f}), empty("p", {});
    StringListParameter texts("p", {"a", nullptr, "c"});
    PairListParameter pairs("p", {{7, nullptr}});
    EXPECT_EQ(empty.getCount(0), 0) << "an empty list is not a single value";
    EXPECT_EQ(texts.getString(1, 0), nullptr);
    EXPECT_EQ(pairs.getInt(0, 0), 0) << "while no item is open";
    for (const int outside : {-1, 3, INT_MAX}) {
        EXPECT_EQ(single.getFloat(outside, 0), 0.0f);
        EXPECT_EQ(numbers.getFloat(outside, 0), 0.0f);
        EXPECT_EQ(texts.getString(outside, 0), nullptr);
        EXPECT_EQ(pairs.openItem(outside), -1);
    }
}

TEST(ValueParameterTest, KeyframesBlendWhatCanBeBlendedAndStepElse) {
    // A jump at 4: two values at one time, of which the later holds.
    FloatKeyframes number("p", {{1, 10.0f}, {3, 20.0f}, {4, 30.0f}, {4, 50.0f}});
    ColorKeyframes color("p", {{1, {Color(0, 1, 2), 0}}, {3, {Color(4, 1, 0), 1}}});
    IntKeyframes whole("p", {{1, 10}, {3, 20}});
    const auto expectAt = [&](double time, float n, AColor c, int w) {
        SCOPED_TRACE(time);
        EXPECT_EQ(number.getFloat(0, time), n);
        EXPECT_EQ(color.getColor(0, time), c);
        EXPECT_EQ(whole.getInt(0, time), w);
    };
    expectAt(-1e300, 10.0f, {{0, 1, 2}, 0}, 10);
    expectAt(1.5, 12.5f, {{1, 1, 1.5f}, 0.25f}, 10);
    expectAt(4.0, 50.0f, {{4, 1, 0}, 1}, 20);
    expectAt(HUGE_VAL, 50.0f, {{4, 1, 0}, 1}, 20);
}
