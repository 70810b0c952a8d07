#include "pelk/support/regions/fragments.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "pelk/base/limits.h"
#include "pelk/contract/channel_alias.h"
#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

namespace {

constexpr int kClearedMask = 6;  // bits of PKFragment::state
/// Depth of what has hit nothing. Depths run along the camera's axis, which points backwards.
constexpr float kNoHitDepth = -static_cast<float>(kRayFar);

constexpr bool hasTemplate(int mode) {
    return mode >= 0 && mode <= 2;
}

/// What `state` becomes by a clear. Modes without a template never read as clear.
constexpr int clearedState(int mode) {
    return hasTemplate(mode) ? mode * 2 + 2 : 0;
}

std::size_t fixedFieldSize(int alias) {
    const bool isNumber = alias == kAliasZDepth || alias == kAliasRenderID || alias == kAliasWeight;
    return isNumber ? sizeof(float) : sizeof(Color);
}

Color clamped(const Color& c) {
    return {std::clamp(c.r, 0.0f, 1.0f), std::clamp(c.g, 0.0f, 1.0f), std::clamp(c.b, 0.0f, 1.0f)};
}

}  // namespace

void PKFragment::addFragment(Fragment* fragment, const Color& weights, int mode) {
    const auto& other = static_cast<const PKFragment&>(*fragment);
    const Color by = weights;  // may be a field of this fragment
    addChannels(other, by, mode);
    markWritten();
    if (mode == 0) {
        color += by * other.color;
        alpha += by * other.alpha;
        background += by * other.background;
        transparency += by * other.transparency;
        alphaTransparency += by * other.alphaTransparency;
        if (!(state & kFragmentHasData))
            renderID = other.renderID;
        const float w = mean(by);
        normal += other.normal * w;
        zDepth += other.zDepth * w;
        weight += other.weight * w;
        state |= kFragmentHasData;
        return;
    }
    color += other.color * transparency;
    background += other.background * transparency;
    alpha += other.alpha * alphaTransparency;
    transparency *= other.transparency;
    alphaTransparency *= other.alphaTransparency;
    if (mode == 1 && !(state & kFragmentHasData)) {
        renderID = other.renderID;
        normal = other.normal;
        zDepth = other.zDepth;
        weight = other.weight;
        state |= kFragmentHasData;
    }
}

void PKFragment::addChannels(const PKFragment& other, const Color& weights, int mode) {
    const int size = std::min(blockSize(), other.blockSize());
    for (const ChannelRecord& record : channels()) {
        if (u8* data = record.slotIn(channelData, size))
            record.channel->addData(data, other.channelData + record.fragmentOffset, weights,
                                    state & kFragmentHasData, mode);
    }
}

void PKFragment::multiply(const Color& weights, int flag) {
    const Color by = weights;
    for (const ChannelRecord& record : channels()) {
        if (u8* data = slot(record))
            record.channel->multiplyData(data, by, flag);
    }
    color *= by;
    alpha *= by;
    background *= by;
    transparency *= by;
    alphaTransparency *= by;
    const float w = mean(by);
    normal *= w;
    zDepth *= w;
    weight *= w;
    markWritten();
}

void PKFragment::setColor(const Color& value) {
    const Color flat = value;
    for (const ChannelRecord& record : channels()) {
        if (u8* data = slot(record))
            record.channel->setColorData(data, flat);
    }
    color = flat;
    weight = 1.0f;
    markWritten();
}

void PKFragment::getChannel(int index, void* out) {
    const ChannelRecord* record = channelAt(index);
    if (const u8* data = record ? slot(*record) : nullptr)
        std::memcpy(out, data, channelTypeSize(record->type));
}

void PKFragment::setChannel(int index, const void* value) {
    const ChannelRecord* record = channelAt(index);
    if (!record)
        return;
    if (record->alias == kAliasRenderID || record->alias == kAliasZDepth)
        std::memcpy(fixedField(record->alias), value, fixedFieldSize(record->alias));
    else if (u8* data = slot(*record))
        record->channel->setValue(data, value);
    markWritten();
}

void* PKFragment::getChannelPtr(int index) {
    const ChannelRecord* record = channelAt(index);
    u8* data = record ? slot(*record) : nullptr;
    if (data)
        markWritten();
    return data;
}

void PKFragment::getAlias(int alias, void* out) {
    if (const void* field = fixedField(alias))
        std::memcpy(out, field, fixedFieldSize(alias));
}

void PKFragment::addAlias(int alias, const void* value) {
    if (void* field = fixedField(alias))
        std::memcpy(field, value, fixedFieldSize(alias));
    bool found = false;
    for (AliasNode* node = region ? region->aliasBucket(alias) : nullptr; node; node = node->next) {
        const ChannelRecord* record = region->aliasRecord(*node, alias);
        if (!record)
            continue;
        found = true;
        if (u8* data = slot(*record))
            record->channel->setValue(data, value);
    }
    // Without such a channel no slot was written, so a later clear may still skip the slots.
    if (found)
        markWritten();
}

void* PKFragment::getAliasPtr(int alias) {
    if (alias >= kAliasColor && alias <= kAliasWeight)
        return fixedField(alias);
    const AliasNode* head = region ? region->aliasBucket(alias) : nullptr;
    const ChannelRecord* record = head ? region->aliasRecord(*head, alias) : nullptr;
    u8* data = record ? slot(*record) : nullptr;
    if (data)
        markWritten();
    return data;
}

int PKFragment::clear(int mode) {
    if (!isClear(mode))
        clearChannels(mode);
    state = clearedState(mode);
    color = alpha = background = Color();
    transparency = alphaTransparency = Color(mode ? 1.0f : 0.0f);
    renderID = -1;
    normal = Vector();
    zDepth = mode ? kNoHitDepth : 0.0f;
    weight = mode ? 1.0f : 0.0f;
    return 0;
}

bool PKFragment::isClear(int mode) const {
    return hasTemplate(mode) && (state & kClearedMask) == clearedState(mode);
}

void PKFragment::clearChannels(int mode) {
    if (!channelData)
        return;
    if (hasTemplate(mode)) {
        std::memcpy(channelData, region->clearTemplates[mode], region->templateSize);
        return;
    }
    const auto records = channels();
    for (auto record = records.rbegin(); record != records.rend(); ++record) {
        if (u8* data = slot(*record))
            record->channel->clearData(data, mode);
    }
}

void PKFragment::applyColorMapper(ColorMapper* mapper, int mode) {
    for (const ChannelRecord& record : channels()) {
        if (u8* data = slot(record))
            record.channel->mapData(data, this, mapper, mode);
    }
    markWritten();
    if (!mapper)
        return;
    const bool mapsBackground = mapper->mapsBackground() != 0;
    if (mapsBackground && mode != 1) {
        mapper->mapColor(color, color + background);
        background = Color();
        return;
    }
    const Color behind = clamped(transparency);
    mapPremultiplied(color, color, complement(behind), *mapper);
    if (mapsBackground)
        mapPremultiplied(background, background, behind, *mapper);
}

AColor* PKFragment::getSampleColor(AColor* out) {
    float coverage = mean(alpha);
    for (const ChannelRecord& record : channels()) {
        if (u8* data = slot(record)) {
            const Color c = record.channel->getColorValue(data);
            coverage += std::max({c.r, c.g, c.b});
        }
    }
    *out = {color + background, coverage};
    return out;
}

std::span<const ChannelRecord> PKFragment::channels() const {
    if (!region)
        return {};
    return {region->channels.begin(), static_cast<std::size_t>(region->channels.size())};
}

const ChannelRecord* PKFragment::channelAt(int index) const {
    return region && region->isChannel(index) ? &region->channels[index] : nullptr;
}

u8* PKFragment::slot(const ChannelRecord& record) const {
    return record.slotIn(channelData, blockSize());
}

int PKFragment::blockSize() const {
    return channelData ? region->fragmentData.getItemSize() : 0;
}

/// The address of the main value with this alias, null for other aliases.
void* PKFragment::fixedField(int fixedAlias) {
    switch (fixedAlias) {
        case kAliasColor:
            return &color;
        case kAliasAlpha:
            return &alpha;
        case kAliasTransparency:
            return &transparency;
        case kAliasBackground:
            return &background;
        case kAliasZDepth:
            return &zDepth;
        case kAliasRenderID:
            return &renderID;
        case kAliasNormal:
            return &normal;
        case kAliasAlphaTransparency:
            return &alphaTransparency;
        case kAliasWeight:
            return &weight;
    }
    return nullptr;
}

void PKFragment::markWritten() {
    state &= ~kClearedMask;
}

void mapPremultiplied(Color& out, const Color& color, const Color& weights, ColorMapper& mapper) {
    const auto factor = [](float w) { return std::fabs(w) > 1e-6f ? w : 1.0f; };
    const Color by(factor(weights.r), factor(weights.g), factor(weights.b));
    const Color plain(color.r / by.r, color.g / by.g, color.b / by.b);
    mapper.mapColor(out, plain);
    out *= by;
}

}  // namespace Tarnkit
