#include "pelk/shading_math/differential.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "slow_vector.h"

using namespace Tarnkit;

namespace {

/// A formula of random operations, the same for the same state of `random`.
template <class Number, class Constant, class Vec>
Number formula(std::mt19937 random, Vec v) {
    using std::sqrt;
    std::uniform_real_distribution<float> even(-1.0f, 1.0f);
    const Vec start = v;
    Number s{0.5f};
    for (int step = 0; step < 9; ++step) {
        const Constant c{even(random), even(random), even(random)};
        switch (random() % 6) {
            case 0:
                s = s * dot(v, c) - s;
                break;
            case 1:
                s = sqrt(s * s + Number{0.7f}) + dot(v, c);
                break;
            case 2:
                s = (-s * 0.8f - length(v)) / 1.7f;
                break;
            case 3:
                v = normalize(v + start) / (s * s + Number{1.0f});
                break;
            case 4:
                v = cross(c, v) + v - cross(s * v, c);
                break;
            default:
                v = 0.3f * v - s * c + start * s;
        }
    }
    return s + dot(v, Constant{0.3f, -0.5f, 0.7f});
}

TEST(Differential, FormulasCarryTheirNumericDerivatives) {
    std::uniform_real_distribution<float> even(-1.0f, 1.0f);
    constexpr double kStep = 1e-5;
    for (unsigned seed = 0; seed < 3000; ++seed) {
        std::mt19937 random(seed);
        const auto vector = [&] { return Vector{even(random), even(random), even(random)}; };
        const DiffVector in{vector() + Vector{0, 0, 2}, vector(), vector()};
        const auto at = [&](double x, double y) {
            return formula<double, Slow, Slow>(random,
                                               slow(in.value) + x * slow(in.dx) + y * slow(in.dy));
        };
        const DiffFloat out = formula<DiffFloat, Vector, DiffVector>(random, in);
        const double dx = (at(kStep, 0) - at(-kStep, 0)) / (2 * kStep);
        const double dy = (at(0, kStep) - at(0, -kStep)) / (2 * kStep);
        const double tolerance = 1e-4 * (1 + std::fabs(at(0, 0)) + std::fabs(dx) + std::fabs(dy));
        SCOPED_TRACE(seed);
        EXPECT_NEAR(out.value, at(0, 0), tolerance);
        EXPECT_NEAR(out.dx, dx, tolerance);
        EXPECT_NEAR(out.dy, dy, tolerance);
    }
}

}  // namespace
