#include "pelk/host/picture/coverage.h"

#include <gtest/gtest.h>

#include <random>

namespace Tarnkit {
namespace {

// Beside it stands a plain table of owners by pixel.
TEST(CoverageTest, OwnersAndGapsAreThoseOfATableOfPixels) {
    std::mt19937 random(7);
    constexpr int kWidth = 9, kHeight = 7;
    const auto below = [&](int end) {
        return static_cast<int>(random() % static_cast<unsigned>(end));
    };
    const auto rectangle = [&] {
        const int x = below(kWidth), y = below(kHeight);
        return PictureRect{x, y, x + 1 + below(kWidth - x), y + 1 + below(kHeight - y)};
    };
    for (int round = 0; round < 2000; ++round) {
        Coverage coverage(kWidth, kHeight);
        std::vector<int> owners(kWidth * kHeight, Coverage::kNobody);
        const auto at = [&](int x, int y) -> int& { return owners[y * kWidth + x]; };
        PictureRect bounds{kWidth, kHeight, 0, 0};
        for (int owner = below(6); owner > 0; --owner) {
            const PictureRect r = rectangle();
            int visited = 0;
            coverage.add(r, owner, [&](int y, int x0, int x1, int former) {
                for (int x = x0; x < x1; ++x, ++visited) {
                    ASSERT_EQ(at(x, y), former);
                    at(x, y) = former == Coverage::kNobody ? owner : former;
                }
            });
            ASSERT_EQ(visited, (r.x1 - r.x0) * (r.y1 - r.y0));
            bounds = {std::min(bounds.x0, r.x0), std::min(bounds.y0, r.y0),
                      std::max(bounds.x1, r.x1), std::max(bounds.y1, r.y1)};
        }
        ASSERT_EQ(coverage.bounds(), bounds.isEmpty() ? PictureRect{} : bounds);
        const PictureRect within = rectangle();
        for (const PictureRect& gap : coverage.gaps(within)) {
            for (int y = gap.y0; y < gap.y1; ++y) {
                for (int x = gap.x0; x < gap.x1; ++x) {
                    ASSERT_EQ(at(x, y), Coverage::kNobody) << "or a pixel in two gaps";
                    at(x, y) = 0;
                }
            }
        }
        for (int y = within.y0; y < within.y1; ++y) {
            for (int x = within.x0; x < within.x1; ++x)
                ASSERT_NE(at(x, y), Coverage::kNobody) << "a gap too few";
        }
    }
    Coverage bands(4, 9);
    bands.add({0, 3, 4, 6}, 0, [](int, int, int, int) {});
    EXPECT_EQ(bands.gaps({0, 0, 4, 9}).size(), 2u) << "a rectangle for each band, not each row";
}

}  // namespace
}  // namespace Tarnkit
