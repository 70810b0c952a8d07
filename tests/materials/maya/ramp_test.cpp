#include "pelk/materials/maya/ramp.h"

#include <limits>

#include "materials/maya/ramp_fixture.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// A texture that counts how often it is read.
class CountingTexture : public FakeTexture {
public:
    explicit CountingTexture(float value) { number = value; }
    float getTexFloat(PelkContext& context) override {
        ++reads;
        return FakeTexture::getTexFloat(context);
    }
    AColor getTexColor(PelkContext& context) override {
        ++reads;
        return FakeTexture::getTexColor(context);
    }

    int reads = 0;
};

class RampTest : public testing::Test {
protected:
    void load(const RampLists& lists) {
        held = {{"p", lists.positions},
                {"c", lists.colors},
                {"v", lists.values},
                {"i", lists.interpolations}};
        PelkParameterList params(nullptr);
        for (const Param& param : held)
            params.setParam(param.parameter.get());
        loadRamp(ramp, params, {"p", "c", "i"}, 0.0);
        loadRamp(numbers, params, {"p", "v", "i"}, 0.0);
    }
    float at(float t) { return evalFloatRamp(numbers, context, t); }

    ColorRamp ramp;
    FloatRamp numbers;
    PelkContext context;
    std::vector<Param> held;
};

TEST_F(RampTest, FollowsItsCurvesWhetherSortedOrTextured) {
    callLog().quiet = true;
    Dice dice;
    for (int round = 0; round < 300; ++round) {
        const std::vector<RampPoint> points = dice.ramp();
        const RampReference reference(points);
        RampLists lists(points);
        ramp = {};
        numbers = {};
        load(lists);
        ASSERT_FALSE(ramp.hasTexturedPositions);
        ColorRamp sorted;
        std::swap(sorted, ramp);
        FakeTexture position;
        if (!points.empty()) {
            const int textured = dice.below(static_cast<int>(points.size()));
            position.number = points[textured].position;
            lists.positions[textured] = {kNaN, &position};  // the number is not to be read
        }
        load(lists);
        ASSERT_EQ(ramp.hasTexturedPositions, !points.empty());
        for (float t = -0.5f; t < 1.5f; t += 0.03125f) {
            const AColor value = evalColorRamp(sorted, context, t);
            ASSERT_EQ(evalColorRamp(ramp, context, t), value) << t;
            ASSERT_EQ(evalFloatRamp(numbers, context, t), value.color.r) << t;
            const RampReference::Value expected = reference.at(t);
            ASSERT_NEAR(value.color.r, expected.r, 2e-6) << t;
            ASSERT_NEAR(value.color.g, expected.g, 2e-6) << t;
            ASSERT_NEAR(value.color.b, expected.b, 2e-6) << t;
            ASSERT_NEAR(value.alpha, expected.a, 2e-6) << t;
        }
    }
    callLog().quiet = false;
}

TEST_F(RampTest, HoldsItsEndsAndItsSteps) {
    const auto grey = [](float position, float value, int interpolation) {
        return RampPoint{position, {Color(value), 1.0f}, interpolation};
    };
    const struct {
        const char* what;
        std::vector<RampPoint> points;
        float t, expected;
    } cases[] = {
        {"no point", {}, 0.5f, 0},
        {"one point answers below it", {grey(0.9f, 3, 1)}, 0.0f, 3},
        {"one point answers at the end", {grey(0.9f, 3, 1)}, 1.0f, 3},
        {"at the first point", {grey(0.2f, 1, 1), grey(0.8f, 5, 1)}, 0.2f, 1},
        {"before the first point", {grey(0.2f, 1, 1), grey(0.8f, 5, 1)}, -3.0f, 1},
        {"behind the last point", {grey(0.2f, 1, 0), grey(0.8f, 5, 0)}, 0.9f, 5},
        {"at the last point a curve has arrived", {grey(0.2f, 1, 2), grey(0.8f, 5, 0)}, 0.8f, 5},
        {"at the last point a step has not", {grey(0.2f, 1, 0), grey(0.8f, 5, 0)}, 0.8f, 1},
        {"an unknown kind is a step", {grey(0, 1, 4), grey(1, 5, 1)}, 0.9f, 1},
        {"above 1 counts as 1", {grey(0, 1, 1), grey(2, 5, 1)}, 7.0f, 3},
        {"the second segment is a step", {grey(0, 1, 1), grey(0.5f, 2, 0), grey(1, 5, 2)}, 1, 2},
        {"of two points at one place the first ends the segment",
         {grey(0, 1, 1), grey(0.5f, 2, 1), grey(0.5f, 9, 1), grey(1, 3, 1)},
         0.5f,
         2},
        {"and the second begins the next",
         {grey(0, 1, 1), grey(0.5f, 2, 1), grey(0.5f, 9, 0), grey(1, 3, 1)},
         0.75f,
         9},
        {"a NaN lies behind all points", {grey(0, 1, 1), grey(1, 5, 1)}, kNaN, 5},
    };
    for (const auto& c : cases) {
        load(RampLists(c.points));
        EXPECT_EQ(at(c.t), c.expected) << c.what;
    }
}

TEST_F(RampTest, TakesTheShortestListAndPlainValuesForOtherObjects) {
    RampLists lists({{0.9f, {Color(1), 0.5f}, 1}, {0.1f, {Color(2), 0.25f}, 1}});
    lists.positions.push_back({0.5f});
    lists.interpolations.resize(5);
    Plugin noTexture;
    lists.positions[0].texture = lists.colors[0].texture = lists.values[0].texture = &noTexture;
    load(lists);
    ASSERT_EQ(ramp.entries.size(), 2);
    ASSERT_FALSE(ramp.hasTexturedPositions);
    EXPECT_EQ(evalColorRamp(ramp, context, 0), (AColor{Color(2), 0.25f})) << "sorted";
    EXPECT_EQ(evalColorRamp(ramp, context, 1), (AColor{Color(1), 0.5f}));

    // A single value is no list, and a list may be missing: the ramp that was there is gone.
    const PelkParameterList none(nullptr);
    loadRamp(ramp, none, {"p", "c", "i"}, 0.0);
    EXPECT_TRUE(ramp.entries.isEmpty());
    PelkParameterList single(nullptr);
    FloatParameter position("p", 0.5f), value("v", 2.0f);
    IntParameter interpolation("i", 1);
    for (PelkPluginParameter* parameter :
         std::initializer_list<PelkPluginParameter*>{&position, &value, &interpolation})
        single.setParam(parameter);
    loadRamp(numbers, single, {"p", "v", "i"}, 0.0);
    EXPECT_TRUE(numbers.entries.isEmpty());
}

TEST_F(RampTest, ReadsNoTextureThatItDoesNotNeed) {
    CountingTexture low(1), high(2), place(0.5f);
    RampLists lists({{0, {}, kRampStep}, {0.5f, {}, kRampLinear}, {1, {}, kRampStep}});
    lists.values[0].texture = &low;
    lists.values[1].texture = &high;
    load(lists);
    EXPECT_EQ(at(0.25f), 1);
    EXPECT_EQ(high.reads, 0) << "the upper end of a step";
    EXPECT_EQ(at(0.75f), 1);
    EXPECT_EQ(low.reads, 1) << "no end of the segment";
    EXPECT_EQ(high.reads, 1);

    lists.positions[1].texture = &place;
    load(lists);
    place.reads = 0;
    EXPECT_EQ(at(0.75f), 1);
    EXPECT_EQ(place.reads, 2) << "to find the upper point, and the lower one";
    EXPECT_EQ(at(-1), 1);
    EXPECT_EQ(place.reads, 3) << "below all points there is no segment";
    EXPECT_EQ(at(0.4f), 1);
    EXPECT_EQ(place.reads, 4) << "the upper point is not read again";
}

TEST_F(RampTest, StaysInTheTexturedWayOnceItTookIt) {
    FakeTexture place;
    RampLists lists({{0.9f, {Color(5), 1}, 1}, {0.1f, {Color(1), 1}, 1}});
    lists.positions[0].texture = &place;
    load(lists);
    lists.positions[0].texture = nullptr;
    load(lists);
    EXPECT_TRUE(numbers.hasTexturedPositions);
    EXPECT_EQ(numbers.entries[0].position, 0.9f) << "not sorted";
    EXPECT_EQ(at(0.0f), 1);
    EXPECT_EQ(at(1.0f), 5);
    EXPECT_NEAR(at(0.5f), 3, 1e-6);
}

TEST_F(RampTest, AnswersOneOfItsValuesWhateverItsPositionsAre) {
    const float odd[] = {
        kNaN, kInfinity, -kInfinity, 1e18f, -1e18f, 0.0f, std::numeric_limits<float>::max()};
    for (const float first : odd)
        for (const float second : odd)
            for (const float t : {-kInfinity, 0.0f, 0.5f, 1.0f, kNaN}) {
                FakeTexture places[2];
                places[0].number = first;
                places[1].number = second;
                RampLists lists(
                    {{0, {Color(1), 1}, 1}, {0, {Color(2), 1}, 2}, {0.5f, {Color(3), 1}, 3}});
                lists.positions[0].texture = &places[0];
                lists.positions[1].texture = &places[1];
                load(lists);
                const float value = at(t);
                EXPECT_TRUE(value >= 1 && value <= 3)
                    << value << " of " << first << ", " << second << " at " << t;
            }
}

}  // namespace
