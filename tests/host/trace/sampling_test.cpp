#include "pelk/host/trace/sampling.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Tarnkit {
namespace {

TEST(SamplingTest, SeedsAndUsesAreIndependent) {
    // The same sample of different paths must not correlate: the mean product of the deviations of
    // n pairs stays within 5 standard errors, 1/12 / sqrt(n), of 0.
    constexpr int kCount = 20000;
    double seeds = 0, uses = 0;
    for (u32 i = 0; i < kCount; ++i) {
        const auto at = [](u32 seed, u32 sample, RandomUse use) {
            return random2(seed, sample, use).x - 0.5;
        };
        const double light = at(i, 3, RandomUse::Light);
        seeds += light * at(i + 1, 3, RandomUse::Light);
        uses += light * at(i, 3, RandomUse::Indirect);
    }
    const double bound = 5.0 / 12.0 * std::sqrt(static_cast<double>(kCount));
    EXPECT_LT(std::fabs(seeds), bound);
    EXPECT_LT(std::fabs(uses), bound);
}

}  // namespace
}  // namespace Tarnkit
