#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <valarray>
#include <vector>

#include "fake_host/dice.h"
#include "fake_host/fake_host.h"

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// A control point as a test gives it.
struct RampPoint {
    float position;
    AColor value;
    int interpolation;
};

/// A colour and its alpha in double precision.
using Value = std::valarray<double>;

inline Value valueOf(const AColor& c) {
    return {c.color.r, c.color.g, c.color.b, c.alpha};
}

/// The value of a ramp in double precision, with other forms of the same curves: it is carried from
/// the lower point towards the upper one by the share that the curve has reached. The points are at
/// different positions.
inline Value rampAt(std::vector<RampPoint> points, double t) {
    if (points.empty())
        return Value(0.0, 4);
    t = std::min(t, 1.0);
    std::ranges::sort(points, {}, &RampPoint::position);
    const auto upper =
        std::ranges::find_if(points, [&](const auto& point) { return point.position >= t; });
    if (upper == points.begin() || points.size() == 1)
        return valueOf(points.front().value);
    const RampPoint& lower = upper[-1];
    if (upper == points.end())
        return valueOf(lower.value);
    const double f = (t - lower.position) / (upper->position - lower.position);
    const double shares[] = {0, f, f * f * (3 - 2 * f), 0.5 - std::cos(f * std::acos(-1)) / 2, 0};
    const Value low = valueOf(lower.value);
    return low + (valueOf(upper->value) - low) * shares[lower.interpolation];
}

/// Random ramps besides.
struct RampDice : Dice {
    /// From none to five points at different multiples of 1/32, of all kinds and an unknown one.
    std::vector<RampPoint> ramp() {
        std::vector<RampPoint> points(below(6));
        std::vector<int> places = {-3, 5, 11, 19, 26, 35};
        std::shuffle(places.begin(), places.end(), engine);
        for (std::size_t i = 0; i < points.size(); ++i)
            points[i] = {(places[i] + below(5) - 2) / 32.0f, {color(1), between(0, 1)}, below(5)};
        return points;
    }
};

/// The three parameters of a ramp: lists of as many items.
struct RampLists {
    std::vector<Textured<float>> positions;
    std::vector<Textured<AColor>> colors;
    std::vector<Textured<float>> values;  ///< the red of the colours, for ramps of numbers
    std::vector<int> interpolations;

    explicit RampLists(const std::vector<RampPoint>& points) {
        for (const RampPoint& point : points) {
            positions.push_back({point.position});
            colors.push_back({point.value});
            values.push_back({point.value.color.r});
            interpolations.push_back(point.interpolation);
        }
    }
};

/// The ramp material in a fake host, with its ramps given by their points.
class RampFixture : public FakeHost {
protected:
    void setRamp(const std::string& ramp, const std::vector<RampPoint>& points) {
        const RampLists lists(points);
        setParams(mtl, {{(ramp + "_positions").c_str(), lists.positions},
                        {(ramp + "_interpolations").c_str(), lists.interpolations}});
        if (ramp == "specularRollOff" || ramp == "reflectivity")
            setParam(mtl, {(ramp + "_values").c_str(), lists.values});
        else
            setParam(mtl, {(ramp + "_colors").c_str(), lists.colors});
    }
    /// The same value everywhere.
    void setRamp(const std::string& ramp, Color value) { setRamp(ramp, {{0, {value, 1}, 0}}); }

    PelkMaterial& mtl = make("MtlMayaRamp", "toon");
};
