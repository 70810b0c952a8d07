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

/// Where the ray through the middle of a pixel meets a surface, and what its material answers.
struct ProbedHit {
    Plugin* object = nullptr;
    Plugin* material = nullptr;  ///< null if the object has none
    u32 triangle = 0;            ///< index in the object's mesh
    double distance = 0.0;
    Point point;
    Vector normal, geomNormal;  ///< unit
    bool backSide = false;
    UV uv;
    Color color, transparency, alpha, alphaTransparency;  ///< the four results of `shade`
};

/// What a channel shows of a pixel.
struct ProbedChannel {
    std::string name;
    int type = kChannelNone;
    std::array<float, 4> values{};  ///< as many as the type has; none of an integer
    int id = 0;                     ///< of an integer channel
};

struct ProbeResult {
    bool ok = false;  ///< false: nothing is known, `error` says why
    std::string error;
    std::optional<ProbedHit> hit;  ///< none where the ray meets no surface
    std::vector<ProbedChannel> channels;
};

/// Looks at one pixel of the picture: at the first surface behind its middle, and at all channels,
/// with the values that a render with these options gives it.
ProbeResult probePixel(Scene& scene, const RenderOptions& options, int x, int y, MessageLog* log);

}  // namespace Tarnkit
