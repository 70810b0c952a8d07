#include "pelk/contract/plugin_parameters.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <type_traits>

#include "pelk/base/memory.h"
#include "pelk/base/truncate.h"
#include "pelk/contract/context.h"

namespace Tarnkit {
namespace {

char* copyText(const char* text) {
    if (!text)
        return nullptr;
    const std::size_t size = std::strlen(text) + 1;
    return static_cast<char*>(std::memcpy(allocate(size), text, size));
}

/// Types of which a value between two keyframes can be made.
template <class T>
constexpr bool kBlends = std::is_same_v<T, float> || std::is_same_v<T, AColor>;

/// Types of which one plain value can stand for a texture.
template <class T>
constexpr bool kIsPlain = kBlends<T> || std::is_same_v<T, int>;

float blend(float a, float b, float share) {
    return a + (b - a) * share;
}

AColor blend(const AColor& a, const AColor& b, float share) {
    return {a.color + (b.color - a.color) * share, blend(a.alpha, b.alpha, share)};
}

// Texts, plug-ins: no number and no colour.

template <class T>
int toInt(const T&) {
    return 0;
}

template <class T>
float toFloat(const T&) {
    return 0.0f;
}

template <class T>
AColor toColor(const T&) {
    return {};
}

// Numbers and colours.

int toInt(int value) {
    return value;
}

int toInt(float value) {
    return truncateToInt(value);
}

int toInt(const AColor& value) {
    return toInt(mean(value.color));
}

float toFloat(int value) {
    return static_cast<float>(value);
}

float toFloat(float value) {
    return value;
}

float toFloat(const AColor& value) {
    return mean(value.color);
}

AColor toColor(float value) {
    return {Color(value), 1.0f};
}

AColor toColor(int value) {
    return toColor(static_cast<float>(value));
}

AColor toColor(const AColor& value) {
    return value;
}

template <class Value>
int toInt(const Textured<Value>& item) {
    return toInt(item.value);
}

template <class Value>
float toFloat(const Textured<Value>& item) {
    return toFloat(item.value);
}

template <class Value>
AColor toColor(const Textured<Value>& item) {
    return toColor(item.value);
}

}  // namespace

AColor ConstantTexture::getTexColor(PelkContext& context) {
    return parameter.getColor(0, context.time);
}

float ConstantTexture::getTexFloat(PelkContext& context) {
    return parameter.getFloat(0, context.time);
}

int ConstantTexture::getTexInt(PelkContext& context) {
    return parameter.getInt(0, context.time);
}

ParameterName::ParameterName(const char* name) : copy(copyText(name)) {}

ParameterName::~ParameterName() {
    freeMemory(copy);
}

template <class T>
ValueParameter<T>::Items::~Items() {
    if constexpr (std::is_same_v<T, const char*>) {
        for (const char* text : *this)
            freeMemory(const_cast<char*>(text));
    }
}

template <class T>
ValueParameter<T>::ValueParameter(const char* parameterName, const T& value)
    : ParameterName(parameterName), PelkPluginParameter(copy), isList(false), texture(*this) {
    items.resize(1);
    store(0, value);
}

template <class T>
ValueParameter<T>::ValueParameter(const char* parameterName, const std::vector<T>& values)
    : ParameterName(parameterName), PelkPluginParameter(copy), isList(true), texture(*this) {
    items.resize(static_cast<int>(values.size()));
    for (int i = 0; i < items.size(); ++i)
        store(i, values[i]);
}

template <class T>
ValueParameter<T>::ValueParameter(const char* parameterName,
                                  const std::vector<Keyframe<T>>& keyframes)
    : ParameterName(parameterName), PelkPluginParameter(copy), isList(false), texture(*this) {
    items.resize(static_cast<int>(keyframes.size()));
    for (int i = 0; i < items.size(); ++i) {
        assert(i == 0 || keyframes[i - 1].time <= keyframes[i].time);
        times.append(keyframes[i].time);
        store(i, keyframes[i].value);
    }
}

template <class T>
ValueParameter<T>::~ValueParameter() = default;

template <class T>
void ValueParameter<T>::store(int index, const T& value) {
    if constexpr (std::is_same_v<T, const char*>)
        items[index] = copyText(value);
    else
        items[index] = value;
}

template <class T>
bool ValueParameter<T>::isPlainValue() const {
    return kIsPlain<T> && !isList;
}

template <class T>
T ValueParameter<T>::blendedAt(double time) const {
    const double* next = std::upper_bound(times.begin(), times.end(), time);
    const int after = static_cast<int>(next - times.begin());
    if (after == 0)
        return items[0];
    const T& last = items[after - 1];
    if constexpr (kBlends<T>) {
        if (next != times.end()) {
            const double share = (time - next[-1]) / (next[0] - next[-1]);
            return blend(last, items[after], static_cast<float>(share));
        }
    }
    return last;
}

template <class T>
bool ValueParameter<T>::has(int index) const {
    const int count = isList ? items.size() : std::min(items.size(), 1);
    return index >= 0 && index < count;
}

template <class T>
T ValueParameter<T>::valueAt(int index, double time) const {
    if (!has(index))
        return T{};
    return times.isEmpty() ? items[index] : blendedAt(time);
}

template <class T>
PluginInterface* ValueParameter<T>::getInterface(u64 id) {
    PluginInterface* const own =
        isPlainValue() ? ConstantTexture::Offered::find(texture, id) : nullptr;
    return own ? own : PluginBase::getInterface(id);
}

template <class T>
int ValueParameter<T>::getCount(double) {
    return isList ? items.size() : -1;
}

template <class T>
int ValueParameter<T>::openItem(int) {
    return -1;
}

template <class T>
void ValueParameter<T>::closeItem(int) {}

template <class T>
int ValueParameter<T>::getInt(int index, double time) {
    return toInt(valueAt(index, time));
}

template <class T>
float ValueParameter<T>::getFloat(int index, double time) {
    return toFloat(valueAt(index, time));
}

template <class T>
AColor ValueParameter<T>::getColor(int index, double time) {
    // Where there is no number, alpha 0 too: toColor(0) would be an opaque black.
    return has(index) ? toColor(valueAt(index, time)) : AColor();
}

template <class T>
const char* ValueParameter<T>::getString([[maybe_unused]] int index, [[maybe_unused]] double time) {
    if constexpr (std::is_same_v<T, const char*>)
        return valueAt(index, time);
    else
        return nullptr;
}

template <class T>
PluginBase* ValueParameter<T>::getObject([[maybe_unused]] int index, [[maybe_unused]] double time) {
    if constexpr (std::is_same_v<T, PluginBase*>)
        return valueAt(index, time);
    else if constexpr (requires(T item) { item.texture; })
        return valueAt(index, time).texture;
    else
        return isPlainValue() && index == 0 ? this : nullptr;
}

template <class T>
PelkIntList ValueParameter<T>::getIntList(double time) {
    if constexpr (std::is_same_v<T, int>) {
        if (isList || times.isEmpty())
            return {items.size(), items.begin()};
        // Integers aren't blended: the one keyframe that holds at `time`.
        const auto next = std::upper_bound(times.begin(), times.end(), time);
        const auto current = std::max<std::ptrdiff_t>(next - times.begin() - 1, 0);
        return {1, items.begin() + current};
    }
    return {};
}

PairListParameter::PairListParameter(const char* parameterName,
                                     const std::vector<NumberAndPlugin>& pairs)
    : ParameterName(parameterName), PelkPluginParameter(copy) {
    for (const NumberAndPlugin& pair : pairs)
        items.append(pair);
}

int PairListParameter::getCount(double) {
    return opened ? 2 : items.size();
}

int PairListParameter::openItem(int index) {
    if (opened || index < 0 || index >= items.size())
        return -1;
    opened = &items[index];
    return index;
}

void PairListParameter::closeItem(int) {
    opened = nullptr;
}

int PairListParameter::getInt(int index, double) {
    return opened && index == 0 ? opened->number : 0;
}

float PairListParameter::getFloat(int index, double time) {
    return static_cast<float>(getInt(index, time));
}

AColor PairListParameter::getColor(int index, double time) {
    return opened && index == 0 ? toColor(getInt(index, time)) : AColor();
}

PluginBase* PairListParameter::getObject(int index, double) {
    return opened && index == 1 ? opened->plugin : nullptr;
}

template class ValueParameter<int>;
template class ValueParameter<float>;
template class ValueParameter<AColor>;
template class ValueParameter<const char*>;
template class ValueParameter<PluginBase*>;
template class ValueParameter<Textured<float>>;
template class ValueParameter<Textured<AColor>>;

}  // namespace Tarnkit
