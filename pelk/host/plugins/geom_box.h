#pragma once

#include "pelk/host/plugins/host_geometry.h"

namespace Tarnkit {

/// Parameters of GeomBox, as the host refreshes them at each frameBegin.
struct GeomBoxParams {
    Color size;  ///< along X, Y, Z

    static ParamRows<GeomBoxParams> table();
};

/// A box about the origin that faces outward. Each side has all of the texture.
class GeomBox final : public ParametricShape<GeomBoxParams> {
public:
    static constexpr const char* kName = "GeomBox";
    static constexpr u32 kID = 0x7E100043;

    using ParametricShape::ParametricShape;

private:
    bool makeShape(Mesh& mesh, std::string& error) override;
};

}  // namespace Tarnkit
