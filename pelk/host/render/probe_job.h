#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "pelk/contract/fragment.h"
#include "pelk/host/render/render_job.h"
#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

class Plugin;

/// Where the camera ray through the middle of a pixel first meets a surface, and what the material
/// there answers to `shade`.
struct ProbedHit {
    Plugin* object = nullptr;
    Plugin* material = nullptr;  ///< null if the object has none
    u32 triangle = 0;            ///< index in the object's mesh
    double distance = 0.0;       ///< along the ray, in units of the scene
    Point point;                 ///< in the scene's space, as are the normals
    Vector normal, geomNormal;   ///< shading normal and that of the triangle; unit
    bool backSide = false;       ///< the ray meets the side that the normal turns away from
    UV uv;                       ///< of the first uv set
    Color color, transparency, alpha, alphaTransparency;  ///< the four results of `shade`
};

/// The value of one render channel at the pixel.
struct ProbedChannel {
    std::string name;
    int type = kChannelNone;
    std::array<float, 4> values{};  ///< the first so many that the type has; unused for an integer
    int id = 0;                     ///< of an integer channel
};

struct ProbeResult {
    bool ok = false;  ///< false: nothing is known, `error` says why
    std::string error;
    std::optional<ProbedHit> hit;  ///< none where the ray meets no surface
    std::vector<ProbedChannel> channels;
};

/// Looks at one pixel of the picture: at the first surface along the ray through its middle, and at
/// all channels, with the very values that a render with these options gives the pixel. Works on
/// the calling thread. `x` and `y` lie within the picture; `log` may be null.
ProbeResult probePixel(Scene& scene, const RenderOptions& options, int x, int y, MessageLog* log);

}  // namespace Tarnkit
