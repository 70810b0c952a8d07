#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {

/// Parameters of UVWGenMap, as the host refreshes them at each frameBegin.
struct UVWGenMapParams {
    Color scale;
    float rotation = 0.0f;  ///< degrees, from u towards v
    Color offset;
    int uvSet = 0;  ///< of the mesh, from 0; a set that it lacks is replaced by set 0

    static ParamRows<UVWGenMapParams> table();
};

/// UV mapping: a set of the mesh's texture coordinates, scaled, then rotated about their origin,
/// then moved. Where nothing was hit, as in a dome, those of the ray's direction on a
/// longitude-latitude image.
class UVWGenMap final : public WithParams<UVWGenMapParams, PluginOffering<UVWGenInterface>> {
public:
    static constexpr const char* kName = "UVWGenMap";
    static constexpr u32 kID = 0x7E100012;
    using WithParams::WithParams;

    void frameBegin(PelkRenderer& renderer) override;
    Vector getUVW(PelkContext& context) override;
    Transform getTangentFrame(PelkContext& context, int& valid) override;

private:
    float sine = 0.0f, cosine = 1.0f;  // set in frameBegin
};

}  // namespace Tarnkit
