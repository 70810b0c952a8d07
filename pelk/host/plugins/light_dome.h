#pragma once

#include <vector>

#include "pelk/contract/texture.h"
#include "pelk/host/plugins/host_light.h"

namespace Tarnkit {

/// Parameters of LightDome, as the host refreshes them at each frameBegin.
struct LightDomeParams {
    TextureInterface* texture = nullptr;  ///< factor of the colour by direction; null: none

    static ParamRows<LightDomeParams> table();
};

/// Environment light: an infinite sphere around the scene with the radiance of a colour, or of a
/// texture that is looked up by direction, times `intensity`. A texture is importance-sampled by a
/// table of its brightness that `prepare` fills; a plain colour is sampled uniformly.
class LightDome final : public WithParams<LightDomeParams, HostLight> {
public:
    static constexpr const char* kName = "LightDome";
    static constexpr u32 kID = 0x7E100004;

    using WithParams::WithParams;

    bool isInfinite() const override { return true; }
    bool isDome() const override { return true; }
    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;

private:
    Color radianceAlong(const Vector& direction) const;
    float densityAlong(const Vector& direction) const;
    void tabulate();

    // Importance sampling: running sums of brightness times solid angle over the cells of a
    // longitude-latitude map, row by row from the top, and of the rows' totals. Empty without a
    // texture.
    std::vector<float> cellSums, rowSums;
};

}  // namespace Tarnkit
