#include <cstring>
#include <new>
#include <variant>

#include "pelk/base/memory.h"
#include "pelk/contract/parameters.h"
#include "pelk/contract/plugin.h"
#include "pelk/contract/plugin_desc.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {
namespace {

using Field = std::variant<int*, float*, Color*, PluginBase**, TextureInterface**,
                           TextureFloatInterface**, TextureIntInterface**, PelkPluginList*>;

/// A field of the plug-in and where its value comes from.
struct Binding {
    const char* name;
    const ParameterDesc* desc;       ///< null if the plug-in's kind has no such parameter
    PelkPluginParameter* parameter;  ///< null until one is set
    Field field;
    Plugin** items;  ///< array of a plug-in list; the field's own may have been overwritten
    int capacity;    ///< entries that `items` has room for
};

/// What a field takes its value from: the parameter that is set, else the registered default.
struct Source {
    Binding& binding;
    double time;

    PelkPluginParameter* parameter() const { return binding.parameter; }
    const ParameterDesc& desc() const { return *binding.desc; }

    /// The interface of the object behind the value, null if it lacks that. A texture has no
    /// default: without a value it is null.
    template <class Interface>
    Interface* interfaceOf() const {
        return parameter() ? findInterface<Interface>(parameter()->getObject(0, time)) : nullptr;
    }
};

bool isWhole(ParameterType type) {
    return type == ParameterType::Bool || type == ParameterType::Int;
}

void refresh(const Source& from, int& field) {
    field = from.parameter() ? from.parameter()->getInt(0, from.time) : from.desc().intDefault;
}

void refresh(const Source& from, float& field) {
    if (from.parameter())
        field = from.parameter()->getFloat(0, from.time);
    else if (isWhole(from.desc().type))
        field = static_cast<float>(from.desc().intDefault);
    else
        field = from.desc().colorDefault.color.r;
}

void refresh(const Source& from, Color& field) {
    field = from.parameter() ? from.parameter()->getColor(0, from.time).color
                             : from.desc().colorDefault.color;
}

void refresh(const Source& from, PluginBase*& field) {
    field = from.parameter() ? from.parameter()->getObject(0, from.time) : nullptr;
}

void refresh(const Source& from, TextureInterface*& field) {
    field = from.interfaceOf<TextureInterface>();
}

void refresh(const Source& from, TextureFloatInterface*& field) {
    field = from.interfaceOf<TextureFloatInterface>();
}

void refresh(const Source& from, TextureIntInterface*& field) {
    field = from.interfaceOf<TextureIntInterface>();
}

/// The number of objects behind a parameter; a single value counts as a list of one.
int countObjects(PelkPluginParameter* parameter, double time) {
    if (!parameter)
        return 0;
    const int count = parameter->getCount(time);
    return count < 0 ? 1 : count;
}

void refresh(const Source& from, PelkPluginList& field) {
    Binding& binding = from.binding;
    const int count = countObjects(from.parameter(), from.time);
    if (count > binding.capacity) {
        Plugin** grown = allocateArray<Plugin*>(count);
        freeMemory(binding.items);
        binding.items = grown;
        binding.capacity = count;
    }
    for (int i = 0; i < count; ++i)
        binding.items[i] = dynamic_cast<Plugin*>(from.parameter()->getObject(i, from.time));
    field = {count, binding.items};
}

bool isOfType(const int*, const ParameterDesc& desc) {
    return !desc.isList() && isWhole(desc.type);
}

bool isOfType(const float*, const ParameterDesc& desc) {
    return !desc.isList() && desc.type == ParameterType::Float;
}

bool isOfType(const Color*, const ParameterDesc& desc) {
    return !desc.isList() && desc.type == ParameterType::Color;
}

bool isOfType(PluginBase* const*, const ParameterDesc& desc) {
    return !desc.isList() && desc.type == ParameterType::Plugin;
}

bool isOfType(TextureInterface* const*, const ParameterDesc& desc) {
    return !desc.isList() && desc.type == ParameterType::Texture;
}

bool isOfType(TextureFloatInterface* const*, const ParameterDesc& desc) {
    return !desc.isList() && desc.type == ParameterType::TextureFloat;
}

bool isOfType(TextureIntInterface* const*, const ParameterDesc& desc) {
    return !desc.isList() && desc.type == ParameterType::TextureInt;
}

bool isOfType(const PelkPluginList*, const ParameterDesc& desc) {
    return desc.isList() && desc.type == ParameterType::Plugin && !desc.ofPairs;
}

void refresh(Binding& binding, double time) {
    if (!binding.parameter && !binding.desc)
        return;
    std::visit([&](auto* field) { refresh(Source{binding, time}, *field); }, binding.field);
}

}  // namespace

struct PelkParameterList::State {
    PelkParameterListDesc* desc = nullptr;
    GrowTable<Binding> bindings;
    GrowTable<PelkPluginParameter*> values;
    u64 numRefreshes = 0;

    /// The entry for the parameter of that name, or null.
    PelkPluginParameter** find(const char* name) {
        if (!name)
            return nullptr;
        for (PelkPluginParameter*& value : values) {
            if (std::strcmp(value->getName(), name) == 0)
                return &value;
        }
        return nullptr;
    }

    void bind(const char* name, Field field) {
        PelkPluginParameter** value = find(name);
        bindings.append({.name = name,
                         .desc = desc ? desc->findParameter(name) : nullptr,
                         .parameter = nullptr,
                         .field = field,
                         .items = nullptr,
                         .capacity = 0});
        Binding& binding = bindings[bindings.size() - 1];
        refresh(binding, 0.0);
        binding.parameter = value ? *value : nullptr;
    }
};

PelkParameterList::PelkParameterList(PelkPluginDesc* desc)
    : state(new (allocate(sizeof(State))) State) {
    state->desc = desc ? desc->getParameterListDesc() : nullptr;
}

PelkParameterList::~PelkParameterList() {
    for (const Binding& binding : state->bindings)
        freeMemory(binding.items);
    state->~State();
    freeMemory(state);
}

void PelkParameterList::setParamCache(const char* name, int& field) {
    state->bind(name, &field);
}

void PelkParameterList::setParamCache(const char* name, float& field) {
    state->bind(name, &field);
}

void PelkParameterList::setParamCache(const char* name, Color& field) {
    state->bind(name, &field);
}

void PelkParameterList::setParamCache(const char* name, PluginBase*& field) {
    state->bind(name, &field);
}

void PelkParameterList::setParamCache(const char* name, TextureInterface*& field) {
    state->bind(name, &field);
}

void PelkParameterList::setParamCache(const char* name, TextureFloatInterface*& field) {
    state->bind(name, &field);
}

void PelkParameterList::setParamCache(const char* name, TextureIntInterface*& field) {
    state->bind(name, &field);
}

void PelkParameterList::setParamCache(const char* name, PelkPluginList& field) {
    state->bind(name, &field);
}

/// A plug-in may have overwritten a field since the last call, as one that folds several parameters
/// into one does, so no field is passed over because its parameter didn't change.
void PelkParameterList::cacheParams(double time, const TracePoint&) {
    ++state->numRefreshes;
    for (Binding& binding : state->bindings)
        refresh(binding, time);
}

const PelkParameterListDesc* PelkParameterList::getKindParameters() const {
    return state->desc;
}

BoundField PelkParameterList::getBoundField(int index) const {
    const Binding& binding = state->bindings[index];
    const auto fits = [&](const auto* field) { return isOfType(field, *binding.desc); };
    return {binding.name, binding.desc, binding.desc && std::visit(fits, binding.field)};
}

int PelkParameterList::getNumBoundFields() const {
    return state->bindings.size();
}

u64 PelkParameterList::getNumRefreshes() const {
    return state->numRefreshes;
}

void PelkParameterList::setParam(PelkPluginParameter* parameter) {
    if (!parameter)
        return;
    if (PelkPluginParameter** old = state->find(parameter->getName()))
        *old = parameter;
    else
        state->values.append(parameter);
    for (Binding& binding : state->bindings) {
        if (binding.name && std::strcmp(binding.name, parameter->getName()) == 0)
            binding.parameter = parameter;
    }
}

PelkPluginParameter* PelkParameterList::getParam(const char* name) const {
    PelkPluginParameter** value = state->find(name);
    return value ? *value : nullptr;
}

}  // namespace Tarnkit
