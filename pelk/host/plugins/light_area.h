#pragma once

#include "pelk/host/plugins/host_light.h"

namespace Tarnkit {

/// Parameters of LightArea, as the host refreshes them at each frameBegin.
struct LightAreaParams {
    Color position;   ///< centre
    Color direction;  ///< to which the front looks, of any length
    Color up;         ///< the side of length `height` lies in the plane of this and `direction`
    float width = 1.0f, height = 1.0f;

    static ParamRows<LightAreaParams> table();
};

/// A rectangle that shines from its front. `intensity` is radiance.
class LightArea final : public WithParams<LightAreaParams, HostLight> {
public:
    static constexpr const char* kName = "LightArea";
    static constexpr u32 kID = 0x7E100001;

    using WithParams::WithParams;

    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;

private:
    Point centre;
    Vector normal, edgeU, edgeV;  // unit normal; whole edges
    Vector inverseU, inverseV;    // edges over their squared length
    float area = 1.0f;
};

}  // namespace Tarnkit
