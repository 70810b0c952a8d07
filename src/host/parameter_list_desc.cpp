#include <cstring>

#include "frame/parameters.h"
#include "frame/plugin_desc.h"

namespace Tarnkit {

PelkParameterListDesc::PelkParameterListDesc() = default;
PelkParameterListDesc::~PelkParameterListDesc() = default;

void PelkParameterListDesc::addParamBool(const char* name, bool value, int count,
                                         const char* description, const char* guide) {
    addParam({.name = name,
              .type = ParameterType::Bool,
              .count = count,
              .hasDefault = true,
              .intDefault = value ? 1 : 0,
              .description = description,
              .guide = guide});
}

void PelkParameterListDesc::addParamInt(const char* name, int value, int count,
                                        const char* description, const char* guide) {
    addParam({.name = name,
              .type = ParameterType::Int,
              .count = count,
              .hasDefault = true,
              .intDefault = value,
              .description = description,
              .guide = guide});
}

void PelkParameterListDesc::addParamFloat(const char* name, float value, int count,
                                          const char* description, const char* guide) {
    addParam({.name = name,
              .type = ParameterType::Float,
              .count = count,
              .hasDefault = true,
              .colorDefault = {Color(value), 1.0f},
              .description = description,
              .guide = guide});
}

void PelkParameterListDesc::addParamColor(const char* name, Color value, int count,
                                          const char* description, const char* guide) {
    addParam({.name = name,
              .type = ParameterType::Color,
              .count = count,
              .hasDefault = true,
              .colorDefault = {value, 1.0f},
              .description = description,
              .guide = guide});
}

void PelkParameterListDesc::addParamPlugin(const char* name, u64 interfaceID, int count,
                                           const char* description, const char* guide) {
    addParam({.name = name,
              .type = ParameterType::Plugin,
              .count = count,
              .interfaceID = interfaceID,
              .description = description,
              .guide = guide});
}

void PelkParameterListDesc::addParamString(const char* name, const char* value, int count,
                                           const char* description, const char* guide) {
    addParam({.name = name,
              .type = ParameterType::String,
              .count = count,
              .hasDefault = value != nullptr,
              .stringDefault = value,
              .description = description,
              .guide = guide});
}

void PelkParameterListDesc::addParamTexture(const char* name, int count, const char* description,
                                            const char* guide) {
    addParam({.name = name,
              .type = ParameterType::Texture,
              .count = count,
              .description = description,
              .guide = guide});
}

void PelkParameterListDesc::addParamTexture(const char* name, AColor value, int count,
                                            const char* description, const char* guide) {
    addParam({.name = name,
              .type = ParameterType::Texture,
              .count = count,
              .hasDefault = true,
              .colorDefault = value,
              .description = description,
              .guide = guide});
}

void PelkParameterListDesc::addParamTextureFloat(const char* name, int count,
                                                 const char* description, const char* guide) {
    addParam({.name = name,
              .type = ParameterType::TextureFloat,
              .count = count,
              .description = description,
              .guide = guide});
}

void PelkParameterListDesc::addParamTextureFloat(const char* name, float value, int count,
                                                 const char* description, const char* guide) {
    addParam({.name = name,
              .type = ParameterType::TextureFloat,
              .count = count,
              .hasDefault = true,
              .colorDefault = {Color(value), 1.0f},
              .description = description,
              .guide = guide});
}

void PelkParameterListDesc::addParamTextureInt(const char* name, int count, const char* description,
                                               const char* guide) {
    addParam({.name = name,
              .type = ParameterType::TextureInt,
              .count = count,
              .description = description,
              .guide = guide});
}

void PelkParameterListDesc::addParamTextureInt(const char* name, int value, int count,
                                               const char* description, const char* guide) {
    addParam({.name = name,
              .type = ParameterType::TextureInt,
              .count = count,
              .hasDefault = true,
              .intDefault = value,
              .description = description,
              .guide = guide});
}

void PelkParameterListDesc::addParam(const char* name, int typeNumber, int count,
                                     const char* description, const char* guide) {
    addParam({.name = name,
              .type = ParameterType::Other,
              .typeNumber = typeNumber,
              .count = count,
              .description = description,
              .guide = guide});
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
        if (std::strcmp(parameter.name, name) == 0)
            return &parameter;
    }
    return nullptr;
}

}  // namespace Tarnkit
