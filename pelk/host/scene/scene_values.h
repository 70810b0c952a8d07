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
    std::string pointer;  ///< JSON pointer to the value, such as /plugins/red/diffuse
    std::string text;     ///< what was expected there
};

/// A parameter made from a value, with the instances and files that it refers to, in the order of
/// the value.
struct SceneValue {
    std::unique_ptr<PelkPluginParameter> parameter;
    std::vector<Plugin*> references;
    std::vector<std::string> files;  ///< as they are opened
};

/// Makes the parameter of `desc` from the value `json`, which stands at `pointer` in the file: a
/// plain value, a list, keyframes ({"times": [...], "values": [...]}), or the name of an instance.
/// All instances of the scene must exist by now, since references are looked up among them; names
/// of files are taken as relative to `directory`. Returns false if the value doesn't fit `desc`.
bool readSceneValue(const Scene& scene, const std::string& directory, const ParameterDesc& desc,
                    const Json& json, const std::string& pointer, SceneValue& out,
                    SceneError& error);

/// The instance that `json` names, if it offers the interface (0: whatever it offers); else null
/// with `error` filled.
Plugin* readSceneReference(const Scene& scene, u64 interfaceID, const Json& json,
                           const std::string& pointer, SceneError& error);

}  // namespace Tarnkit
