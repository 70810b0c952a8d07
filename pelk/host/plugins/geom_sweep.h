#pragma once

#include "pelk/host/plugins/host_geometry.h"

namespace Tarnkit {

/// Parameters of GeomSweep, as the host refreshes them at each frameBegin.
struct GeomSweepParams {
    float width = 10.0f;
    float depth = 10.0f;  ///< of the floor, from the wall to the front
    float height = 5.0f;  ///< of the wall
    float radius = 2.0f;  ///< of the bend
    int segments = 48;    ///< strips of the bend

    static ParamRows<GeomSweepParams> table();
};

/// A studio backdrop: a floor at y = 0 that bends up into a wall at z = 0. u runs along the width,
/// v along the bent sheet from the front edge, both in units of the width.
class GeomSweep final : public ParametricShape<GeomSweepParams> {
public:
    static constexpr const char* kName = "GeomSweep";
    static constexpr u32 kID = 0x7E100044;

    using ParametricShape::ParametricShape;

private:
    bool makeShape(Mesh& mesh, std::string& error) override;
};

}  // namespace Tarnkit
