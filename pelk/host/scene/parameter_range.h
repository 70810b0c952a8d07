#pragma once

#include <string>

#include "pelk/contract/parameters.h"
#include "pelk/host/scene/scene_values.h"

namespace Tarnkit {

/// Whether all numbers of a value lie in the range that the parameter's guide tells by
/// "minValue=(n), maxValue=(n)", both ends included: a plain value, or those at keyframes. A
/// parameter without a range takes all. `json` has passed readSceneValue. False with `error`
/// filled, which names the place of the number.
bool checkRange(const ParameterDesc& desc, const Json& json, const std::string& pointer,
                SceneError& error);

/// Whether a parameter's own default lies in the range that its guide tells; so it does without a
/// range or a default that is a number.
bool isDefaultInRange(const ParameterDesc& desc);

}  // namespace Tarnkit
