#pragma once

#include "pelk/host/plugins/host_light.h"

namespace Tarnkit {

/// Light from one direction, or from a small disc of the sky. A white surface that faces it gets
/// the brightness `intensity`.
class LightSun final : public HostLight {
public:
    struct Params {
        Color direction;      ///< in which the light travels
        float angle = 0.53f;  ///< diameter of the disc in degrees; 0 is a light without extent
    };

    static constexpr const char* kName = "LightSun";
    static constexpr u32 kID = 0x7E100003;

    explicit LightSun(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    bool isInfinite() const override { return true; }
    bool hasExtent() const override { return params.angle > 0.0f; }
    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;

private:
    Params params;
    Vector toSun, tangent, bitangent;
    float cosRadius = 1.0f;
    float density = 0.0f;
    Color radiance;
};

}  // namespace Tarnkit
