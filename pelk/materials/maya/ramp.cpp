#include "pelk/materials/maya/ramp.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Tarnkit {
namespace {

int itemCount(PelkPluginParameter* parameter, double time) {
    return parameter ? std::max(parameter->getCount(time), 0) : 0;
}

/// The texture that stands for an item; null for a plain value, which answers with the parameter.
template <class Texture>
Texture* textureAt(PelkPluginParameter& parameter, int index, double time) {
    PluginBase* const object = parameter.getObject(index, time);
    return object != &parameter ? findInterface<Texture>(object) : nullptr;
}

void readValue(PelkPluginParameter& values, int index, double time, ColorRampEntry& entry) {
    entry.valueTexture = textureAt<TextureInterface>(values, index, time);
    entry.value = values.getColor(index, time);
}

void readValue(PelkPluginParameter& values, int index, double time, FloatRampEntry& entry) {
    entry.valueTexture = textureAt<TextureFloatInterface>(values, index, time);
    entry.value = values.getFloat(index, time);
}

/// Selection sort, whose order of equal positions is part of what a ramp looks like. Ramps are
/// short, and this runs once a frame.
template <class Entry>
void sortByPosition(GrowTable<Entry>& entries) {
    for (int i = 0; i < entries.size(); ++i) {
        int least = i;
        for (int k = i + 1; k < entries.size(); ++k)
            if (entries[k].position < entries[least].position)
                least = k;
        std::swap(entries[i], entries[least]);
    }
}

template <class Entry>
void load(Ramp<Entry>& ramp, const PelkParameterList& params, const RampParamNames& names,
          double time) {
    PelkPluginParameter* const positions = params.getParam(names.positions);
    PelkPluginParameter* const values = params.getParam(names.values);
    PelkPluginParameter* const interpolations = params.getParam(names.interpolations);
    const int count = std::min(
        {itemCount(positions, time), itemCount(values, time), itemCount(interpolations, time)});
    ramp.entries.resize(count);
    for (int i = 0; i < count; ++i) {
        Entry& entry = ramp.entries[i];
        readValue(*values, i, time, entry);
        entry.positionTexture = textureAt<TextureFloatInterface>(*positions, i, time);
        entry.position = positions->getFloat(i, time);
        entry.interpolation = interpolations->getInt(i, time);
        if (entry.positionTexture)
            ramp.hasTexturedPositions = true;
    }
    if (!ramp.hasTexturedPositions)
        sortByPosition(ramp.entries);
}

/// The two control points around a position. Without an upper one the position lies beyond the
/// highest point, which is `lower` then; without a lower one before the lowest, which is `upper`.
struct Segment {
    int lower = -1, upper = -1;
    float lowerPosition = 0.0f, upperPosition = 0.0f;
};

template <class Entry>
Segment findSorted(const GrowTable<Entry>& entries, float t) {
    int upper = 0;
    while (upper < entries.size() && !(entries[upper].position >= t))
        ++upper;
    if (upper == entries.size())
        return {.lower = upper - 1};
    if (upper == 0)
        return {.upper = 0};
    return {upper - 1, upper, entries[upper - 1].position, entries[upper].position};
}

template <class Entry>
float positionOf(const Entry& entry, PelkContext& context) {
    return entry.positionTexture ? entry.positionTexture->getTexFloat(context) : entry.position;
}

/// Of equal positions the first counts. A NaN is never the better one; where all are, the searches
/// end with the first point.
template <class Entry>
Segment findTextured(const GrowTable<Entry>& entries, PelkContext& context, float t) {
    constexpr float kNone = 1e18f;  // beyond every position: the end of a ramp that has no point
    int least = 0, greatest = 0;
    float leastPosition = kNone, greatestPosition = -kNone;
    Segment segment{.lower = 0, .lowerPosition = -kNone, .upperPosition = kNone};
    for (int i = 0; i < entries.size(); ++i) {
        const float position = positionOf(entries[i], context);
        if (position >= t && position < segment.upperPosition) {
            segment.upper = i;
            segment.upperPosition = position;
        }
        if (position < leastPosition) {
            least = i;
            leastPosition = position;
        }
        if (position > greatestPosition) {
            greatest = i;
            greatestPosition = position;
        }
    }
    if (segment.upper < 0)
        return {.lower = greatest};
    if (segment.upper == least)
        return {.upper = least};
    for (int i = 0; i < entries.size(); ++i) {
        if (i == segment.upper)
            continue;
        const float position = positionOf(entries[i], context);
        if (position < segment.upperPosition && position > segment.lowerPosition) {
            segment.lower = i;
            segment.lowerPosition = position;
        }
    }
    return segment;
}

AColor valueOf(const ColorRampEntry& entry, PelkContext& context) {
    return entry.valueTexture ? entry.valueTexture->getTexColor(context) : entry.value;
}

float valueOf(const FloatRampEntry& entry, PelkContext& context) {
    return entry.valueTexture ? entry.valueTexture->getTexFloat(context) : entry.value;
}

float weighted(float a, float weightA, float b, float weightB) {
    return a * weightA + b * weightB;
}

AColor weighted(const AColor& a, float weightA, const AColor& b, float weightB) {
    return {a.color * weightA + b.color * weightB, weighted(a.alpha, weightA, b.alpha, weightB)};
}

/// `t` lies above the lower position and not above the upper one, so nothing divides by 0.
template <class Value>
Value interpolate(int kind, const Value& lower, const Value& upper, const Segment& segment,
                  float t) {
    const float width = segment.upperPosition - segment.lowerPosition;
    const float f = (t - segment.lowerPosition) / width;
    switch (kind) {
        case kRampLinear:
            // Each weight from its own end, so that both ends are met exactly.
            return weighted(lower, (segment.upperPosition - t) / width, upper, f);
        case kRampSmooth: {
            const float s = f * ((3.0f - f) - f) * f;
            return weighted(lower, 1.0f - s, upper, s);
        }
        case kRampSpline: {
            const float w = (1.0f - std::cos(f * 3.1415927f)) * 0.5f;
            return weighted(lower, 1.0f - w, upper, w);
        }
        default:
            return lower;
    }
}

template <class Entry>
auto eval(const Ramp<Entry>& ramp, PelkContext& context, float position) {
    using Value = decltype(Entry::value);
    const GrowTable<Entry>& entries = ramp.entries;
    if (entries.isEmpty())
        return Value{};
    if (entries.size() == 1)
        return valueOf(entries[0], context);
    const float t = std::min(position, 1.0f);
    const Segment segment =
        ramp.hasTexturedPositions ? findTextured(entries, context, t) : findSorted(entries, t);
    if (segment.lower < 0 || segment.upper < 0)
        return valueOf(entries[std::max(segment.lower, segment.upper)], context);
    const Entry& lower = entries[segment.lower];
    const Value lowerValue = valueOf(lower, context);
    if (lower.interpolation == kRampStep)
        return lowerValue;  // the upper value is not read: it may be a costly texture
    return interpolate(lower.interpolation, lowerValue, valueOf(entries[segment.upper], context),
                       segment, t);
}

}  // namespace

void loadRamp(ColorRamp& ramp, const PelkParameterList& params, const RampParamNames& names,
              double time) {
    load(ramp, params, names, time);
}

void loadRamp(FloatRamp& ramp, const PelkParameterList& params, const RampParamNames& names,
              double time) {
    load(ramp, params, names, time);
}

AColor evalColorRamp(const ColorRamp& ramp, PelkContext& context, float position) {
    return eval(ramp, context, position);
}

float evalFloatRamp(const FloatRamp& ramp, PelkContext& context, float position) {
    return eval(ramp, context, position);
}

}  // namespace Tarnkit
