#pragma once

#include "pelk/host/plugins/host_light.h"

namespace Tarnkit {

/// A ball that shines to all sides. `intensity` is radiance.
class LightSphere final : public HostLight {
public:
    struct Params {
        Color position;
        float radius = 1.0f;
    };

    static constexpr const char* kName = "LightSphere";
    static constexpr u32 kID = 0x7E100002;

    explicit LightSphere(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;

private:
    Params params;
    Point centre;
};

}  // namespace Tarnkit
