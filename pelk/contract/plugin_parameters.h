#pragma once

// What a host gives the parameters of plug-ins: single values, lists, and values over time. For
// hosts; plug-ins see them as PelkPluginParameter.
//
//     FloatParameter strength("strength", 0.5f);
//     ColorParameter tint("tint", Color(1, 0.5f, 0));
//     FloatKeyframes height("height", {{0.0, 1.0f}, {2.0, 4.0f}});  // 2.5 at the time 1
//     plugin.setParameter(&strength);
//     plugin.setParameter(&tint);
//     plugin.setParameter(&height);
//
// The host owns these objects and keeps each until the instance is gone or has been given another
// parameter of that name. All are built and destroyed on one thread, may throw an ExceptionMsg for
// lack of memory when they are built, and don't change after that; to change a value, set a new
// one.

#include <vector>

#include "pelk/base/grow_table.h"
#include "pelk/contract/parameters.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {

/// An item of a list of numbers or colours for which a texture may stand, as the control points of
/// a ramp. Both can be read: getFloat or getColor gives the value, getObject the texture.
template <class Value>
struct Textured {
    Value value{};
    PluginBase* texture = nullptr;  ///< not owned; null where none is connected
};

/// A value and the time from which on it holds, or at which a blend from the last one to it ends.
template <class Value>
struct Keyframe {
    double time = 0.0;  ///< in the scene's unit, that of FrameData::frameTime
    Value value{};
};

/// The interfaces by which a plain value stands where a texture may stand: the same at every hit,
/// with no bump. So a plug-in reads a texture parameter in one way, whether the scene gives a
/// number or connects a texture. Follows the parameter over the ray's time, PelkContext::time,
/// which can differ from ray to ray where the frame's time doesn't.
///
/// A part of its parameter, whose getInterface gives it out. Read by all render threads at once.
class PELK_API ConstantTexture final : public TextureInterface,
                                       public TextureFloatInterface,
                                       public TextureIntInterface {
public:
    /// `value` is the parameter that this is a part of.
    explicit ConstantTexture(PelkPluginParameter& value) : parameter(value) {}

    PluginBase* getPlugin() override { return &parameter; }
    // Converted as getColor, getFloat and getInt of the parameter convert.
    AColor getTexColor(PelkContext& context) override;
    float getTexFloat(PelkContext& context) override;
    int getTexInt(PelkContext& context) override;
    Vector getTexBump(PelkContext&) override { return {}; }

    using Offered = InterfaceList<TextureInterface, TextureFloatInterface, TextureIntInterface>;

private:
    PelkPluginParameter& parameter;
};

/// A private copy of a name. A base class ahead of PelkPluginParameter and not a member, as that
/// keeps the pointer from its construction on, and bases are constructed before members.
class PELK_API ParameterName {
protected:
    explicit ParameterName(const char* name);
    ~ParameterName();
    ParameterName(const ParameterName&) = delete;
    ParameterName& operator=(const ParameterName&) = delete;

    char* const copy;
};

/// A parameter that holds its values itself; plug-ins and textures in it are not owned. `T` is one
/// of int, float, AColor, const char* (copied), PluginBase*, Textured<float> and Textured<AColor>.
///
/// It answers in every type that its own can be turned into, since the plug-in decides which one it
/// reads: a number is a grey colour with alpha 1; a colour's number is the mean of its channels; a
/// float's int is cut towards 0 and limited to what an int holds. What can't be turned, and an
/// index that isn't there (a single value has the index 0), gives 0, black with alpha 0, or null. A
/// single number or colour also stands for a texture, by the interfaces of ConstantTexture.
///
/// The getters change nothing, so all render threads may call them at once.
template <class T>
class PELK_API ValueParameter : private ParameterName, public PelkPluginParameter {
public:
    ~ValueParameter() override;

    /// The interfaces of a texture if this is one number or colour.
    PluginInterface* getInterface(u64 id) override;
    /// -1 for a single value, with keyframes too.
    int getCount(double time) override;
    /// -1: no item is a list here.
    int openItem(int index) override;
    /// Does nothing, as nothing is opened.
    void closeItem(int token) override;
    // Converted from T as told above.
    int getInt(int index, double time) override;
    float getFloat(int index, double time) override;
    AColor getColor(int index, double time) override;
    /// The copy that is kept here, if T is a text; else null.
    const char* getString(int index, double time) override;
    /// The plug-in or texture of the item; for one number or colour this parameter itself, so that
    /// it is found where a texture is looked for.
    PluginBase* getObject(int index, double time) override;
    /// Of int only: the list, or the one value at `time`.
    PelkIntList getIntList(double time) override;

protected:
    // Texts and `parameterName` are copied. Called by the derived classes below, which have one
    // constructor each: a braced list at a call can mean one shape only.

    /// A single value.
    ValueParameter(const char* parameterName, const T& value);
    /// A list, empty if `values` is: that counts as set.
    ValueParameter(const char* parameterName, const std::vector<T>& values);
    /// A single value over time. Keyframes by ascending time; none at all give 0 and null. Floats
    /// and colours are blended linearly in between, all else stands until the next. Before the
    /// first and after the last the nearest holds.
    ValueParameter(const char* parameterName, const std::vector<Keyframe<T>>& keyframes);

private:
    /// Frees the copies that it holds, if T is a text.
    struct Items : GrowTable<T> {
        ~Items();
    };

    /// Writes an item for the first time; a text is copied.
    void store(int index, const T& value);
    /// Whether this can stand for a texture.
    bool isPlainValue() const;
    /// Whether there is a value of that index; keyframes have the index 0 alone.
    bool has(int index) const;
    /// The value, T{} if there is none of that index.
    T valueAt(int index, double time) const;
    /// Between the keyframes around `time`; there is at least one.
    T blendedAt(double time) const;

    Items items;              ///< the values, or those of the keyframes
    GrowTable<double> times;  ///< of keyframes, else empty
    bool isList;              ///< false for a single value, with keyframes or without
    ConstantTexture texture;  ///< given out by getInterface while isPlainValue
};

/// An item of a PairListParameter: a material id and the material that it stands for.
struct NumberAndPlugin {
    int number = 0;                ///< read as value 0 of the open item
    PluginBase* plugin = nullptr;  ///< read as value 1; not owned, may be null
};

/// A list whose items are lists themselves, of a number (index 0) and a plug-in (index 1), for
/// parameters with ParameterDesc::ofPairs. An item is read between openItem and closeItem, when
/// getCount answers 2; without an open item getCount answers the number of items, and there are no
/// values. What is open is noted here, so one thread reads at a time, as frameBegin does.
class PELK_API PairListParameter final : private ParameterName, public PelkPluginParameter {
public:
    /// Copies name and pairs; the plug-ins stay the scene's.
    PairListParameter(const char* parameterName, const std::vector<NumberAndPlugin>& pairs);

    int getCount(double time) override;
    /// -1 if there is no such item, or while another is open: pairs hold no lists.
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
    const NumberAndPlugin* opened = nullptr;  ///< the item that is open, else null
};

// Compiled once, in libpelk, so that each has its table of operations in one library. Exported one
// by one: an instantiation is as hidden as the least visible of its arguments, and AColor is not
// exported.
extern template class PELK_API ValueParameter<int>;
extern template class PELK_API ValueParameter<float>;
extern template class PELK_API ValueParameter<AColor>;
extern template class PELK_API ValueParameter<const char*>;
extern template class PELK_API ValueParameter<PluginBase*>;
extern template class PELK_API ValueParameter<Textured<float>>;
extern template class PELK_API ValueParameter<Textured<AColor>>;

/// One value, the same at all times.
template <class T>
class SingleParameter final : public ValueParameter<T> {
public:
    SingleParameter(const char* parameterName, const T& value)
        : ValueParameter<T>(parameterName, value) {}
};

/// A list of values, the same at all times. The host owns what the values point to.
template <class T>
class ListParameter final : public ValueParameter<T> {
public:
    ListParameter(const char* parameterName, const std::vector<T>& values)
        : ValueParameter<T>(parameterName, values) {}
};

/// One value over time: what an animated scene sets. A plug-in sees the value at the frame's time,
/// and as a texture at the ray's.
template <class T>
class KeyframeParameter final : public ValueParameter<T> {
public:
    KeyframeParameter(const char* parameterName, const std::vector<Keyframe<T>>& keyframes)
        : ValueParameter<T>(parameterName, keyframes) {}
};

// The names by which hosts make them, after the types of parameters: single values, lists, values
// over time. A bool is an int of 0 or 1. A texture is the plug-in that offers it, so a texture
// parameter takes a TextureParameter or, as a constant, a FloatParameter, IntParameter or
// ColorParameter.

using BoolParameter = SingleParameter<int>;     ///< ParameterType::Bool
using IntParameter = SingleParameter<int>;      ///< Int, and TextureInt without a texture
using FloatParameter = SingleParameter<float>;  ///< Float, and TextureFloat without a texture
using StringParameter = SingleParameter<const char*>;   ///< String; the text is copied
using PluginParameter = SingleParameter<PluginBase*>;   ///< Plugin; null for none
using TextureParameter = SingleParameter<PluginBase*>;  ///< Texture, TextureFloat, TextureInt

using BoolListParameter = ListParameter<int>;
using IntListParameter = ListParameter<int>;  ///< the list that getIntList shows whole
using FloatListParameter = ListParameter<float>;
using ColorListParameter = ListParameter<AColor>;
using StringListParameter = ListParameter<const char*>;
using PluginListParameter = ListParameter<PluginBase*>;  ///< what a PelkPluginList follows
using TextureListParameter = ListParameter<PluginBase*>;
using TexturedFloatListParameter = ListParameter<Textured<float>>;  ///< of the typeNumber 12
using TexturedColorListParameter = ListParameter<Textured<AColor>>;

using IntKeyframes = KeyframeParameter<int>;       ///< stands until the next: half an id is no id
using FloatKeyframes = KeyframeParameter<float>;   ///< blended linearly
using ColorKeyframes = KeyframeParameter<AColor>;  ///< blended linearly, the alpha too
using PluginKeyframes = KeyframeParameter<PluginBase*>;  ///< stands until the next

/// A single colour, linear; without an alpha of its own it covers in full. A class and not an
/// alias, so that a plain Color will do.
class ColorParameter final : public ValueParameter<AColor> {
public:
    ColorParameter(const char* parameterName, Color color)
        : ValueParameter(parameterName, AColor{color, 1.0f}) {}
    ColorParameter(const char* parameterName, AColor color)
        : ValueParameter(parameterName, color) {}
};

}  // namespace Tarnkit
