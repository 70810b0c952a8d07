#include "pelk/support/regions/region_data.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>

#include "pelk/base/exception_msg.h"
#include "pelk/support/machine_info.h"

namespace Tarnkit {

namespace {

constexpr int kPageBytes = 33554432;  // bounds what a very large image asks of the heap at once
constexpr int kAliasBuckets = 147;    // aliases 1 to 146 have one each, bucket 0 is for the rest

/// The width or height between two edges, clamped to what an int holds.
int extent(int from, int to) {
    const std::int64_t way = std::int64_t{to} - from;
    return static_cast<int>(std::clamp<std::int64_t>(way, INT_MIN, INT_MAX));
}

}  // namespace

PKRegionData::PKRegionData() {
    reset();
}

PKRegionData::~PKRegionData() {
    reset();
}

PluginInterface* PKRegionData::getInterface(u64 id) {
    return Offered::find(*this, id);
}

void PKRegionData::getRect(int& left, int& top, int& right, int& bottom, int& w, int& h) {
    left = x0;
    top = y0;
    right = x1;
    bottom = y1;
    w = width;
    h = height;
}

void PKRegionData::setRect(int left, int top, int right, int bottom) {
    x0 = left;
    y0 = top;
    x1 = right;
    y1 = bottom;
    width = extent(left, right);
    height = extent(top, bottom);
}

void PKRegionData::clear() {
    const int count = static_cast<int>(std::min<std::int64_t>(pixelCount(), INT_MAX));
    for (ChannelRecord& record : channels) {
        if (record.buffer)
            fillBuffer(record, count);
    }
    resetFragments();
}

void PKRegionData::allocateChannelBuffer(int index) {
    if (!isChannel(index))
        return;
    ChannelRecord& record = channels[index];
    if (record.flags & kChannelNoBuffer)
        freeBuffer(record);
    if (pixelCapacity == 0)
        pixelCapacity = checkedPixelCount();
    const int pixelSize = channelTypeSize(record.type);
    if (record.flags & kChannelNoBuffer || record.buffer || pixelSize == 0)
        return;
    try {
        auto buffer = std::make_unique<ChannelBuffer>();
        buffer->resize(pixelCapacity, pixelSize, kPageBytes, width);
        record.buffer = buffer.release();
        fillBuffer(record, pixelCapacity);
    } catch (...) {
        // With its capacity left standing, the next beginRendering would find the region large
        // enough and make no pixels.
        freeBuffers();
        throw;
    }
}

void PKRegionData::freeBuffers() {
    for (ChannelRecord& record : channels)
        freeBuffer(record);
    aliasBuckets.free();
    aliasNodes.free();
    pixelCapacity = 0;
}

void PKRegionData::beginRendering() {
    const int count = checkedPixelCount();
    if (pixelCapacity < count) {
        freeBuffers();
        pixelCapacity = count;
        for (int i = channels.size(); i-- > 0;)
            allocateChannelBuffer(i);
    }
    layOutSlots();
    prepareFragmentData();
    buildAliasTable();
}

void PKRegionData::reset() {
    freeBuffers();
    fragmentPool.clear();
    fragmentData.free();
    freeTemplates();
    setRect(0, 0, 0, 0);
    mask = nullptr;
    compareRenderID = compareNormal = compareZ = 0;
    normalThreshold = 0.1f;
    zThreshold = 10.0f;
    frontByDepth = 0;
    char fullName[256] = "";
    int size = sizeof fullName;
    if (getComputerName(fullName, &size) != 0)
        fullName[0] = '\0';
    const auto end = std::copy_n(fullName, sizeof hostName - 1, hostName);
    *end = '\0';
}

/// Whether the channel's buffer holds the whole rectangle.
bool PKRegionData::hasPixels(int index) const {
    if (!isChannel(index) || !channels[index].buffer)
        return false;
    return pixelCount() <= channels[index].buffer->size();
}

std::int64_t PKRegionData::pixelCount() const {
    return width > 0 && height > 0 ? std::int64_t{width} * height : 0;
}

/// The number of pixels as the int that their indexes need, or an ExceptionMsg.
int PKRegionData::checkedPixelCount() const {
    const std::int64_t count = pixelCount();
    if (count > INT_MAX)
        throw ExceptionMsg(
            "[PKRegionData] A region of %i x %i pixels is too large, expected at "
            "most %i pixels\n",
            width, height, INT_MAX);
    return static_cast<int>(count);
}

void PKRegionData::freeBuffer(ChannelRecord& record) {
    delete record.buffer;
    record.buffer = nullptr;
}

/// Puts the start value into the first `count` pixels.
void PKRegionData::fillBuffer(ChannelRecord& record, int count) {
    record.buffer->forEachRun(0, count, [&](u8* pixels, int n) {
        if (record.channel)
            record.channel->fillPixels(pixels, n);
        else
            std::memset(pixels, 0, static_cast<std::size_t>(n) * record.buffer->getItemSize());
    });
}

/// Gives every channel its slot behind that of the channel before it: after channels were added,
/// removed or moved there are gaps and overlaps.
void PKRegionData::layOutSlots() {
    fragmentDataSize = 0;
    for (ChannelRecord& record : channels) {
        record.fragmentOffset = fragmentDataSize;
        fragmentDataSize += record.fragmentSize;
    }
}

/// Makes the data blocks as large as the slots, and a cleared one for each mode.
void PKRegionData::prepareFragmentData() {
    const int size = std::max(8, fragmentDataSize);
    if (size != templateSize) {
        // A block must not be handed out before its templates stand, so there are none until then.
        fragmentData.free();
        freeTemplates();
        for (u8*& block : clearTemplates)
            block = static_cast<u8*>(allocate(size));
        templateSize = size;
    }
    for (int mode = 0; mode < 3; ++mode) {
        std::memset(clearTemplates[mode], 0, size);
        for (int i = channels.size(); i-- > 0;) {
            if (u8* slot = channels[i].slotIn(clearTemplates[mode], size))
                channels[i].channel->clearData(slot, mode);
        }
    }
    fragmentData.setItemSize(size);
}

void PKRegionData::freeTemplates() {
    for (u8*& block : clearTemplates) {
        freeMemory(block);
        block = nullptr;
    }
    templateSize = 0;
}

void PKRegionData::buildAliasTable() {
    aliasBuckets.clear();
    aliasBuckets.resize(kAliasBuckets);
    aliasNodes.resize(channels.size());
    for (int i = 0; i < channels.size(); ++i) {
        if (channels[i].fragmentSize == 0)
            continue;
        const int alias = channels[i].alias;
        AliasNode*& bucket = aliasBuckets[alias > 0 && alias < kAliasBuckets ? alias : 0];
        aliasNodes[i] = {i, bucket};
        bucket = &aliasNodes[i];
    }
}

/// The list of the channels that share a bucket with `alias`; null before the table is built.
AliasNode* PKRegionData::aliasBucket(int alias) const {
    if (aliasBuckets.isEmpty())
        return nullptr;
    return aliasBuckets[alias > 0 && alias < kAliasBuckets ? alias : 0];
}

/// The channel of a node, if it has the alias. Bucket 0 is shared, and a node of any bucket may
/// be older than the last change of the channels.
const ChannelRecord* PKRegionData::aliasRecord(const AliasNode& node, int alias) const {
    const bool holds = isChannel(node.channelIndex) && channels[node.channelIndex].alias == alias;
    return holds ? &channels[node.channelIndex] : nullptr;
}

}  // namespace Tarnkit
