#pragma once

#include <cstddef>
#include <vector>

#include "frame/color.h"

namespace Tarnkit {

/// The picture that a render fills: linear colour and alpha, rows from the top. The colour is
/// multiplied by the alpha already. Pixels that were never set are clear black. Different pixels
/// may be set from different threads at once.
class Picture {
public:
    void resize(int newWidth, int newHeight) {
        width = newWidth;
        height = newHeight;
        values.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, 0.0f);
    }

    int getWidth() const { return width; }
    int getHeight() const { return height; }

    void setPixel(int x, int y, const AColor& value) {
        float* const pixel = values.data() + place(x, y);
        pixel[0] = value.color.r;
        pixel[1] = value.color.g;
        pixel[2] = value.color.b;
        pixel[3] = value.alpha;
    }

    AColor getPixel(int x, int y) const {
        const float* const pixel = values.data() + place(x, y);
        return {Color(pixel[0], pixel[1], pixel[2]), pixel[3]};
    }

    /// One row as red, green, blue, alpha of each pixel: what writers of files take.
    const float* getRow(int y) const { return values.data() + place(0, y); }

private:
    std::size_t place(int x, int y) const {
        return (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(x)) *
               4;
    }

    int width = 0, height = 0;
    std::vector<float> values;
};

}  // namespace Tarnkit
