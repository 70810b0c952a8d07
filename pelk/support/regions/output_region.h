#pragma once

#include <cstdint>

#include "pelk/contract/fragment.h"

namespace Tarnkit {

/// A rectangle of an image in the making (a tile, a bucket) that takes finished pixels as
/// fragments. What renderers know of it; how the pixels are stored is up to the class.
///
/// Operations have no bodies here but for those that a store may do without.
class OutputRegion : public FragmentManager {
public:
    /// The rectangle as `setRect` left it, and its width and height.
    virtual void getRect(int& x0, int& y0, int& x1, int& y1, int& width, int& height) = 0;
    /// Sets the rectangle in pixels of the image: (0, 0) is its upper left corner, y grows
    /// downwards, `x1` and `y1` are exclusive. Comes before the render; moves no pixels.
    virtual void setRect(int x0, int y0, int x1, int y1) = 0;
    /// Writes the pixel at (`x`, `y`) of the image from the fragments of a list, which stay with
    /// the caller, who may add further samples to them. A pixel outside of the rectangle, or an
    /// empty list, stores nothing.
    virtual void storeFragments(int x, int y, const FragmentList& list) = 0;
    /// Puts the start value into all pixels, then takes all fragments back: what a region is reused
    /// for may store fewer pixels, and the last tile must not show between them.
    virtual void clear() = 0;
    /// Takes all fragments back at once, with their data: between two pixels, where giving each
    /// back would walk lists that are thrown away as a whole. Pointers to them, and lists of them,
    /// are void from then on.
    virtual void resetFragments() = 0;
    /// Whether two estimates of one pixel still differ, for a sampler that adapts: 1 if the total
    /// fragments of the lists differ by more than is allowed, else 0. The two numbers are not
    /// read; `weight` scales the difference of the normals. May add an empty total to a list.
    virtual int compareFragments(FragmentList&, int, FragmentList&, int, float) { return 0; }
    /// Writes the region into a flat block, to be passed between computers. The needed size for a
    /// null block, else 1, or 0 if the size is too small. Here 0: it can't be transferred.
    virtual std::int64_t getBuffer(void*, std::int64_t) { return 0; }
    /// Takes rectangle and pixels from such a block. Here nothing.
    virtual void setBuffer(const void*) {}
};

}  // namespace Tarnkit
