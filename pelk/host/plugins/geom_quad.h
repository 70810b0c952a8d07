#pragma once

#include "pelk/host/plugins/host_geometry.h"

namespace Tarnkit {

/// Parameters of GeomQuad, as the host refreshes them at each frameBegin.
struct GeomQuadParams {
    float width = 1.0f, height = 1.0f;

    static ParamRows<GeomQuadParams> table();
};

/// A rectangle about the origin that faces +Z; u runs along X, v along Y.
class GeomQuad final : public ParametricShape<GeomQuadParams> {
public:
    static constexpr const char* kName = "GeomQuad";
    static constexpr u32 kID = 0x7E100042;

    using ParametricShape::ParametricShape;

private:
    bool makeShape(Mesh& mesh, std::string& error) override;
};

}  // namespace Tarnkit
