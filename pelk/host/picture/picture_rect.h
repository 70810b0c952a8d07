#pragma once

namespace Tarnkit {

/// A rectangle of pixels of a picture, counted from its upper left corner; x1 and y1 lie outside.
struct PictureRect {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;

    bool isEmpty() const { return x1 <= x0 || y1 <= y0; }
    bool operator==(const PictureRect&) const = default;
};

}  // namespace Tarnkit
