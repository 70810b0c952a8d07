#include "pelk/host/plugins/geom_mesh.h"

#include "pelk/host/plugins/file_guide.h"
#include "pelk/host/plugins/mesh_loader.h"

namespace Tarnkit {

void GeomMesh::addParameters(PelkParameterListDesc& list) {
    HostGeometry::addParameters(list);
    list.addParamString("file", "", -1, "OBJ, PLY, glTF or GLB file", kFileGuide);
}

bool GeomMesh::buildShape(Mesh& mesh, std::string& error) {
    PelkPluginParameter* const parameter = paramList.getParam("file");
    const char* const file = parameter ? parameter->getString(0, 0.0) : nullptr;
    if (file && *file)
        return loadMesh(file, geometry.smooth != 0, mesh, error);
    error = "\"file\" must name a mesh file";
    return false;
}

}  // namespace Tarnkit
