// Ramps of any control points: values stay between those of the points, textured or not.

#include "fuzz/fuzz_input.h"
#include "materials/maya/ramp_fixture.h"
#include "pelk/materials/maya/ramp.h"

namespace {

/// A ramp of numbers, read from parameters as frames read it.
FloatRamp loaded(const RampLists& lists) {
    const Param held[] = {
        {"positions", lists.positions}, {"values", lists.values}, {"kinds", lists.interpolations}};
    PelkParameterList params(nullptr);
    for (const Param& param : held)
        params.setParam(param.parameter.get());
    FloatRamp ramp;
    loadRamp(ramp, params, {"positions", "values", "kinds"}, 0.0);
    return ramp;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const float at = input.number<float>();
    const int textured = input.between(-1, 8);
    std::vector<RampPoint> points;
    float low = 0.0f, high = 0.0f;
    while (input.left() >= 9 && points.size() < 200) {
        const float position = input.number<float>(), value = input.number<float>();
        // Differences of positions are to stay finite. What textures answer may be no number.
        const bool isNumber =
            std::abs(position) < 1e18f || (std::isnan(position) && textured == std::ssize(points));
        const bool plain = std::isfinite(value) && std::abs(value) < 1e6f;
        points.push_back(
            {isNumber ? position : 0.25f, {Color(plain ? value : 0.5f), 1}, input.between(-1, 5)});
        const float counted = points.back().value.color.r;
        low = points.size() == 1 ? counted : std::min(low, counted);
        high = points.size() == 1 ? counted : std::max(high, counted);
    }
    RampLists lists(points);
    FakeTexture position;
    if (textured >= 0 && textured < static_cast<int>(points.size())) {
        position.number = points[static_cast<std::size_t>(textured)].position;
        lists.positions[static_cast<std::size_t>(textured)].texture = &position;
    }
    const FloatRamp ramp = loaded(lists);
    PelkContext context;
    const float slack = 1e-5f * (1 + std::abs(low) + std::abs(high));
    for (const float t : {at, 0.0f, 0.5f, 1.0f}) {
        const float value = evalFloatRamp(ramp, context, t);
        require(
            !std::isfinite(t) || points.empty() || (value >= low - slack && value <= high + slack),
            "a ramp stays between its points");
    }
    callLog().clear();
    return 0;
}
