#pragma once

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "fake_host/fake_host.h"

/// A control point as a test gives it.
struct RampPoint {
    float position;
    AColor value;
    int interpolation;
};

/// A ramp in double precision, with other forms of the same curves: the value is carried from the
/// lower point towards the upper one by the share that the curve has reached.
struct RampReference {
    std::vector<RampPoint> points;  ///< at different positions

    struct Value {
        double r = 0, g = 0, b = 0, a = 0;
    };

    explicit RampReference(std::vector<RampPoint> unordered = {}) : points(std::move(unordered)) {
        std::sort(points.begin(), points.end(),
                  [](const auto& a, const auto& b) { return a.position < b.position; });
    }

    static double shareAt(int interpolation, double f) {
        switch (interpolation) {
            case 1:
                return f;
            case 2:
                return f * f * (3.0 - 2.0 * f);
            case 3:
                return std::pow(std::sin(f * 1.5707963267948966), 2.0);
            default:
                return 0.0;
        }
    }

    Value at(double t) const {
        const auto value = [](const RampPoint& p) {
            return Value{p.value.color.r, p.value.color.g, p.value.color.b, p.value.alpha};
        };
        if (points.empty())
            return {};
        t = std::min(t, 1.0);
        const auto upper = std::find_if(points.begin(), points.end(),
                                        [&](const RampPoint& p) { return p.position >= t; });
        if (upper == points.begin() || points.size() == 1)
            return value(points.front());
        const Value lo = value(upper[-1]);
        if (upper == points.end())
            return lo;
        const double width = static_cast<double>(upper->position) - upper[-1].position;
        const double share = shareAt(upper[-1].interpolation, (t - upper[-1].position) / width);
        const Value hi = value(*upper);
        return {lo.r + (hi.r - lo.r) * share, lo.g + (hi.g - lo.g) * share,
                lo.b + (hi.b - lo.b) * share, lo.a + (hi.a - lo.a) * share};
    }
};

/// Random numbers of a test, the same in each run.
class Dice {
public:
    float between(float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(engine);
    }
    int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(engine); }
    Color color(float low, float high) {
        return {between(low, high), between(low, high), between(low, high)};
    }
    Vector direction() {
        for (;;) {
            const Vector v(between(-1, 1), between(-1, 1), between(-1, 1));
            if (const float len = length(v); len > 0.1f && len <= 1.0f)
                return v * (1.0f / len);
        }
    }
    /// From none to five points, no two of them near each other.
    std::vector<RampPoint> ramp() {
        std::vector<RampPoint> points(below(6));
        std::vector<float> places = {-0.1f, 0.15f, 0.35f, 0.6f, 0.8f, 1.1f};
        std::shuffle(places.begin(), places.end(), engine);
        for (std::size_t i = 0; i < points.size(); ++i)
            points[i] = {
                places[i] + between(-0.05f, 0.05f), {color(0, 1), between(0, 1)}, below(5)};
        return points;
    }

private:
    std::mt19937 engine{1};
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
