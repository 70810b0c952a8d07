#pragma once

#include <span>

#include "pelk/contract/parameters.h"

namespace Tarnkit {

/// One row of a parameter table: what the host is told, and the field of `Params` that follows the
/// value. A row without a field is read by name when it is needed.
template <class Params>
struct ParamRow {
    ParameterDesc desc;
    int Params::*intField = nullptr;
    float Params::*floatField = nullptr;
    Color Params::*colorField = nullptr;
    PluginBase* Params::*pluginField = nullptr;
    TextureInterface* Params::*textureField = nullptr;
    TextureFloatInterface* Params::*textureFloatField = nullptr;
    TextureIntInterface* Params::*textureIntField = nullptr;
    PelkPluginList Params::*listField = nullptr;

    void bind(PelkParameterList& list, Params& params) const {
        const auto bindIf = [&](auto field) {
            if (field)
                list.setParamCache(desc.name, params.*field);
        };
        bindIf(intField);
        bindIf(floatField);
        bindIf(colorField);
        bindIf(pluginField);
        bindIf(textureField);
        bindIf(textureFloatField);
        bindIf(textureIntField);
        bindIf(listField);
    }
};

// Rows of single values. Texts are optional, and null where they are left out.

template <class P>
constexpr ParamRow<P> boolParam(const char* name, int P::*field, bool value,
                                const char* description = nullptr, const char* guide = nullptr) {
    return {.desc = {.name = name,
                     .type = ParameterType::Bool,
                     .hasDefault = true,
                     .intDefault = value ? 1 : 0,
                     .description = description,
                     .guide = guide},
            .intField = field};
}

template <class P>
constexpr ParamRow<P> intParam(const char* name, int P::*field, int value,
                               const char* description = nullptr, const char* guide = nullptr) {
    return {.desc = {.name = name,
                     .type = ParameterType::Int,
                     .hasDefault = true,
                     .intDefault = value,
                     .description = description,
                     .guide = guide},
            .intField = field};
}

template <class P>
constexpr ParamRow<P> floatParam(const char* name, float P::*field, float value,
                                 const char* description = nullptr, const char* guide = nullptr) {
    return {.desc = {.name = name,
                     .type = ParameterType::Float,
                     .hasDefault = true,
                     .colorDefault = {Color(value), 1.0f},
                     .description = description,
                     .guide = guide},
            .floatField = field};
}

template <class P>
constexpr ParamRow<P> colorParam(const char* name, Color P::*field, Color value,
                                 const char* description = nullptr, const char* guide = nullptr) {
    return {.desc = {.name = name,
                     .type = ParameterType::Color,
                     .hasDefault = true,
                     .colorDefault = {value, 1.0f},
                     .description = description,
                     .guide = guide},
            .colorField = field};
}

/// A plug-in of any kind.
template <class P>
constexpr ParamRow<P> pluginParam(const char* name, PluginBase* P::*field,
                                  const char* description = nullptr, const char* guide = nullptr) {
    return {.desc = {.name = name,
                     .type = ParameterType::Plugin,
                     .description = description,
                     .guide = guide},
            .pluginField = field};
}

/// A plug-in that offers `Interface`.
template <InterfaceClass Interface, class P>
constexpr ParamRow<P> pluginParam(const char* name, PluginBase* P::*field,
                                  const char* description = nullptr, const char* guide = nullptr) {
    ParamRow<P> row = pluginParam(name, field, description, guide);
    row.desc.interfaceID = Interface::kInterfaceID;
    return row;
}

template <class P>
constexpr ParamRow<P> textureParam(const char* name, TextureInterface* P::*field,
                                   const char* description = nullptr, const char* guide = nullptr) {
    return {.desc = {.name = name,
                     .type = ParameterType::Texture,
                     .description = description,
                     .guide = guide},
            .textureField = field};
}

template <class P>
constexpr ParamRow<P> textureParam(const char* name, TextureInterface* P::*field, AColor value,
                                   const char* description = nullptr, const char* guide = nullptr) {
    ParamRow<P> row = textureParam(name, field, description, guide);
    row.desc.hasDefault = true;
    row.desc.colorDefault = value;
    return row;
}

template <class P>
constexpr ParamRow<P> textureFloatParam(const char* name, TextureFloatInterface* P::*field,
                                        const char* description = nullptr,
                                        const char* guide = nullptr) {
    return {.desc = {.name = name,
                     .type = ParameterType::TextureFloat,
                     .description = description,
                     .guide = guide},
            .textureFloatField = field};
}

template <class P>
constexpr ParamRow<P> textureFloatParam(const char* name, TextureFloatInterface* P::*field,
                                        float value, const char* description = nullptr,
                                        const char* guide = nullptr) {
    ParamRow<P> row = textureFloatParam(name, field, description, guide);
    row.desc.hasDefault = true;
    row.desc.colorDefault = {Color(value), 1.0f};
    return row;
}

template <class P>
constexpr ParamRow<P> textureIntParam(const char* name, TextureIntInterface* P::*field,
                                      const char* description = nullptr,
                                      const char* guide = nullptr) {
    return {.desc = {.name = name,
                     .type = ParameterType::TextureInt,
                     .description = description,
                     .guide = guide},
            .textureIntField = field};
}

// Lists. One without a field is read by name when it is needed.

template <InterfaceClass Interface, class P>
constexpr ParamRow<P> pluginListParam(const char* name, PelkPluginList P::*field,
                                      const char* description = nullptr,
                                      const char* guide = nullptr) {
    return {.desc = {.name = name,
                     .type = ParameterType::Plugin,
                     .count = 0,
                     .interfaceID = Interface::kInterfaceID,
                     .description = description,
                     .guide = guide},
            .listField = field};
}

/// A list whose items are lists themselves, of a number and a plug-in.
template <InterfaceClass Interface, class P>
constexpr ParamRow<P> pairListParam(const char* name, const char* description = nullptr,
                                    const char* guide = nullptr) {
    ParamRow<P> row = pluginListParam<Interface, P>(name, nullptr, description, guide);
    row.desc.ofPairs = true;
    return row;
}

template <class P>
constexpr ParamRow<P> intListParam(const char* name, int value, const char* description = nullptr,
                                   const char* guide = nullptr) {
    return {.desc = {.name = name,
                     .type = ParameterType::Int,
                     .count = 0,
                     .hasDefault = true,
                     .intDefault = value,
                     .description = description,
                     .guide = guide}};
}

template <class P>
constexpr ParamRow<P> stringListParam(const char* name, const char* description = nullptr,
                                      const char* guide = nullptr) {
    return {.desc = {.name = name,
                     .type = ParameterType::String,
                     .count = 0,
                     .description = description,
                     .guide = guide}};
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

    void addTo(PelkParameterListDesc& list) const { ParamRows<Params>(*this).addTo(list); }
    void bind(PelkParameterList& list, Params& params) const {
        ParamRows<Params>(*this).bind(list, params);
    }

private:
    friend class ParamRows<Params>;
    ParamRow<Params> rows[N];
};

template <class Params, class... Rows>
ParamTable(const ParamRow<Params>&, const Rows&...) -> ParamTable<Params, 1 + sizeof...(Rows)>;

/// A table of whatever length, as headers name it: the table itself stays in the source that
/// writes it down. Points to the table, which has static storage.
template <class Params>
class ParamRows {
public:
    template <int N>
    constexpr ParamRows(const ParamTable<Params, N>& table) : rows(table.rows) {}  // as a span does

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
/// `params` is written in frameBegin, on one thread, and only read by the render threads.
template <class P, class Base>
class WithParams : public Base {
public:
    explicit WithParams(PelkPluginDesc* pluginDesc) : Base(pluginDesc) {
        P::table().bind(this->paramList, params);
    }
    /// For the descriptor.
    static void addParameters(PelkParameterListDesc& list) { P::table().addTo(list); }

protected:
    P params;
};

}  // namespace Tarnkit
