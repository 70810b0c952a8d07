#include "pelk/host/plugins/host_geometry.h"

#include <algorithm>
#include <cmath>

#include "pelk/base/limits.h"
#include "pelk/contract/param_table.h"
#include "pelk/host/trace/render_context.h"
#include "pelk/host/trace/scene_object.h"
#include "pelk/host/trace/surface_uv.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kGeometryParams{
    pluginParam<MaterialInterface>("material", &GeometryParams::material,
                                   "Material of the surface; without one it is black"),
    colorParam("translate", &GeometryParams::translate, Color(0), "Where the object stands"),
    colorParam("rotate", &GeometryParams::rotate, Color(0),
               "Degrees about X, then Y, then Z, before the object is moved"),
    colorParam("scale", &GeometryParams::scale, Color(1),
               "Factors along the object's own axes, before it is turned"),
    boolParam("smooth", &GeometryParams::smooth, true, "Normals run smoothly over the surface"),
    ParamRow<GeometryParams>{
        .desc = {.name = "material_ids",
                 .type = ParameterType::Int,
                 .count = 0,
                 .description = "Material id of each part: of a box's sides in the order +X, -X, "
                                "+Y, -Y, +Z, -Z, of a mesh's materials in the order of its file; "
                                "without the list a part has its number"}},
    ParamRow<GeometryParams>{.desc = {.name = "shader_sets",
                                      .type = ParameterType::String,
                                      .count = 0,
                                      .description = "Name of the shader set of each part; an "
                                                     "empty one for a part that has none"}},
};

bool isFinite3(Color c) {
    return std::isfinite(c.r) && std::isfinite(c.g) && std::isfinite(c.b);
}

/// The part that a hit lies on.
std::size_t partAt(const RenderContext& hit) {
    const std::vector<int>& parts = hit.object->shape->mesh.parts;
    return parts.empty() ? 0 : static_cast<std::size_t>(parts[hit.triangle]);
}

}  // namespace

HostGeometry::HostGeometry(PelkPluginDesc* pluginDesc) : PluginOffering(pluginDesc) {
    kGeometryParams.bind(paramList, geometry);
}

void HostGeometry::addParameters(PelkParameterListDesc& list) {
    kGeometryParams.addTo(list);
}

void HostGeometry::frameBegin(PelkRenderer& renderer) {
    PelkPlugin::frameBegin(renderer);
    place = placement();
    materialIDs.clear();
    if (PelkPluginParameter* const ids = paramList.getParam("material_ids")) {
        const PelkIntList list = ids->getIntList(renderer.frameData.frameTime);
        materialIDs.assign(list.items, list.items + list.count);
    }
    shaderSets.clear();
    PelkPluginParameter* const names = paramList.getParam("shader_sets");
    const int count = names ? names->getCount(renderer.frameData.frameTime) : 0;
    for (int i = 0; i < count; ++i) {
        // A hit compares numbers: names are turned into them here.
        const char* const set = names->getString(i, renderer.frameData.frameTime);
        const bool isNamed = set && *set;
        shaderSets.push_back(isNamed ? renderer.getStringTable()->intern(set) : StringHandle());
    }
}

std::string HostGeometry::shapeKey() {
    const std::string values = shapeValues();
    if (values.empty())
        return {};
    return std::string(getPluginTypeName()) + (geometry.smooth ? " smooth " : " flat ") + values;
}

bool HostGeometry::buildShape(Mesh& mesh, std::string& error) {
    mesh = Mesh();
    if (!makeShape(mesh, error))
        return false;
    if (!geometry.smooth)
        mesh.normals.clear();
    return true;
}

std::optional<Placement> HostGeometry::findPlace(std::string& error) {
    const Color scale = geometry.scale;
    if (isFinite3(scale) && scale.r != 0.0f && scale.g != 0.0f && scale.b != 0.0f)
        return placement();
    error = "\"scale\" must have three numbers that are not 0";
    return {};
}

int HostGeometry::getSurfaceMtlID(PelkContext& context) {
    const RenderContext& hit = hostContext(context);
    if (!hit.object)
        return 0;
    const std::size_t part = partAt(hit);
    if (materialIDs.empty())
        return static_cast<int>(part);
    return part < materialIDs.size() ? materialIDs[part] : 0;
}

void HostGeometry::getShaderSetName(StringHandle& out, PelkContext& context, int) {
    out = StringHandle();
    const RenderContext& hit = hostContext(context);
    if (!hit.object)
        return;
    const std::size_t part = partAt(hit);
    if (part < shaderSets.size())
        out = shaderSets[part];
}

Transform HostGeometry::getSurfaceFrame(PelkContext& context, int channel) {
    return surfaceFrame(context, channel);
}

Vector HostGeometry::getSurfaceUVW(PelkContext& context, int channel) {
    const UV uv = surfaceUV(context, channel);
    return {uv.u, uv.v, 0.0f};
}

Vector HostGeometry::objectToWorld(PelkContext&, Vector vector) {
    return place.direction(vector);
}

}  // namespace Tarnkit
