#pragma once

#include "pelk/host/plugins/host_light.h"

namespace Tarnkit {

/// Parameters of LightArea, as the host refreshes them at each frameBegin.
struct LightAreaParams {
    // Vectors are held as colours (r, g, b for x, y, z): parameters know no vector type.
    Color position;   ///< centre, scene units
    Color direction;  ///< to which the front looks, of any length
    Color up;         ///< `height` is measured along this, projected into the rectangle
    float width = 1.0f, height = 1.0f;  ///< of the rectangle, scene units; above 0

    static ParamRows<LightAreaParams> table();
};

/// A rectangular area light that emits from its front, the same radiance (`intensity`) in all
/// directions. Sampled uniformly over its area.
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
    Vector normal, edgeU, edgeV;  // unit normal; edges from side to side
    Vector inverseU, inverseV;    // edges over their squared length
    float area = 1.0f;
};

}  // namespace Tarnkit
