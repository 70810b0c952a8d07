#pragma once

#include "pelk/host/plugins/host_geometry.h"

namespace Tarnkit {

/// A mesh from a file (OBJ, PLY, glTF). Each material of the file is a part.
class GeomMesh final : public HostGeometry {
public:
    static constexpr const char* kName = "GeomMesh";
    static constexpr u32 kID = 0x7E100045;

    using HostGeometry::HostGeometry;
    static void addParameters(PelkParameterListDesc& list);

private:
    const char* fileName() const;
    std::string shapeValues() const override { return fileName(); }
    bool makeShape(Mesh& mesh, std::string& error) override;
};

}  // namespace Tarnkit
