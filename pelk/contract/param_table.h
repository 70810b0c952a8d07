#pragma once

#include <concepts>
#include <span>
#include <type_traits>
#include <variant>

#include "pelk/contract/parameters.h"

// A plug-in class writes its parameters down once, as a table of rows:
//
//     constexpr ParamTable kParams{
//         pluginParam<MaterialInterface>("base_mtl", &TintParams::baseMtl, "Material behind it"),
//         floatParam("strength", &TintParams::strength, 1.0f, "0 - clear, 1 - full tint"),
//         stringListParam<TintParams>("set_names", "Read by name in frameBegin"),
//     };
//
// How a value travels from there:
// - The descriptor's constructor lists the rows. Hosts read names, types and texts from the list,
//   show them to users and check scenes against them.
// - The constructor of an instance binds the fields, which hold the defaults from then on.
// - The host sets what the scene gives (setParameter), also between frames. No field changes yet.
// - frameBegin of the plug-in's base rewrites every bound field, at the frame's time. What the
//   scene sets nothing for goes back to its default, even if the plug-in has changed the field
//   meanwhile.
// - Hits read the fields on all render threads. Nothing writes them before the next frameBegin.
//
// What has no field is looked up in frameBegin, after the base's, and is null if the scene gives
// nothing:
//
//     if (PelkPluginParameter* names = paramList.getParam("set_names"))
//         for (int i = 0; i < names->getCount(time); ++i)
//             addSet(names->getString(i, time));

namespace Tarnkit {

/// One row of a parameter table: what hosts are told, and the field of `Params` that follows the
/// value. `Params` is the struct with the values of one plug-in's instance.
template <class Params>
struct ParamRow {
    /// Name, type, default, texts and the interface that a value must offer. The texts are literals
    /// of the plug-in's library: hosts keep the pointers.
    ParameterDesc desc;

    /// The field. None, or a null one, for a parameter that the plug-in reads by name when it needs
    /// it (PelkParameterList::getParam): texts and lists of numbers can't be bound, and are wanted
    /// once a frame at most.
    std::variant<std::monostate, int Params::*, float Params::*, Color Params::*,
                 PluginBase * Params::*, TextureInterface * Params::*,
                 TextureFloatInterface * Params::*, TextureIntInterface * Params::*,
                 PelkPluginList Params::*>
        field{};

    /// Has the field follow the value in `list`, and writes the default into it. `params` must live
    /// as long as the list, which keeps the field's address; both are members of one instance.
    void bind(PelkParameterList& list, Params& params) const {
        const auto bindTo = [&](auto member) {
            if constexpr (!std::is_same_v<decltype(member), std::monostate>) {
                if (member)
                    list.setParamCache(desc.name, params.*member);
            }
        };
        std::visit(bindTo, field);
    }
};

/// The texts at the end of a row, for users: first the description, a sentence; then the guide,
/// hints for the widget in which the value is edited. Each may be left out or null.
template <class T>
concept ParamText = std::convertible_to<T, const char*>;

/// No field: the parameter is read by name when the plug-in needs it. Of what type the null is
/// doesn't matter, as nothing is bound.
template <class P>
inline constexpr int P::*kByName = nullptr;

/// A row of its parts: what the functions below have in common.
template <class P, class Value>
constexpr ParamRow<P> paramRow(ParameterType type, const char* name, Value P::*field,
                               const char* description = nullptr, const char* guide = nullptr) {
    return {{.name = name, .type = type, .description = description, .guide = guide}, field};
}

/// The row with a default. Records of parameters keep one in either of two forms: a whole number,
/// for switches, numbers of ids and choices, or a colour, whose red channel stands for a single
/// number. A parameter without a default has none to show and starts as null or an empty list.
template <class P>
constexpr ParamRow<P> withDefault(ParamRow<P> row, int whole, AColor color = {}) {
    row.desc.hasDefault = true;
    row.desc.intDefault = whole;
    row.desc.colorDefault = color;
    return row;
}

/// The row as a list, which its record says by a count of 0, "any number"; `id` is the interface
/// that its plug-ins must offer, 0 for any.
template <class P>
constexpr ParamRow<P> asList(ParamRow<P> row, u64 id = 0) {
    row.desc.count = 0;
    row.desc.interfaceID = id;
    return row;
}

// Rows of single values. In all of them `name` is what scenes write: lower_case, and fixed once a
// scene has it. `field` is written with the default when the instance is constructed, and with the
// value of the frame's time in each frameBegin; hits read it without a lock, for nothing writes it
// while a frame renders. `value` is the default, which hosts also show.

/// A switch. Its field is an int, 0 or 1: hosts of this contract bind no field of another width.
template <class P, ParamText... Texts>
constexpr ParamRow<P> boolParam(const char* name, int P::*field, bool value, Texts... texts) {
    return withDefault(paramRow(ParameterType::Bool, name, field, texts...), value);
}

/// A whole number. A choice is one too: its text says what each value means. A host passes
/// on what a scene gives, so whoever reads the field bears values outside of the choice.
template <class P, ParamText... Texts>
constexpr ParamRow<P> intParam(const char* name, int P::*field, int value, Texts... texts) {
    return withDefault(paramRow(ParameterType::Int, name, field, texts...), value);
}

/// A number. Its unit and range stand at the field, and for users in the text. No host clamps:
/// that is done in frameBegin, once, where a value out of range would break the shading.
template <class P, ParamText... Texts>
constexpr ParamRow<P> floatParam(const char* name, float P::*field, float value, Texts... texts) {
    return withDefault(paramRow(ParameterType::Float, name, field, texts...), 0,
                       {Color(value), 1.0f});
}

/// A colour, linear, per channel and without a bound: filters may brighten. The alpha that a scene
/// may give is dropped; a parameter for which it counts is a texture.
template <class P, ParamText... Texts>
constexpr ParamRow<P> colorParam(const char* name, Color P::*field, Color value, Texts... texts) {
    return withDefault(paramRow(ParameterType::Color, name, field, texts...), 0, {value, 1.0f});
}

/// Another plug-in, of any kind. The field is null until the scene names one, and the plug-in stays
/// the host's. Which interfaces it offers is asked in frameBegin (findInterface), not at hits.
template <class P, ParamText... Texts>
constexpr ParamRow<P> pluginParam(const char* name, PluginBase* P::*field, Texts... texts) {
    return paramRow(ParameterType::Plugin, name, field, texts...);
}

/// The same, for a plug-in that offers `Interface`, so that a host can refuse others when it reads
/// the scene. The owner of the field still asks: not every host checks, and one may bind a plug-in
/// that offers less than its descriptor announces.
template <InterfaceClass Interface, class P, ParamText... Texts>
constexpr ParamRow<P> pluginParam(const char* name, PluginBase* P::*field, Texts... texts) {
    ParamRow<P> row = pluginParam(name, field, texts...);
    row.desc.interfaceID = Interface::kInterfaceID;
    return row;
}

/// A texture of colours. The field is null until the scene sets the parameter; a plain value that
/// it sets comes as a texture that is the same everywhere.
template <class P, ParamText... Texts>
constexpr ParamRow<P> textureParam(const char* name, TextureInterface* P::*field, Texts... texts) {
    return paramRow(ParameterType::Texture, name, field, texts...);
}

/// The same with a constant that hosts show to users. The field is null all the same until the
/// scene sets the parameter: the default says what the plug-in does without a texture.
template <class P, ParamText... Texts>
constexpr ParamRow<P> textureParam(const char* name, TextureInterface* P::*field, AColor value,
                                   Texts... texts) {
    return withDefault(textureParam(name, field, texts...), 0, value);
}

/// A texture of numbers; else as textureParam. Colour textures don't offer this interface unless
/// they say how a colour becomes a number: the field is null for one that doesn't.
template <class P, ParamText... Texts>
constexpr ParamRow<P> textureFloatParam(const char* name, TextureFloatInterface* P::*field,
                                        Texts... texts) {
    return paramRow(ParameterType::TextureFloat, name, field, texts...);
}

/// The same with a constant that hosts show to users, as with textureParam.
template <class P, ParamText... Texts>
constexpr ParamRow<P> textureFloatParam(const char* name, TextureFloatInterface* P::*field,
                                        float value, Texts... texts) {
    return withDefault(textureFloatParam(name, field, texts...), 0, {Color(value), 1.0f});
}

/// A texture of whole numbers, such as the ids by which MtlMulti picks; else as textureParam.
template <class P, ParamText... Texts>
constexpr ParamRow<P> textureIntParam(const char* name, TextureIntInterface* P::*field,
                                      Texts... texts) {
    return paramRow(ParameterType::TextureInt, name, field, texts...);
}

/// A text, such as the name of a file or of a channel. Has no field: read by name (getString), and
/// the plug-in itself falls back on the default where the scene sets none. `value` is the default
/// that hosts show, null for none.
template <class P, ParamText... Texts>
constexpr ParamRow<P> stringParam(const char* name, const char* value, Texts... texts) {
    ParamRow<P> row = paramRow<P>(ParameterType::String, name, kByName<P>, texts...);
    row.desc.hasDefault = value != nullptr;
    row.desc.stringDefault = value;
    return row;
}

// Lists. Those of plug-ins may fill a field, all others are read by name, when a frame begins: what
// a list says is looked up there and turned into the table that hits read.

/// Plug-ins that offer `Interface`. The array that the field points to belongs to the parameter
/// list and is written anew in each frameBegin. Entries that name nothing are null and keep their
/// place, so that lists which go by the same index stay in step. With a null field it is read by
/// name, item for item (getObject).
template <InterfaceClass Interface, class P, ParamText... Texts>
constexpr ParamRow<P> pluginListParam(const char* name, PelkPluginList P::*field, Texts... texts) {
    return asList(paramRow(ParameterType::Plugin, name, field, texts...), Interface::kInterfaceID);
}

/// A list whose items are lists themselves, of a number and a plug-in that offers `Interface`. Read
/// by name, each item between openItem and closeItem.
template <InterfaceClass Interface, class P, ParamText... Texts>
constexpr ParamRow<P> pairListParam(const char* name, Texts... texts) {
    ParamRow<P> row = pluginListParam<Interface, P>(name, nullptr, texts...);
    row.desc.ofPairs = true;
    return row;
}

/// Whole numbers, such as the ids beside a list of plug-ins. Read by name, as one (getIntList).
template <class P, ParamText... Texts>
constexpr ParamRow<P> intListParam(const char* name, Texts... texts) {
    return asList(paramRow(ParameterType::Int, name, kByName<P>, texts...));
}

/// The same with the value that hosts give to an item when users add one.
template <class P, ParamText... Texts>
constexpr ParamRow<P> intListParam(const char* name, int value, Texts... texts) {
    return withDefault(intListParam<P>(name, texts...), value);
}

/// Numbers, such as weights beside a list of plug-ins. Read by name, item for item (getFloat), as
/// many as getCount says: it may be longer or shorter than the lists that go with it.
template <class P, ParamText... Texts>
constexpr ParamRow<P> floatListParam(const char* name, Texts... texts) {
    return asList(paramRow(ParameterType::Float, name, kByName<P>, texts...));
}

/// Colours, for each of which a texture may stand, such as the values of a ramp. Read by name, item
/// for item: getColor gives the plain value, getObject the texture.
template <class P, ParamText... Texts>
constexpr ParamRow<P> textureListParam(const char* name, Texts... texts) {
    return asList(paramRow(ParameterType::Texture, name, kByName<P>, texts...));
}

/// Numbers, for each of which a texture may stand; else as textureListParam, with getFloat.
template <class P, ParamText... Texts>
constexpr ParamRow<P> textureFloatListParam(const char* name, Texts... texts) {
    return asList(paramRow(ParameterType::TextureFloat, name, kByName<P>, texts...));
}

/// The same by kTexturedFloatsType, the type by which hosts know the positions of ramps. Its record
/// has the count of a single value, as the type alone says that it is a list.
template <class P, ParamText... Texts>
constexpr ParamRow<P> texturedFloatsParam(const char* name, Texts... texts) {
    ParamRow<P> row = paramRow(ParameterType::Other, name, kByName<P>, texts...);
    row.desc.typeNumber = kTexturedFloatsType;
    return row;
}

/// Texts, such as names of shader sets. Read by name, item for item (getString), which answers null
/// for an item that is no text.
template <class P, ParamText... Texts>
constexpr ParamRow<P> stringListParam(const char* name, Texts... texts) {
    return asList(stringParam<P>(name, nullptr, texts...));
}

template <class Params>
class ParamRows;

/// The parameters of one kind of plug-in, in the order in which hosts show them: the one place
/// where their names, defaults and texts stand. The descriptor registers from it and each instance
/// binds its fields from it, so the two can't disagree.
///
/// A table is constexpr. Descriptors are built before `main`, in an order among source files that
/// no one can rely on; a table that had to be constructed might not be there yet.
template <class Params, int N>
class ParamTable {
public:
    template <class... Rows>
    constexpr explicit ParamTable(const ParamRow<Params>& first, const Rows&... others)
        : rows{first, others...} {}
    // The first row stands apart so that `Params` and the length can be deduced: an empty table
    // has neither, and a plug-in without parameters needs none.

    /// As in ParamRows, for a plug-in class that does without WithParams.
    void addTo(PelkParameterListDesc& list) const { ParamRows<Params>(*this).addTo(list); }
    void bind(PelkParameterList& list, Params& params) const {
        ParamRows<Params>(*this).bind(list, params);
    }

private:
    friend class ParamRows<Params>;  // the one reader; a table is only passed on as that
    ParamRow<Params> rows[N];        // in the order in which hosts show them
};

template <class Params, class... Rows>
ParamTable(const ParamRow<Params>&, const Rows&...) -> ParamTable<Params, 1 + sizeof...(Rows)>;

/// A table of whatever length, as headers name it: the table itself, with its texts, stays in the
/// source that writes it down. Points to the table, which must have static storage: descriptors and
/// parameter lists keep pointers to its names for as long as the library is loaded.
template <class Params>
class ParamRows {
public:
    template <int N>
    /// Not explicit, as of a span: a function that names the table returns the rows.
    constexpr ParamRows(const ParamTable<Params, N>& table) : rows(table.rows) {}

    /// Lists the parameters in a descriptor. Throws ExceptionMsg if there is no memory for them.
    void addTo(PelkParameterListDesc& list) const {
        for (const ParamRow<Params>& row : rows)
            list.addParam(row.desc);
    }

    /// Has the fields of `params` follow the values of an instance, and gives them their defaults.
    /// Throws ExceptionMsg if there is no memory.
    void bind(PelkParameterList& list, Params& params) const {
        for (const ParamRow<Params>& row : rows)
            row.bind(list, params);
    }

    /// Calls `use` with each field of `params` that is a number or a colour, in the order of the
    /// rows. Texts, lists and plug-ins are left out. For hosts that compare instances. Any thread,
    /// between frames; allocates nothing.
    template <class Use>
    void forEachNumber(const Params& params, Use use) const {
        for (const ParamRow<Params>& row : rows) {
            if (const auto* whole = std::get_if<int Params::*>(&row.field); whole && *whole)
                use(params.**whole);
            else if (const auto* real = std::get_if<float Params::*>(&row.field); real && *real)
                use(params.**real);
            else if (const auto* color = std::get_if<Color Params::*>(&row.field); color && *color)
                use(params.**color);
        }
    }

private:
    std::span<const ParamRow<Params>> rows;
};

/// A plug-in class with parameters: `Base`, a class derived from PelkPlugin, and `params`, whose
/// fields hold the defaults once it is constructed and the host's values from each frameBegin on.
/// `P` is the struct of the fields and names its table:
///
///     struct TintParams {
///         PluginBase* baseMtl = nullptr;
///         float strength = 1.0f;
///         static ParamRows<TintParams> table();  // in the source: return kParams;
///     };
///     class MtlTint final : public WithParams<TintParams, PelkMaterial> { ...
///
/// `params` is written in frameBegin, on one thread, and only read by the render threads. A class
/// that changes a field in its own frameBegin (a default that follows another parameter) does so
/// after the call of the base, which would undo it. The table is asked for by a function, as a
/// header that named the table would have to know its length.
template <class P, class Base>
class WithParams : public Base {
public:
    /// Binds the fields. `pluginDesc` outlives the instance; a null one, as in tests, has no
    /// defaults.
    explicit WithParams(PelkPluginDesc* pluginDesc) : Base(pluginDesc) {
        P::table().bind(this->paramList, params);
    }
    /// For the descriptor, which adds each kind's parameters once, when it is made. Parameters that
    /// `Base` has already come first. Not virtual: no instance exists by then.
    static void addParameters(PelkParameterListDesc& list) {
        if constexpr (requires { Base::addParameters(list); })
            Base::addParameters(list);
        P::table().addTo(list);
    }

protected:
    /// The values of the frame, for the class itself. Not const: see above.
    P params;
};

}  // namespace Tarnkit
