// How a region hands fragments out, takes them back, and makes finished pixels of them.
#include <algorithm>
#include <cmath>

#include "pelk/base/vector.h"
#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

namespace {

/// What storeFragments hands to the channel objects: see PKRegionData::storeFragments.
struct Choice {
    PKFragment* front = nullptr;
    PKFragment* total = nullptr;
};

constexpr float kWorst = -1e28f;

PKFragment* fragmentOf(Fragment* fragment) {
    return static_cast<PKFragment*>(fragment);
}

/// The front is the fragment with the largest share of the samples: the object that covers most.
Choice chooseByWeight(const FragmentList& list) {
    Choice choice{nullptr, fragmentOf(list.head())};
    float best = kWorst;
    for (Fragment* link = list.head(); link; link = link->nextFragment) {
        PKFragment* fragment = fragmentOf(link);
        if (fragment->tag == kTagTotal) {
            choice.total = fragment;
        } else if (fragment->weight > best && fragment->tag != kTagNeverFront) {
            choice.front = fragment;
            best = fragment->weight;
        }
    }
    return choice;
}

/// The front is the fragment nearest to the camera. An empty one never is: 0 / 0 is above nothing.
Choice chooseByDepth(const FragmentList& list) {
    Choice choice{nullptr, fragmentOf(list.head())};
    float best = kWorst;
    for (Fragment* link = list.head(); link; link = link->nextFragment) {
        PKFragment* fragment = fragmentOf(link);
        const float depth = fragment->zDepth / fragment->weight;
        if (depth > best && fragment->tag >= -1) {
            choice.front = fragment;
            best = depth;
        } else if (fragment->tag == kTagTotal) {
            choice.total = fragment;
        }
    }
    return choice;
}

bool normalsDiffer(Vector a, Vector b, float weight, float threshold) {
    if (!(dot(a, a) > 0.0f && dot(b, b) > 0.0f))
        return false;
    // In double: near 1 the steps of a float are as large as what is to be told apart.
    const double along = double{a.x} * b.x + double{a.y} * b.y + double{a.z} * b.z;
    const double off = 1.0 - std::clamp(along, 0.0, 1.0);
    return threshold * threshold < weight * off * off;
}

}  // namespace

Fragment* PKRegionData::newFragment() {
    PoolElement<PKFragment>* fragment = fragmentPool.take();
    fragment->nextFragment = nullptr;
    try {
        fragment->channelData = fragmentData.take();
    } catch (...) {
        fragmentPool.giveBack(fragment);
        throw;
    }
    fragment->region = this;
    fragment->state = 0;  // or clear would skip the slots, which still hold another's data
    fragment->PKFragment::clear(0);
    return fragment;
}

void PKRegionData::deleteFragment(Fragment* fragment) {
    // A fragment that is back already, or another region's, would make the free list a loop or lead
    // it into that region's memory.
    if (!fragment || fragmentOf(fragment)->region != this)
        return;
    auto* element = static_cast<PoolElement<PKFragment>*>(fragment);
    fragmentData.giveBack(element->channelData);
    element->channelData = nullptr;
    element->region = nullptr;
    fragmentPool.giveBack(element);
}

void PKRegionData::resetFragments() {
    fragmentPool.reset();
    fragmentData.rewind();
}

void PKRegionData::storeFragments(int x, int y, const FragmentList& list) {
    const Choice choice = frontByDepth ? chooseByDepth(list) : chooseByWeight(list);
    if (choice.total)
        storeFragments(x, y, choice.front, choice.total);
}

void PKRegionData::storeFragments(int x, int y, Fragment* front, Fragment* total) {
    if (x < x0 || x >= x1 || y < y0 || y >= y1)
        return;
    const std::int64_t index = (std::int64_t{x} - x0) + (std::int64_t{y} - y0) * width;
    const float weight = front ? fragmentOf(front)->weight : 0.0f;
    for (int i = channels.size(); i-- > 0;) {
        const ChannelRecord& record = channels[i];
        if (!record.channel)
            continue;
        u8* pixel = nullptr;
        if (record.buffer && index < record.buffer->size())
            pixel = record.buffer->item(static_cast<int>(index));
        if (pixel || (!record.buffer && record.flags & kChannelNoBuffer))
            record.channel->storePixel(x, y, pixel, front, total, weight, i);
    }
}

int PKRegionData::compareFragments(FragmentList& listA, int, FragmentList& listB, int,
                                   float weight) {
    const PKFragment* a = fragmentOf(listA.getFragment(kTagTotal));
    const PKFragment* b = fragmentOf(listB.getFragment(kTagTotal));
    if (compareRenderID && a->renderID != b->renderID)
        return 1;
    if (compareNormal && normalsDiffer(a->normal, b->normal, weight, normalThreshold))
        return 1;
    if (compareZ && std::fabs(a->zDepth - b->zDepth) > zThreshold)
        return 1;
    return 0;
}

}  // namespace Tarnkit
