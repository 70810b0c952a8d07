#pragma once

#include "pelk/host/plugins/host_light.h"

namespace Tarnkit {

/// Parameters of LightPoint, as the host refreshes them at each frameBegin.
struct LightPointParams {
    Color position;

    static ParamRows<LightPointParams> table();
};

/// A point light: a delta light that shines alike in all directions and weakens with the square of
/// the distance. `intensity` is radiant intensity / pi: a white diffuse surface that faces the
/// light from one unit away has that radiance. It has no area, so no ray hits it and it throws hard
/// shadows; LightSphere is the one with a size.
class LightPoint final : public WithParams<LightPointParams, HostLight> {
public:
    static constexpr const char* kName = "LightPoint";
    static constexpr u32 kID = 0x7E100005;

    using WithParams::WithParams;

    bool hasExtent() const override { return false; }
    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;
};

}  // namespace Tarnkit
