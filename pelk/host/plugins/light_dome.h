#pragma once

#include <vector>

#include "pelk/contract/texture.h"
#include "pelk/host/plugins/host_light.h"

namespace Tarnkit {

/// Parameters of LightDome, as the host refreshes them at each frameBegin.
struct LightDomeParams {
    TextureInterface* texture = nullptr;

    static ParamRows<LightDomeParams> table();
};

/// The surroundings. `intensity` scales a colour or a texture, which is read along directions.
/// Bright parts of a texture are sampled more often.
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

    // Sums over the cells of a longitude-latitude map, rows from the top: of each row's cells, and
    // of the rows. Empty without a texture.
    std::vector<float> cellSums, rowSums;
};

}  // namespace Tarnkit
