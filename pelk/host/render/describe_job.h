#pragma once

#include <string>

namespace Tarnkit {

class MessageLog;
class RTMtlInterface;
class Scene;

/// What became of a description.
struct DescribeResult {
    bool ok = false;       ///< false: `error` says why
    bool handled = false;  ///< whether the material knows the section
    std::string text;
    std::string error;
};

/// The section `section` of the text by which a material of the scene describes itself, at the
/// scene's time. `log` may be null.
DescribeResult describeMaterial(Scene& scene, RTMtlInterface& material, const char* section,
                                MessageLog* log);

}  // namespace Tarnkit
