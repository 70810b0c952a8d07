#pragma once

#include "frame/pelk_plugin.h"
#include "frame/scene_interfaces.h"
#include "render/interfaces.h"
#include "render/placement.h"

namespace Tarnkit {

/// What all geometry has: its material and its place in the scene.
struct GeometryParams {
    PluginBase* material = nullptr;
    Color translate;    ///< applied last
    Color rotate;       ///< degrees about X, then Y, then Z
    Color scale{1.0f};  ///< applied first; a negative factor mirrors, and fronts stay fronts
    int smooth = 1;     ///< 0: every triangle is flat
};

/// Base of the geometry of this host. A class that derives from it makes its triangles in its own
/// space, with the number of the part that each belongs to as material id; the base brings them to
/// the scene. It registers and binds the parameters of GeometryParams in front of its own.
class HostGeometry : public PelkPlugin, public GeometryInterface, public SurfaceMtlIDInterface {
public:
    explicit HostGeometry(PelkPluginDesc* pluginDesc);

    static constexpr u64 kFaces[] = {EXT_GEOMETRY, EXT_SURFACE_MTLID};
    static void addParameters(PelkParameterListDesc& list);

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }

    bool buildMesh(Mesh& mesh, std::string& error) final;
    PluginBase* getMaterial() override { return geometry.material; }
    int getSurfaceMtlID(PelkContext& context) override;

protected:
    /// Makes the triangles in the plug-in's own space.
    virtual bool buildShape(Mesh& mesh, std::string& error) = 0;

    GeometryParams geometry;

private:
    void mapMaterialIDs(Mesh& mesh) const;
};

}  // namespace Tarnkit
