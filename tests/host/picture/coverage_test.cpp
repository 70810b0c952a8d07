#include "pelk/host/picture/coverage.h"

#include <gtest/gtest.h>

#include <random>

namespace Tarnkit {
namespace {

// Beside it stands a plain table of owners by pixel.
TEST(CoverageTest, OwnersAndGapsAreThoseOfATableOfPixels) {
    std::mt19937 random(7);
    constexpr int kWidth = 9, kHeight = 7;
    const auto range = [&](int end) {
        const int first = static_cast<int>(random() % end);
        return std::pair(first, first + 1 + static_cast<int>(random() % (end - first)));
    };
    const auto rectangle = [&] {
        const auto [x0, x1] = range(kWidth);
        const auto [y0, y1] = range(kHeight);
        return PictureRect{x0, y0, x1, y1};
    };
    for (int round = 0; round < 2000; ++round) {
        Coverage coverage(kWidth, kHeight);
        int owners[kHeight][kWidth];
        std::fill_n(owners[0], kWidth * kHeight, Coverage::kNobody);
        const auto countIn = [&](const PictureRect& r, int owner) {
            int count = 0;
            for (int y = r.y0; y < r.y1; ++y)
                count += std::count(owners[y] + r.x0, owners[y] + r.x1, owner);
            return count;
        };
        for (int owner = static_cast<int>(random() % 6); owner > 0; --owner) {
            int visited = 0;
            const PictureRect added = rectangle();
            coverage.add(added, owner, [&](int y, int x0, int x1, int former) {
                ASSERT_EQ(countIn({x0, y, x1, y + 1}, former), x1 - x0);
                if (former == Coverage::kNobody)
                    std::fill(owners[y] + x0, owners[y] + x1, owner);
                visited += x1 - x0;
            });
            ASSERT_EQ(visited, (added.x1 - added.x0) * (added.y1 - added.y0));
        }
        const PictureRect within = rectangle();
        int missing = countIn(within, Coverage::kNobody);
        for (const PictureRect& gap : coverage.gaps(within)) {
            const int pixels = (gap.x1 - gap.x0) * (gap.y1 - gap.y0);
            ASSERT_EQ(countIn(gap, Coverage::kNobody), pixels);
            missing -= pixels;
        }
        ASSERT_EQ(missing, 0);
    }
}

}  // namespace
}  // namespace Tarnkit
