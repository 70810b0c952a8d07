#include "pelk/host/picture/coverage.h"

#include <algorithm>
#include <iterator>

namespace Tarnkit {

Coverage::Coverage(int width_, int height)
    : width(width_), rows(static_cast<std::size_t>(height)) {}

void Coverage::add(const PictureRect& rect, int owner, const Visit& visit) {
    for (int y = rect.y0; y < rect.y1; ++y) {
        Row& row = rows[static_cast<std::size_t>(y)];
        const auto endsBefore = [](const Span& span, int x) { return span.x1 <= x; };
        auto next = std::lower_bound(row.begin(), row.end(), rect.x0, endsBefore);
        for (int x = rect.x0; x < rect.x1;) {
            const bool owned = next != row.end() && next->x0 <= x;
            const int end = owned               ? std::min(next->x1, rect.x1)
                            : next == row.end() ? rect.x1
                                                : std::min(next->x0, rect.x1);
            visit(y, x, end, owned ? next->owner : kNobody);
            if (!owned)
                next = row.insert(next, {x, end, owner});
            ++next;
            x = end;
        }
    }
}

/// The pixels of a row that nobody owns, from left to right.
std::vector<PictureRect> Coverage::rowGaps(int y, const PictureRect& within) const {
    std::vector<PictureRect> gaps;
    int x = within.x0;
    const auto goTo = [&](int x0, int x1) {
        if (std::min(x0, within.x1) > x)
            gaps.push_back({x, y, std::min(x0, within.x1), y + 1});
        x = std::max(x, x1);
    };
    for (const Span& span : rows[static_cast<std::size_t>(y)])
        goTo(span.x0, span.x1);
    goTo(within.x1, within.x1);
    return gaps;
}

std::vector<PictureRect> Coverage::gaps(const PictureRect& within) const {
    const auto sameColumns = [](const PictureRect& a, const PictureRect& b) {
        return a.x0 == b.x0 && a.x1 == b.x1;
    };
    std::vector<PictureRect> gaps;
    std::ptrdiff_t above = 0;  // where those begin that the row above has
    for (int y = within.y0; y < within.y1; ++y) {
        const std::vector<PictureRect> row = rowGaps(y, within);
        if (std::equal(gaps.begin() + above, gaps.end(), row.begin(), row.end(), sameColumns)) {
            for (auto gap = gaps.begin() + above; gap != gaps.end(); ++gap)
                gap->y1 = y + 1;
        } else {
            above = std::ssize(gaps);
            gaps.insert(gaps.end(), row.begin(), row.end());
        }
    }
    return gaps;
}

PictureRect Coverage::bounds() const {
    PictureRect bounds{width, static_cast<int>(rows.size()), 0, 0};
    for (int y = 0; y < static_cast<int>(rows.size()); ++y) {
        const Row& row = rows[static_cast<std::size_t>(y)];
        if (row.empty())
            continue;
        bounds = {std::min(bounds.x0, row.front().x0), std::min(bounds.y0, y),
                  std::max(bounds.x1, row.back().x1), y + 1};
    }
    return bounds.isEmpty() ? PictureRect{} : bounds;
}

}  // namespace Tarnkit
