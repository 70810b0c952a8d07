#include "pelk/support/regions/channel_kinds.h"

#include <cstring>
#include <type_traits>

#include "pelk/base/limits.h"
#include "pelk/base/vector.h"
#include "pelk/support/regions/fragments.h"
#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

namespace {

/// The depth of a pixel in which nothing was hit.
constexpr float kNoDepth = static_cast<float>(kRayFar);

/// A value without alignment, as slots and pixels lie one behind the other by their bytes.
template <class Value>
Value load(const void* data) {
    Value value;
    std::memcpy(&value, data, sizeof value);
    return value;
}

template <class Value>
void store(void* data, const Value& value) {
    std::memcpy(data, &value, sizeof value);
}

void storeBeauty(void* pixel, const PKFragment*, const PKFragment& total) {
    store(pixel, total.color + total.background);
}

void storeAlpha(void* pixel, const PKFragment*, const PKFragment& total) {
    store(pixel, total.alpha);
}

void storeTransparency(void* pixel, const PKFragment*, const PKFragment& total) {
    store(pixel, total.transparency);
}

/// Fragments hold the place along the camera's axis, which points backwards.
void storeDepth(void* pixel, const PKFragment* front, const PKFragment&) {
    store(pixel, front && front->weight > 0.0f ? -front->zDepth / front->weight : kNoDepth);
}

void storeRenderID(void* pixel, const PKFragment* front, const PKFragment&) {
    store(pixel, front ? front->renderID : -1);
}

void storeNormal(void* pixel, const PKFragment* front, const PKFragment&) {
    store(pixel, front ? normalizeGuarded(front->normal) : Vector());
}

void storeFront(void* pixel, const PKFragment* front, const PKFragment&) {
    store(pixel, front ? AColor{front->color, mean(front->alpha)} : AColor());
}

/// Samples have no name; it comes with the block of another computer, over the finished pixels.
void storeUnstamped(void* pixel, const PKFragment*, const PKFragment&) {
    store(pixel, Color());
}

/// Writes one pixel from main values of its fragments; `front` may be null.
using StoreMainValue = void (*)(void* pixel, const PKFragment* front, const PKFragment& total);

/// How a channel of main values is written; null for a channel with a slot of its own in fragments.
StoreMainValue storeOf(int alias) {
    switch (alias) {
        case kAliasImageColor:
            return storeBeauty;
        case kAliasImageAlpha:
            return storeAlpha;
        case kAliasRenderID:
            return storeRenderID;
        case kAliasZDepth:
            return storeDepth;
        case kAliasNormal:
            return storeNormal;
        case kAliasTransparency:
            return storeTransparency;
        case kAliasFront:
            return storeFront;
        case kAliasHostStamp:
            return storeUnstamped;
        default:
            return nullptr;
    }
}

/// What the channels here have in common: name, alias, type and flags, and an arithmetic that keeps
/// slots at 0. A slot or pixel starts at 0, whatever the mode of the clear.
class StandardChannel : public RenderChannel {
public:
    StandardChannel(const std::string& channelName, int channelAlias, ChannelType channelType,
                    int channelFlags)
        : name(channelName),
          alias(channelAlias),
          type(channelType),
          flags(channelFlags),
          size(static_cast<std::size_t>(channelTypeSize(channelType))) {}

    int getType() final { return type; }
    int getAlias() final { return alias; }
    const char* getName() final { return name.c_str(); }
    int getFlags() final { return flags; }

    void fillPixels(void* pixels, int count) override {
        std::memset(pixels, 0, static_cast<std::size_t>(count) * size);
    }
    void clearData(void* data, int) override { std::memset(data, 0, size); }
    void setValue(void* data, const void* value) override { std::memcpy(data, value, size); }
    void addData(void*, const void*, const Color&, int, int) override {}
    void multiplyData(void*, const Color&, int) override {}
    void setColorData(void* data, const Color&) override { std::memset(data, 0, size); }
    void mapData(void*, Fragment*, ColorMapper*, int) override {}
    Color getColorValue(const void*) override { return {}; }

private:
    const std::string name;
    const int alias;
    const ChannelType type;
    const int flags;

protected:
    const std::size_t size;  ///< of a slot and of a pixel, in bytes
};

/// A channel that is read from main values of the fragments when the pixel is stored, and has no
/// slot in them.
class MainValueChannel final : public StandardChannel {
public:
    MainValueChannel(const ChannelAliasInfo& info, StoreMainValue with)
        : StandardChannel(info.name, info.alias, info.type, kChannelNoFragmentData),
          storeValue(with) {}

    /// A pixel starts as one would be in which nothing was hit.
    void fillPixels(void* pixels, int count) override {
        const PKFragment nothing;
        for (int i = 0; i < count; ++i)
            storeValue(static_cast<u8*>(pixels) + static_cast<std::size_t>(i) * size, nullptr,
                       nothing);
    }

    void storePixel(int, int, void* pixel, Fragment* front, Fragment* total, float, int) override {
        storeValue(pixel, static_cast<const PKFragment*>(front),
                   static_cast<const PKFragment&>(*total));
    }

private:
    const StoreMainValue storeValue;
};

/// Radiance, or a share of it, of the whole pixel: what samples and surfaces contribute adds up.
/// `Value` is a Color, or a float, which goes by the mean of weights that are colours.
template <class Value>
class RadianceChannel final : public StandardChannel {
public:
    using StandardChannel::StandardChannel;

    // One rule for both modes: in a sum of samples the weights are the sample's share, and along a
    // ray they are the transparency of the surfaces in front.
    void addData(void* dst, const void* src, const Color& weights, int, int) override {
        store(dst, load<Value>(dst) + load<Value>(src) * factor(weights));
    }
    void multiplyData(void* data, const Color& weights, int) override {
        store(data, load<Value>(data) * factor(weights));
    }
    void mapData(void* data, Fragment* fragment, ColorMapper* mapper, int) override {
        if constexpr (std::is_same_v<Value, Color>) {
            const Color opacity = complement(static_cast<PKFragment*>(fragment)->transparency);
            Color mapped = load<Color>(data);
            if (mapper)
                mapPremultiplied(mapped, mapped, opacity, *mapper);
            store(data, mapped);
        }
    }
    void storePixel(int, int, void* pixel, Fragment*, Fragment* total, float, int index) override {
        if (const void* data = total->getChannelPtr(index))
            store(pixel, load<Value>(data));
    }
    Color getColorValue(const void* data) override { return Color(load<Value>(data)); }

private:
    static Value factor(const Color& weights) {
        if constexpr (std::is_same_v<Value, Color>)
            return weights;
        else
            return mean(weights);
    }
};

/// Two floats.
struct Pair {
    float x = 0.0f, y = 0.0f;
};

Pair operator+(Pair a, Pair b) {
    return {a.x + b.x, a.y + b.y};
}

Pair operator*(Pair p, float s) {
    return {p.x * s, p.y * s};
}

/// A measure of a surface, such as its texture coordinates, of which only the front object's makes
/// sense. Other surfaces along a ray add nothing; the pixel shows the mean over the front's
/// samples.
template <class Value>
class FrontMeanChannel final : public StandardChannel {
public:
    using StandardChannel::StandardChannel;

    void addData(void* dst, const void* src, const Color& weights, int hasData, int mode) override {
        if (mode == 0)
            store(dst, load<Value>(dst) + load<Value>(src) * mean(weights));
        else if (!hasData)
            store(dst, load<Value>(src));
    }
    // storePixel divides the sum by the fragment's weight, which is multiplied by the same mean.
    void multiplyData(void* data, const Color& weights, int) override {
        store(data, load<Value>(data) * mean(weights));
    }
    void storePixel(int, int, void* pixel, Fragment* front, Fragment*, float weight,
                    int index) override {
        const void* const data = front ? front->getChannelPtr(index) : nullptr;
        store(pixel, data && weight > 0.0f ? load<Value>(data) * (1.0f / weight) : Value());
    }
};

/// An id: the first that was found on the front object, as the mean of ids is another object's.
class IdChannel final : public StandardChannel {
public:
    using StandardChannel::StandardChannel;

    void addData(void* dst, const void* src, const Color&, int hasData, int) override {
        if (!hasData)
            store(dst, load<int>(src));
    }
    void storePixel(int, int, void* pixel, Fragment* front, Fragment*, float, int index) override {
        const void* const data = front ? front->getChannelPtr(index) : nullptr;
        store(pixel, data ? load<int>(data) : 0);
    }
};

std::unique_ptr<RenderChannel> newSlotChannel(const std::string& name, int alias,
                                              ChannelType type) {
    switch (type) {
        case kChannelFloat:
            return std::make_unique<RadianceChannel<float>>(name, alias, type, 0);
        case kChannelFloat2:
            return std::make_unique<FrontMeanChannel<Pair>>(name, alias, type, 0);
        case kChannelVector:
            return std::make_unique<FrontMeanChannel<Vector>>(name, alias, type, 0);
        case kChannelInt:
            return std::make_unique<IdChannel>(name, alias, type, 0);
        default:
            return std::make_unique<RadianceChannel<Color>>(name, alias, kChannelColor, 0);
    }
}

}  // namespace

std::unique_ptr<RenderChannel> newChannel(int alias) {
    const ChannelAliasInfo* const info = findChannelAlias(alias);
    if (!info || !info->name)
        return nullptr;
    if (const StoreMainValue store = storeOf(alias))
        return std::make_unique<MainValueChannel>(*info, store);
    return newSlotChannel(info->name, info->alias, info->type);
}

std::vector<std::string_view> channelNames() {
    std::vector<std::string_view> names;
    for (const ChannelAliasInfo& info : namedChannelAliases())
        names.push_back(info.name);
    return names;
}

std::unique_ptr<RenderChannel> newCustomChannel(const std::string& name, ChannelType type) {
    constexpr int kNoAlias = -1;
    return newSlotChannel(name, kNoAlias, type);
}

}  // namespace Tarnkit
