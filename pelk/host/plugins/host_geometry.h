#pragma once

#include <string>
#include <vector>

#include "pelk/contract/desc_of.h"
#include "pelk/contract/param_table.h"
#include "pelk/contract/scene_interfaces.h"
#include "pelk/host/trace/interfaces.h"
#include "pelk/host/trace/placement.h"

namespace Tarnkit {

/// Parameters that all geometry has: its material and its object-to-world transform. The vectors of
/// that are held as colours (r, g, b for x, y, z), since parameters know no vector type.
struct GeometryParams {
    PluginBase* material = nullptr;  ///< EXT_MATERIAL of the surface; null: opaque black
    Color translate;                 ///< scene units; applied last
    Color rotate;                    ///< degrees about X, then Y, then Z
    Color scale{1.0f};  ///< applied first; a negative factor mirrors, and fronts stay fronts
    int smooth = 1;     ///< 0: flat shading, without vertex normals
};

/// Base of the geometry of this host. A class that derives from it builds a mesh in object space in
/// which each triangle has the number of its part (a side of a box, a material of a file); the base
/// knows the material ids and shader sets of parts, and where the object stands. The
/// constructor binds GeometryParams itself: with WithParams here too, `params` would be the name of
/// two fields of one object. WithParams of the derived class lists them in front of that class's
/// own.
class HostGeometry
    : public PluginOffering<GeometryInterface, SurfaceMtlIDInterface, ShaderSetInterface,
                            GeomObjectInterface, SurfaceFrameInterface, SurfaceUVInterface,
                            ObjectMappingInterface> {
public:
    explicit HostGeometry(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    void frameBegin(PelkRenderer& renderer) override;

    std::string shapeKey() final;
    bool buildShape(Mesh& mesh, std::string& error) final;
    std::optional<Placement> findPlace(std::string& error) final;
    PluginBase* getMaterial() override { return geometry.material; }
    void setRenderID(int id) override { renderID = id; }

    int getSurfaceMtlID(PelkContext& context) override;
    void getShaderSetName(StringHandle& out, PelkContext& context, int channel) override;
    int getRenderID(PelkContext&) override { return renderID; }
    Transform getSurfaceFrame(PelkContext& context, int channel) override;
    Vector getSurfaceUVW(PelkContext& context, int channel) override;
    Vector objectToWorld(PelkContext& context, Vector vector) override;

protected:
    /// The values of the parameters that the shape depends on, apart from GeometryParams, as any
    /// bytes; empty if they can't tell one shape from another.
    virtual std::string shapeValues() const = 0;
    /// Builds the mesh in object space. Returns false with a text that says what is wrong.
    virtual bool makeShape(Mesh& mesh, std::string& error) = 0;

    GeometryParams geometry;

private:
    Placement placement() const { return {geometry.scale, geometry.rotate, geometry.translate}; }

    int renderID = 0;
    // Set in frameBegin, of each part: its shader set, and its material id unless that is its
    // number.
    std::vector<StringHandle> shaderSets;
    std::vector<int> materialIDs;
    Placement place{Color(1), Color(0), Color(0)};
};

/// A shape that its own parameters, numbers of the struct `P`, describe in full.
template <class P>
class ParametricShape : public WithParams<P, HostGeometry> {
public:
    using WithParams<P, HostGeometry>::WithParams;

protected:
    std::string shapeValues() const final {
        std::string bytes;
        P::table().forEachNumber(this->params, [&](const auto& number) {
            bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
        });
        return bytes;
    }
};

}  // namespace Tarnkit
