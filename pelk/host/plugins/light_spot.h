#pragma once

#include "pelk/host/plugins/host_light.h"

namespace Tarnkit {

/// Parameters of LightSpot, as the host refreshes them at each frameBegin.
struct LightSpotParams {
    Color position;
    Color direction;       ///< of the cone's axis, in which the light travels
    float angle = 40.0f;   ///< opening of the cone in degrees, from edge to edge, to 360
    float falloff = 5.0f;  ///< width of the soft edge in degrees, inwards; 0: a sharp edge

    static ParamRows<LightSpotParams> table();
};

/// A spot light: a point light that shines within a cone alone. Between the inner cone, which is
/// `falloff` narrower on each side, and the edge its light fades by smoothstep of the cosine to the
/// axis, as in Pharr, Jakob, Humphreys, "Physically Based Rendering", 4th edition, section 12.2.1.
/// `intensity` is radiant intensity / pi within the inner cone, as LightPoint's: a narrower cone
/// doesn't make the light brighter.
class LightSpot final : public WithParams<LightSpotParams, HostLight> {
public:
    static constexpr const char* kName = "LightSpot";
    static constexpr u32 kID = 0x7E100006;

    using WithParams::WithParams;

    bool hasExtent() const override { return false; }
    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;

private:
    Vector axis;
    float cosEdge = 0.0f, cosInner = 1.0f;
};

}  // namespace Tarnkit
