#include <cstring>

#include "pelk/contract/parameters.h"
#include "pelk/contract/plugin_desc.h"

namespace Tarnkit {
namespace {

/// What all parameters have.
ParameterDesc describe(const char* name, ParameterType type, int count, const char* description,
                       const char* guide) {
    return {.name = name, .type = type, .count = count, .description = description, .guide = guide};
}

ParameterDesc withDefault(ParameterDesc parameter, int value) {
    parameter.hasDefault = true;
    parameter.intDefault = value;
    return parameter;
}

ParameterDesc withDefault(ParameterDesc parameter, AColor value) {
    parameter.hasDefault = true;
    parameter.colorDefault = value;
    return parameter;
}

ParameterDesc withDefault(ParameterDesc parameter, float value) {
    return withDefault(parameter, AColor{Color(value), 1.0f});
}

}  // namespace

PelkParameterListDesc::PelkParameterListDesc() = default;
PelkParameterListDesc::~PelkParameterListDesc() = default;

void PelkParameterListDesc::addParamBool(const char* name, bool value, int count,
                                         const char* description, const char* guide) {
    addParam(
        withDefault(describe(name, ParameterType::Bool, count, description, guide), value ? 1 : 0));
}

void PelkParameterListDesc::addParamInt(const char* name, int value, int count,
                                        const char* description, const char* guide) {
    addParam(withDefault(describe(name, ParameterType::Int, count, description, guide), value));
}

void PelkParameterListDesc::addParamFloat(const char* name, float value, int count,
                                          const char* description, const char* guide) {
    addParam(withDefault(describe(name, ParameterType::Float, count, description, guide), value));
}

void PelkParameterListDesc::addParamColor(const char* name, Color value, int count,
                                          const char* description, const char* guide) {
    addParam(withDefault(describe(name, ParameterType::Color, count, description, guide),
                         AColor{value, 1.0f}));
}

void PelkParameterListDesc::addParamPlugin(const char* name, u64 interfaceID, int count,
                                           const char* description, const char* guide) {
    ParameterDesc parameter = describe(name, ParameterType::Plugin, count, description, guide);
    parameter.interfaceID = interfaceID;
    addParam(parameter);
}

void PelkParameterListDesc::addParamString(const char* name, const char* value, int count,
                                           const char* description, const char* guide) {
    ParameterDesc parameter = describe(name, ParameterType::String, count, description, guide);
    parameter.hasDefault = value != nullptr;
    parameter.stringDefault = value;
    addParam(parameter);
}

void PelkParameterListDesc::addParamTexture(const char* name, int count, const char* description,
                                            const char* guide) {
    addParam(describe(name, ParameterType::Texture, count, description, guide));
}

void PelkParameterListDesc::addParamTexture(const char* name, AColor value, int count,
                                            const char* description, const char* guide) {
    addParam(withDefault(describe(name, ParameterType::Texture, count, description, guide), value));
}

void PelkParameterListDesc::addParamTextureFloat(const char* name, int count,
                                                 const char* description, const char* guide) {
    addParam(describe(name, ParameterType::TextureFloat, count, description, guide));
}

void PelkParameterListDesc::addParamTextureFloat(const char* name, float value, int count,
                                                 const char* description, const char* guide) {
    addParam(
        withDefault(describe(name, ParameterType::TextureFloat, count, description, guide), value));
}

void PelkParameterListDesc::addParamTextureInt(const char* name, int count, const char* description,
                                               const char* guide) {
    addParam(describe(name, ParameterType::TextureInt, count, description, guide));
}

void PelkParameterListDesc::addParamTextureInt(const char* name, int value, int count,
                                               const char* description, const char* guide) {
    addParam(
        withDefault(describe(name, ParameterType::TextureInt, count, description, guide), value));
}

void PelkParameterListDesc::addParam(const char* name, int typeNumber, int count,
                                     const char* description, const char* guide) {
    ParameterDesc parameter = describe(name, ParameterType::Other, count, description, guide);
    parameter.typeNumber = typeNumber;
    addParam(parameter);
}

void PelkParameterListDesc::addParam(const ParameterDesc& parameter) {
    table.append(parameter);
}

void PelkParameterListDesc::registerParameters(PelkPluginHost* host, PluginDesc* desc) const {
    if (!host)
        return;
    for (const ParameterDesc& parameter : table)
        host->addParameter(desc, parameter);
}

const ParameterDesc* PelkParameterListDesc::findParameter(const char* name) const {
    for (const ParameterDesc& parameter : table) {
        // A library may have listed one without a name.
        if (name && parameter.name && std::strcmp(parameter.name, name) == 0)
            return &parameter;
    }
    return nullptr;
}

}  // namespace Tarnkit
