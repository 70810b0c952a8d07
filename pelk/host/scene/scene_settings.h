#pragma once

#include <string>

#include "pelk/host/picture/content_hash.h"
#include "pelk/host/scene/scene_values.h"

namespace Tarnkit {

/// Reads the settings of a scene from the object `json`, which stands at `pointer`; those that it
/// leaves out keep what `settings` holds. Returns false with `error` filled if a setting is
/// unknown, of the wrong type, or beyond its limits.
bool readSceneSettings(const Json& json, const std::string& pointer, SceneSettings& settings,
                       SceneError& error);

/// Adds all settings that decide on the pixels of a render to a hash: those are left out that a
/// render overrides by its options (size, samples, seed, channels).
void hashSettings(const SceneSettings& settings, ContentHash& hash);

}  // namespace Tarnkit
