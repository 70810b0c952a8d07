#pragma once

#include <utility>
#include <vector>

#include "pelk/base/color.h"
#include "pelk/support/regions/fragments.h"

namespace Tarnkit {

class PKRegionData;
class RenderContext;
struct SceneObject;

/// Fills the render channels (AOVs) of one thread's region from the camera rays.
///
/// Each surface, light or environment that a ray hits gets a surface fragment: materials write
/// their channels to it, and the main values (colour, alpha, depth, ...) are added here. Surface
/// fragments are composited front to back into the sample. The samples of a pixel are summed per
/// object that is visible first, since the object that covers most of the pixel is its front.
/// Owned and used by one render thread.
class SampleRecorder {
public:
    /// `region` outlives this, has its channels already and keeps them.
    explicit SampleRecorder(PKRegionData& region);

    // Per pixel, in this order: beginPixel; for each sample beginSample, the operations along the
    // ray, and endSample unless the sample is dropped.

    void beginPixel();
    void beginSample();
    /// Adds the sample, whose traceResult and traceAlpha stand in the context, with the weight 1 to
    /// the sum of the object that it shows: how many samples there will be need not be known yet.
    void endSample(const RenderContext& context, FragmentList& pixel);

    // Along a ray.

    /// A cleared fragment for the surface that is shaded next.
    Fragment* nextSurfaceFragment();
    /// Composites the fragment of a surface that has been shaded.
    void addSurface(RenderContext& context);
    /// The same for a light that the ray has hit, and the environment. `shown`: with its MIS
    /// weight.
    void addLight(const RenderContext& context, const Color& shown, double distance);
    void addSurroundings(const Color& shown);

    /// Samples of which a channel was cleared since it wasn't finite, since the last call, and the
    /// object that the last of them hit.
    long long takeDropped() { return std::exchange(dropped, 0); }
    const SceneObject* getBadObject() const { return badObject; }

private:
    /// The slot of a channel of floats in a fragment: byte offset, and number of floats.
    struct FloatRun {
        int offset, count;
    };

    void putBehind(bool visible, int tag);
    void dropBadValues(const RenderContext& context);

    PKRegionData& region;
    std::vector<FloatRun> floatRuns;
    int uvChannel = -1;

    PKFragment* fragments[2] = {};  // of this pixel: `surface` and `sample`
    PKFragment* surface = nullptr;  // of the surface that is shaded now
    PKFragment* sample = nullptr;   // composited so far; null until the ray has hit something
    int sampleTag = 0;

    long long dropped = 0;
    const SceneObject* badObject = nullptr;
};

}  // namespace Tarnkit
