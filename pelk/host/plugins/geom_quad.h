#pragma once

#include "pelk/host/plugins/host_geometry.h"

namespace Tarnkit {

/// A rectangle about the origin that faces +Z; u runs along X, v along Y.
class GeomQuad final : public HostGeometry {
public:
    struct Params {
        float width = 1.0f, height = 1.0f;
    };

    static constexpr const char* kName = "GeomQuad";
    static constexpr u32 kID = 0x7E100042;

    explicit GeomQuad(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

private:
    bool buildShape(Mesh& mesh, std::string& error) override;

    Params params;
};

}  // namespace Tarnkit
