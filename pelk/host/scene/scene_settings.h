#pragma once

#include <string>

#include "pelk/host/scene/scene_values.h"

namespace Tarnkit {

/// Reads the settings of a scene from the object at `pointer`. Returns false if a setting is
/// unknown or doesn't fit.
bool readSceneSettings(const Json& json, const std::string& pointer, SceneSettings& settings,
                       SceneError& error);

}  // namespace Tarnkit
