#pragma once

#include <memory>
#include <string>
#include <vector>

#include "pelk/contract/parameters.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/scene/scene_json.h"

namespace Tarnkit {

/// What is wrong in a scene, and where.
struct SceneError {
    std::string pointer;  ///< JSON pointer
    std::string text;
};

/// A parameter made from a value, and the instances that it refers to.
struct SceneValue {
    std::unique_ptr<PelkPluginParameter> parameter;
    std::vector<Plugin*> references;
};

/// Makes the parameter that `json`, which stands at `pointer`, gives. References are looked up
/// among the scene's instances, which all exist by now; files are looked for in `directory`.
/// Returns false if the value doesn't fit `desc`.
bool readSceneValue(const Scene& scene, const std::string& directory, const ParameterDesc& desc,
                    const Json& json, const std::string& pointer, SceneValue& out,
                    SceneError& error);

/// The instance that `json` names, if it has the interface (0 is any); else null.
Plugin* readSceneReference(const Scene& scene, u64 interfaceID, const Json& json,
                           const std::string& pointer, SceneError& error);

}  // namespace Tarnkit
