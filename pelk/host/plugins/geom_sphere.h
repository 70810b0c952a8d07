#pragma once

#include "pelk/host/plugins/host_geometry.h"

namespace Tarnkit {

/// Parameters of GeomSphere, as the host refreshes them at each frameBegin.
struct GeomSphereParams {
    float radius = 1.0f;
    int segments = 128;  ///< triangles around; half as many from pole to pole

    static ParamRows<GeomSphereParams> table();
};

/// A tessellated sphere about the origin with exact vertex normals. u runs around the Y axis from
/// the front (+Z) by the right (+X), v from the lowest point to the highest.
class GeomSphere final : public ParametricShape<GeomSphereParams> {
public:
    static constexpr const char* kName = "GeomSphere";
    static constexpr u32 kID = 0x7E100041;

    using ParametricShape::ParametricShape;

private:
    bool makeShape(Mesh& mesh, std::string& error) override;
};

}  // namespace Tarnkit
