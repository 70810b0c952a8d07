#include "support/refraction.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Tarnkit {
namespace {

TEST(Refraction, BendsByTheIndexBothWaysAndCarriesDerivatives) {
    const Vector up{0, 0, 1};
    const struct {
        const char* what;
        float fromSine, sign, n, toSine;
        bool total;
    } cases[] = {{"into glass", 0.6f, -1, 1.5f, 0.4f, false},
                 {"out of glass", 0.4f, 1, 1.5f, 0.6f, false},
                 {"along the surface", 0.9999999f, -1, 1.5f, 0.6666667f, false},
                 {"totally reflected", 0.8f, 1, 1.5f, 0.8f, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const auto along = [&](float sine) {
            return Vector{sine, 0, c.sign * std::sqrt(1 - sine * sine)};
        };
        constexpr float kStep = 1e-3f;
        const Vector d = along(c.fromSine);
        const Vector step = (along(c.fromSine - kStep) - d) * (1 / kStep);
        const Refraction out = refract(d, up, c.n, step, {0, 1, 0});
        EXPECT_EQ(out.total, c.total);
        EXPECT_NEAR(out.direction.x, c.toSine, 1e-5f);
        EXPECT_NEAR(length(out.direction), 1.0f, 1e-5f);
        EXPECT_GT(out.direction.z * c.sign * (c.total ? -1 : 1), 0.0f);
        if (c.fromSine > 0.99f)
            continue;  // there the direction has no derivative
        const Vector next = refract(along(c.fromSine - kStep), up, c.n, {}, {}).direction;
        EXPECT_NEAR(out.derivX.x, (next.x - out.direction.x) / kStep, 5e-3f);
        EXPECT_NEAR(out.derivX.z, (next.z - out.direction.z) / kStep, 5e-3f);
        EXPECT_NEAR(out.derivY.y, c.total ? 1.0f : c.sign < 0 ? 1 / c.n : c.n, 1e-5f);
    }
}

}  // namespace
}  // namespace Tarnkit
