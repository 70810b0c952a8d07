#pragma once

namespace Tarnkit {

/// How a mask limits what PKRegionData::copyFrom changes. Of any other mode no pixel changes.
enum MaskMode : int {
    /// The pixels with a getMaskValue above 1e-6 are copied.
    kMaskByValue = 1,
    /// The pixels that the source covers, by its channel of kAliasImageAlpha, are composited: the
    /// source lies over what is there. Beauty and alpha are premultiplied, so what is there counts
    /// times max(0, 1 - alpha) and the source is added, per component; in all other channels a
    /// covered pixel is the source's. A source without such a channel, or with one of ids or pairs,
    /// counts as opaque.
    kMaskByAlpha = 2,
};

/// Says which pixels a merge of two regions may change: a brush, a crop, an object that is rendered
/// over an older picture. Defined and owned by whoever owns the region (PKRegionData::mask). Called
/// by the thread that merges, so one that several regions share has to allow for it.
class RegionMask {
public:
    virtual ~RegionMask() = default;
    /// Of MaskMode. Asked once for each merge.
    virtual int getMaskMode() = 0;
    /// Whether the pixel (x, y) of the image may change, in kMaskByValue: above 1e-6 for yes. Asked
    /// once for each pixel that both regions have, row by row.
    virtual float getMaskValue(int x, int y) = 0;
};

}  // namespace Tarnkit
