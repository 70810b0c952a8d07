#pragma once

#include "pelk/host/plugins/host_light.h"

namespace Tarnkit {

/// Parameters of LightSun, as the host refreshes them at each frameBegin.
struct LightSunParams {
    Color direction;      ///< in which the light travels, as x, y, z; of any length but 0
    float angle = 0.53f;  ///< diameter of the disc in degrees, below 180; 0: a delta light

    static ParamRows<LightSunParams> table();
};

/// A directional light, or a disc of the sky of small diameter, sampled uniformly over its cone.
/// `intensity` is irradiance / pi: a white diffuse surface that faces the sun has that radiance,
/// whatever the diameter.
class LightSun final : public WithParams<LightSunParams, HostLight> {
public:
    static constexpr const char* kName = "LightSun";
    static constexpr u32 kID = 0x7E100003;

    using WithParams::WithParams;

    bool isInfinite() const override { return true; }
    bool hasExtent() const override { return params.angle > 0.0f; }
    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;

private:
    Vector toSun, tangent, bitangent;
    float cosRadius = 1.0f;
    float density = 0.0f;
    Color radiance;
};

}  // namespace Tarnkit
