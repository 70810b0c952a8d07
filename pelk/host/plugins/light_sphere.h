#pragma once

#include "pelk/host/plugins/host_light.h"

namespace Tarnkit {

/// Parameters of LightSphere, as the host refreshes them at each frameBegin.
struct LightSphereParams {
    Color position;       ///< centre, as x, y, z in scene units; parameters know no vector type
    float radius = 1.0f;  ///< scene units; above 0

    static ParamRows<LightSphereParams> table();
};

/// A spherical area light; `intensity` is radiance. Sampled uniformly over the cone of directions
/// in which it is seen, so that no sample falls on its far half. Dark from inside.
class LightSphere final : public WithParams<LightSphereParams, HostLight> {
public:
    static constexpr const char* kName = "LightSphere";
    static constexpr u32 kID = 0x7E100002;

    using WithParams::WithParams;

    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;

private:
    Point centre;
};

}  // namespace Tarnkit
