#include "pelk/host/trace/sample_recorder.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "pelk/contract/channel_alias.h"
#include "pelk/contract/renderer.h"
#include "pelk/host/trace/render_context.h"
#include "pelk/host/trace/scene_object.h"
#include "pelk/host/trace/surface_uv.h"
#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

namespace {

// Fragments are tagged by the index of their object; these are none.
constexpr int kTagSurroundings = -1;
constexpr int kTagLight = INT_MAX;

/// Depth of a sample that hit nothing. Depths run along the camera's axis, which points backwards.
constexpr float kNoHitDepth = -static_cast<float>(kRayFar);

/// Signed distance of a point along the camera's axis, negative in front of it (the axis points
/// back).
float alongAxis(const PelkContext& context, const Point& inScene) {
    const FrameData& frame = context.renderer->frameData;
    const SequenceData& settings = context.renderer->sequenceData;
    Point point = inScene;
    if (settings.useWorldTransform)
        settings.worldTransform->transformPoint(point, inScene, context.time);
    const Vector& axis = frame.cameraMatrix[2];
    const Point& eye = frame.cameraPosition;
    return static_cast<float>((point.x - eye.x) * axis.x + (point.y - eye.y) * axis.y +
                              (point.z - eye.z) * axis.z);
}

int renderIDOf(RenderContext& c) {
    GeomObjectInterface* const ids = c.object->renderIDs;
    return ids ? ids->getRenderID(c) : static_cast<int>(c.object->index);
}

/// Whether a surface leaves the ray as it is: fully transparent, without colour. A matte answers so
/// too, but counts as visible.
bool isInvisible(const RenderContext& c) {
    return c.resultTransparency == Color(1) && c.resultAlphaTransparency == Color(1) &&
           c.resultColor == Color(0) && !(c.shadedFlags & kShadedMatte);
}

/// Whether `count` floats are finite. By their bits: a maximum over integers vectorises.
bool areFinite(const u8* data, int count) {
    constexpr u32 kAbsolute = 0x7fffffff, kInfinity = 0x7f800000;
    u32 largest = 0;
    for (int i = 0; i < count; ++i) {
        u32 bits;
        std::memcpy(&bits, data + i * sizeof bits, sizeof bits);
        largest = std::max(largest, bits & kAbsolute);
    }
    return largest < kInfinity;
}

}  // namespace

SampleRecorder::SampleRecorder(PKRegionData& region_)
    : region(region_), uvChannel(region_.findChannelByAlias(kAliasUV)) {
    for (const ChannelRecord& channel : region.getChannels()) {
        if (channel.type == kChannelInt || channel.fragmentSize == 0)
            continue;
        const int count = channel.fragmentSize / static_cast<int>(sizeof(float));
        floatRuns.push_back({channel.fragmentOffset, count});
    }
}

void SampleRecorder::beginPixel() {
    for (PKFragment*& fragment : fragments)
        fragment = static_cast<PKFragment*>(region.newFragment());
    surface = fragments[0];
}

void SampleRecorder::endSample(const RenderContext& c, FragmentList& pixel) {
    if (!sample)
        addSurroundings(Color(0));  // ended by the depth limit, nothing was shaded
    sample->color = c.traceResult;
    sample->background = Color(0);  // is in the colour
    sample->alpha = c.traceAlpha;
    dropBadValues(c);
    pixel.getFragment(sampleTag)->addFragment(sample, Color(1), 0);
}

void SampleRecorder::beginSample() {
    sample = nullptr;
    sampleTag = kTagSurroundings;
}

Fragment* SampleRecorder::nextSurfaceFragment() {
    surface->PKFragment::clear(0);
    return surface;
}

void SampleRecorder::addSurface(RenderContext& c) {
    surface->alpha = c.resultAlpha;
    surface->transparency = c.resultTransparency;
    surface->alphaTransparency = c.resultAlphaTransparency;
    const bool visible = !isInvisible(c);
    if (visible) {
        surface->renderID = renderIDOf(c);
        surface->normal = c.normal;
        surface->zDepth = alongAxis(c, c.hitPoint);
        surface->weight = 1.0f;
        if (uvChannel >= 0) {
            const UV uv = surfaceUV(c);
            surface->setChannel(uvChannel, &uv);
        }
    }
    putBehind(visible, static_cast<int>(c.object->index));
}

void SampleRecorder::addLight(const RenderContext& c, const Color& shown, double distance) {
    nextSurfaceFragment();
    const float t = static_cast<float>(distance);
    const Point place = c.rayOrigin + c.rayDir * t;
    surface->alpha = Color(1);
    surface->zDepth = alongAxis(c, place);
    surface->weight = 1.0f;
    surface->addAlias(kAliasSelfIllumination, &shown);
    putBehind(true, kTagLight);
}

void SampleRecorder::addSurroundings(const Color& shown) {
    nextSurfaceFragment();
    surface->transparency = surface->alphaTransparency = Color(1);
    surface->weight = 1.0f;
    surface->addAlias(kAliasBackground, &shown);
    surface->addAlias(kAliasImageBackground, &shown);
    surface->zDepth = kNoHitDepth;
    putBehind(true, kTagSurroundings);
}

/// Composites the surface fragment behind the sample; the first one becomes the sample. If nothing
/// visible came before, a `visible` one is what the sample hits first, and gives it its tag.
void SampleRecorder::putBehind(bool visible, int tag) {
    if (visible && !(sample && sample->state & kFragmentHasData))
        sampleTag = tag;
    if (sample) {
        // Mode 2: an invisible surface doesn't become the first hit.
        sample->addFragment(surface, sample->transparency, visible ? 1 : 2);
        return;
    }
    sample = surface;
    surface = fragments[sample == fragments[0] ? 1 : 0];
    if (visible)
        sample->state |= kFragmentHasData;
}

/// Clears channels with NaN or infinity, so that one sample loses them and not the whole pixel.
void SampleRecorder::dropBadValues(const RenderContext& c) {
    bool isWhole = true;
    for (const FloatRun& run : floatRuns) {
        u8* const data = sample->channelData + run.offset;
        if (areFinite(data, run.count)) [[likely]]
            continue;
        std::memset(data, 0, run.count * sizeof(float));
        isWhole = false;
    }
    if (isWhole) [[likely]]
        return;
    ++dropped;
    if (c.object)
        badObject = c.object;
}

}  // namespace Tarnkit
