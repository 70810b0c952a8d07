#pragma once

#include <algorithm>

namespace Tarnkit {

/// A rectangle of pixels of a picture, counted from its upper left corner; x1 and y1 lie outside.
struct PictureRect {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;

    int width() const { return x1 - x0; }
    int height() const { return y1 - y0; }
    bool isEmpty() const { return x1 <= x0 || y1 <= y0; }
    /// Meant for a rectangle that is not empty.
    long long numPixels() const { return static_cast<long long>(width()) * height(); }
    bool contains(int x, int y) const { return x >= x0 && x < x1 && y >= y0 && y < y1; }
    bool operator==(const PictureRect&) const = default;
};

/// The pixels that both rectangles have; empty if there are none.
inline PictureRect intersection(const PictureRect& a, const PictureRect& b) {
    return {std::max(a.x0, b.x0), std::max(a.y0, b.y0), std::min(a.x1, b.x1), std::min(a.y1, b.y1)};
}

}  // namespace Tarnkit
