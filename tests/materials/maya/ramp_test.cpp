#include "pelk/materials/maya/ramp.h"

#include "materials/maya/ramp_fixture.h"

namespace {

PelkContext context;

/// Loads into a ramp, which holds what it was before.
template <class Ramp>
void load(Ramp& ramp, const RampLists& lists) {
    const Param held[] = {{"positions", lists.positions},
                          {"colors", lists.colors},
                          {"values", lists.values},
                          {"kinds", lists.interpolations}};
    PelkParameterList params(nullptr);
    for (const Param& param : held)
        params.setParam(param.parameter.get());
    constexpr bool isColor = std::is_same_v<Ramp, ColorRamp>;
    loadRamp(ramp, params, {"positions", isColor ? "colors" : "values", "kinds"}, 0.0);
}

TEST(RampTest, FollowsItsCurvesWhetherSortedOrTextured) {
    RampDice dice;
    for (int round = 0; round < 300; ++round) {
        callLog().clear();
        const std::vector<RampPoint> points = dice.ramp();
        RampLists lists(points);
        ColorRamp sorted, textured;
        FloatRamp numbers;
        load(sorted, lists);
        FakeTexture position;
        if (!points.empty()) {
            const int at = dice.below(static_cast<int>(points.size()));
            position.number = points[at].position;
            lists.positions[at] = {kNaN, &position};  // the number is not to be read
        }
        load(textured, lists);
        load(numbers, lists);
        load(numbers, RampLists(points));  // searched in the slow way from now on
        for (float t = -0.5f; t < 1.5f; t += 0.03125f) {
            const AColor value = evalColorRamp(sorted, context, t);
            ASSERT_EQ(evalColorRamp(textured, context, t), value) << t;
            ASSERT_EQ(evalFloatRamp(numbers, context, t), value.color.r) << t;
            ASSERT_LE(std::abs(valueOf(value) - rampAt(points, t)).max(), 2e-6) << t;
        }
    }
}

TEST(RampTest, OrdersPointsAtOnePlaceAndReadsNoTextureBeyondAStep) {
    RampLists lists({{0, {Color(1), 1}, kRampLinear},
                     {0.5f, {Color(2), 1}, kRampLinear},
                     {0.5f, {Color(9), 1}, kRampStep},
                     {1, {}, kRampLinear}});
    FakeTexture unread;
    unread.throwsForMemory = true;
    lists.values[3].texture = &unread;
    FloatRamp ramp;
    load(ramp, lists);
    EXPECT_EQ(evalFloatRamp(ramp, context, 0.5f), 2) << "the first ends the segment";
    EXPECT_EQ(evalFloatRamp(ramp, context, 0.75f), 9) << "the second begins the next";
}

TEST(RampTest, TakesTheShortestListAndPlainValuesForOtherObjects) {
    RampLists lists({{0.9f, {Color(1), 0.5f}, 1}, {0.1f, {Color(2), 0.25f}, 1}});
    lists.positions.push_back({0.5f});
    lists.interpolations.resize(5);
    Plugin noTexture;
    lists.positions[0].texture = lists.colors[0].texture = &noTexture;
    ColorRamp ramp;
    load(ramp, lists);
    ASSERT_EQ(ramp.entries.size(), 2);
    ASSERT_FALSE(ramp.hasTexturedPositions);
    EXPECT_EQ(evalColorRamp(ramp, context, 1), (AColor{Color(1), 0.5f}));
    loadRamp(ramp, PelkParameterList(nullptr), {"positions", "colors", "kinds"}, 0.0);
    EXPECT_TRUE(ramp.entries.isEmpty()) << "a list is missing: the ramp that was there is gone";
}

TEST(RampTest, AnswersOneOfItsValuesWhateverItsPositionsAre) {
    const float odd[] = {kNaN, HUGE_VALF, -HUGE_VALF, 1e18f, -1e18f, 0.0f, 3.4e38f};
    FakeTexture places[2];
    RampLists lists({{0, {Color(1), 1}, 1}, {0, {Color(2), 1}, 2}, {0.5f, {Color(3), 1}, 3}});
    lists.positions[0].texture = &places[0];
    lists.positions[1].texture = &places[1];
    FloatRamp ramp;
    load(ramp, lists);
    for (const float first : odd)
        for (const float second : odd)
            for (const float t : {-HUGE_VALF, 0.0f, 0.5f, 1.0f, kNaN}) {
                places[0].number = first;
                places[1].number = second;
                const float value = evalFloatRamp(ramp, context, t);
                EXPECT_TRUE(value >= 1 && value <= 3)
                    << value << " of " << first << ", " << second << " at " << t;
            }
}

}  // namespace
