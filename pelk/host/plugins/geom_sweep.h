#pragma once

#include "pelk/host/plugins/host_geometry.h"

namespace Tarnkit {

/// A ball about the origin, of triangles. u runs around the Y axis from the front (+Z) by the
/// right (+X), v from the lowest point to the highest.
class GeomSphere final : public HostGeometry {
public:
    struct Params {
        float radius = 1.0f;
        int segments = 128;  ///< triangles around; half as many from pole to pole
    };

    static constexpr const char* kName = "GeomSphere";
    static constexpr u32 kID = 0x7E100041;

    explicit GeomSphere(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

private:
    bool buildShape(Mesh& mesh, std::string& error) override;

    Params params;
};

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

/// A studio backdrop: a floor at y = 0 that bends up into a wall at z = 0. u runs along the width,
/// v along the bent sheet from the front edge, both in units of the width.
class GeomSweep final : public HostGeometry {
public:
    struct Params {
        float width = 10.0f;
        float depth = 10.0f;  ///< of the floor, from the wall to the front
        float height = 5.0f;  ///< of the wall
        float radius = 2.0f;  ///< of the bend
        int segments = 48;    ///< strips of the bend
    };

    static constexpr const char* kName = "GeomSweep";
    static constexpr u32 kID = 0x7E100044;

    explicit GeomSweep(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

private:
    bool buildShape(Mesh& mesh, std::string& error) override;

    Params params;
};

}  // namespace Tarnkit
