#pragma once

#include <vector>

#include "pelk/base/color.h"
#include "pelk/support/regions/fragments.h"

namespace Tarnkit {

class PKRegionData;
class RenderContext;
struct SceneObject;

/// Collects what camera rays bring for the render channels of one thread's region.
///
/// Each thing that a ray meets gets a fragment of its own, the layer, in which its material writes
/// and to which the main values are added here; layers are put behind one another to the sample.
/// Samples are summed by the first object that they have met, since the object that covers most of
/// a pixel is its front. The sum of those sums is the total of the pixel.
class SampleRecorder {
public:
    /// The region has its channels, and keeps them while this lives.
    explicit SampleRecorder(PKRegionData& region);

    // Per pixel, in this order: beginPixel; for each sample beginSample, what the ray meets, and
    // endSample unless the sample is dropped; endPixel.

    void beginPixel();
    void beginSample();
    /// Adds the sample, whose results stand in the context, with its share of the pixel.
    void endSample(const RenderContext& context, float share, FragmentList& pixel);
    /// Sums all that is in the pixel up to its total.
    void endPixel(FragmentList& pixel) const;

    // Along a ray.

    /// A cleared fragment for the surface that is met next.
    Fragment* nextLayer();
    /// Takes the layer of a surface whose shading is done.
    void addSurface(RenderContext& context);
    void addLight(const RenderContext& context, const Color& shown, double distance);
    void addSurroundings(const Color& shown);

    /// Samples of which a channel was left out since it wasn't finite, and who made one of them.
    long long getDropped() const { return dropped; }
    const SceneObject* getBadObject() const { return badObject; }

private:
    /// Slots of channels whose values are floats, one behind the other.
    struct FloatRun {
        int offset, count;
    };

    void putBehind(bool visible, int tag);
    void dropBadValues(const RenderContext& context);

    PKRegionData& region;
    std::vector<FloatRun> floatRuns;
    int uvChannel = -1;

    PKFragment* fragments[2] = {};  // of this pixel: one is the sample, the other the layer
    PKFragment* layer = nullptr;
    PKFragment* sample = nullptr;  // null until the ray has met something
    int sampleTag = 0;

    long long dropped = 0;
    const SceneObject* badObject = nullptr;
};

}  // namespace Tarnkit
