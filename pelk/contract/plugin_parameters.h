#pragma once

// What a host gives the parameters of plug-ins: single values, lists, and values over time.

#include <vector>

#include "pelk/base/grow_table.h"
#include "pelk/contract/parameters.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {

/// A number or colour of a list that may come from a texture instead. `texture` is null where
/// none is connected; it is not owned.
template <class Value>
struct Textured {
    Value value{};
    PluginBase* texture = nullptr;
};

/// A value and the time from which on it holds, or at which a blend from the last one to it ends.
template <class Value>
struct Keyframe {
    double time = 0.0;
    Value value{};
};

/// The faces by which a plain value stands where a texture may stand: the same everywhere, with no
/// bump. Follows the parameter over the ray's time.
class PELK_API ConstantTexture final : public TextureInterface,
                                       public TextureFloatInterface,
                                       public TextureIntInterface {
public:
    explicit ConstantTexture(PelkPluginParameter& value) : parameter(value) {}

    PluginBase* getPlugin() override { return &parameter; }
    AColor getTexColor(PelkContext& context) override;
    float getTexFloat(PelkContext& context) override;
    int getTexInt(PelkContext& context) override;
    Vector getTexBump(PelkContext&) override { return {}; }

    using Offered = InterfaceList<TextureInterface, TextureFloatInterface, TextureIntInterface>;

private:
    PelkPluginParameter& parameter;
};

/// A private copy of a name, there before the parameter that shows it.
class PELK_API ParameterName {
protected:
    explicit ParameterName(const char* name);
    ~ParameterName();
    ParameterName(const ParameterName&) = delete;
    ParameterName& operator=(const ParameterName&) = delete;

    char* const copy;
};

/// A parameter that holds its values itself; plug-ins and textures in it are not owned. Types are
/// int, float, AColor, const char* (copied), PluginBase*, Textured<float> and Textured<AColor>.
/// It answers in every type that its own can be turned into: a number is a grey colour with alpha
/// 1, a colour's number is the mean of its channels, a float's int is cut towards 0 and limited.
/// What can't be turned, and an index that isn't there (a single value has the index 0), gives
/// 0, black or null. A single number or colour also stands for a texture.
template <class T>
class PELK_API ValueParameter : private ParameterName, public PelkPluginParameter {
public:
    ~ValueParameter() override;

    PluginInterface* getInterface(u64 id) override;
    int getCount(double time) override;
    int openItem(int index) override;
    void closeItem(int token) override;
    int getInt(int index, double time) override;
    float getFloat(int index, double time) override;
    AColor getColor(int index, double time) override;
    const char* getString(int index, double time) override;
    PluginBase* getObject(int index, double time) override;
    PelkIntList getIntList(double time) override;

protected:
    ValueParameter(const char* parameterName, const T& value);
    ValueParameter(const char* parameterName, const std::vector<T>& values);
    /// Keyframes by ascending time. Numbers and colours are blended in between, all else stands
    /// until the next. Before the first and after the last the nearest holds.
    ValueParameter(const char* parameterName, const std::vector<Keyframe<T>>& keyframes);

private:
    /// Frees the copies that it holds, if T is a text.
    struct Items : GrowTable<T> {
        ~Items();
    };

    void store(int index, const T& value);
    bool isPlainValue() const;
    bool has(int index) const;
    T valueAt(int index, double time) const;
    T blendedAt(double time) const;

    Items items;
    GrowTable<double> times;  ///< of keyframes, else empty
    bool isList;
    ConstantTexture texture;
};

/// An item of a PairListParameter.
struct NumberAndPlugin {
    int number = 0;
    PluginBase* plugin = nullptr;  ///< not owned; may be null
};

/// A list whose items are lists themselves, of a number (index 0) and a plug-in (index 1). They
/// are read while openItem has opened them; without an open item there are no values.
class PELK_API PairListParameter final : private ParameterName, public PelkPluginParameter {
public:
    PairListParameter(const char* parameterName, const std::vector<NumberAndPlugin>& pairs);

    int getCount(double time) override;
    int openItem(int index) override;
    void closeItem(int token) override;
    int getInt(int index, double time) override;
    float getFloat(int index, double time) override;
    AColor getColor(int index, double time) override;
    const char* getString(int, double) override { return nullptr; }
    PluginBase* getObject(int index, double time) override;
    PelkIntList getIntList(double) override { return {}; }

private:
    GrowTable<NumberAndPlugin> items;
    const NumberAndPlugin* opened = nullptr;
};

// Exported one by one: a type as hidden as AColor would hide what is made of it.
extern template class PELK_API ValueParameter<int>;
extern template class PELK_API ValueParameter<float>;
extern template class PELK_API ValueParameter<AColor>;
extern template class PELK_API ValueParameter<const char*>;
extern template class PELK_API ValueParameter<PluginBase*>;
extern template class PELK_API ValueParameter<Textured<float>>;
extern template class PELK_API ValueParameter<Textured<AColor>>;

template <class T>
class SingleParameter final : public ValueParameter<T> {
public:
    SingleParameter(const char* parameterName, const T& value)
        : ValueParameter<T>(parameterName, value) {}
};

template <class T>
class ListParameter final : public ValueParameter<T> {
public:
    ListParameter(const char* parameterName, const std::vector<T>& values)
        : ValueParameter<T>(parameterName, values) {}
};

template <class T>
class KeyframeParameter final : public ValueParameter<T> {
public:
    KeyframeParameter(const char* parameterName, const std::vector<Keyframe<T>>& keyframes)
        : ValueParameter<T>(parameterName, keyframes) {}
};

// A bool is an int of 0 or 1. A texture is the plug-in that offers it.
using BoolParameter = SingleParameter<int>;
using IntParameter = SingleParameter<int>;
using FloatParameter = SingleParameter<float>;
using StringParameter = SingleParameter<const char*>;
using PluginParameter = SingleParameter<PluginBase*>;
using TextureParameter = SingleParameter<PluginBase*>;

using BoolListParameter = ListParameter<int>;
using IntListParameter = ListParameter<int>;
using FloatListParameter = ListParameter<float>;
using ColorListParameter = ListParameter<AColor>;
using StringListParameter = ListParameter<const char*>;
using PluginListParameter = ListParameter<PluginBase*>;
using TextureListParameter = ListParameter<PluginBase*>;
using TexturedFloatListParameter = ListParameter<Textured<float>>;
using TexturedColorListParameter = ListParameter<Textured<AColor>>;

using IntKeyframes = KeyframeParameter<int>;
using FloatKeyframes = KeyframeParameter<float>;
using ColorKeyframes = KeyframeParameter<AColor>;
using PluginKeyframes = KeyframeParameter<PluginBase*>;

class ColorParameter final : public ValueParameter<AColor> {
public:
    ColorParameter(const char* parameterName, Color color)
        : ValueParameter(parameterName, AColor{color, 1.0f}) {}
    ColorParameter(const char* parameterName, AColor color)
        : ValueParameter(parameterName, color) {}
};

}  // namespace Tarnkit
