#pragma once

#include "pelk/host/plugins/host_geometry.h"

namespace Tarnkit {

/// A box about the origin that faces outward. Each side has all of the texture.
class GeomBox final : public HostGeometry {
public:
    struct Params {
        Color size;  ///< along X, Y, Z
    };

    static constexpr const char* kName = "GeomBox";
    static constexpr u32 kID = 0x7E100043;

    explicit GeomBox(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

private:
    bool buildShape(Mesh& mesh, std::string& error) override;

    Params params;
};

}  // namespace Tarnkit
