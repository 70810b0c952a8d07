#pragma once

#include <functional>
#include <vector>

#include "pelk/host/picture/picture_rect.h"

namespace Tarnkit {

/// Which pixels of a picture are there, and which of several sources each came from. Takes memory
/// by the edges of the rectangles that were added, not by the pixels. For one thread.
class Coverage {
public:
    /// Of pixels that nobody has added.
    static constexpr int kNobody = -1;

    /// Gets pixels of one row, from x0 up to x1, and who owned them before.
    using Visit = std::function<void(int y, int x0, int x1, int owner)>;

    /// Nothing of the picture is there.
    Coverage(int width, int height);

    /// Adds the pixels of a rectangle inside the picture. Those that nobody owned become `owner`'s,
    /// from 0 on; the others keep theirs. `visit` gets all of them, row by row from the upper left.
    void add(const PictureRect& rect, int owner, const Visit& visit);

    /// The pixels of a rectangle inside the picture that nobody owns, as few rectangles as their
    /// rows allow, from top to bottom. Empty if all is there.
    std::vector<PictureRect> gaps(const PictureRect& within) const;

    /// The smallest rectangle that all owned pixels lie in; empty if there are none.
    PictureRect bounds() const;

private:
    struct Span {
        int x0, x1, owner;
    };
    using Row = std::vector<Span>;  // from left to right, without overlaps

    std::vector<PictureRect> rowGaps(int y, const PictureRect& within) const;

    const int width;
    std::vector<Row> rows;
};

}  // namespace Tarnkit
