#pragma once

#include <string>

#include "pelk/base/text_or.h"
#include "pelk/contract/plugin_desc.h"

namespace Tarnkit {

/// The value of a plug-in's text parameter, or its default if the scene doesn't give one. Texts are
/// read so, and not bound to fields, where they are needed before the first frameBegin: when a file
/// is opened, or a render's channels are made. `desc` has a parameter of that name.
inline std::string textParameter(const PelkParameterList& parameters, PelkPluginDesc& desc,
                                 const char* name) {
    PelkPluginParameter* const given = parameters.getParam(name);
    const char* const standard = desc.getParameterListDesc()->findParameter(name)->stringDefault;
    const char* const value = given ? given->getString(0, 0.0) : nullptr;
    return textOrEmpty(value ? value : standard);
}

}  // namespace Tarnkit
