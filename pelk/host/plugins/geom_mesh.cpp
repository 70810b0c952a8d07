#include "pelk/host/plugins/geom_mesh.h"

#include "pelk/host/plugins/file_guide.h"
#include "pelk/host/plugins/mesh_loader.h"

namespace Tarnkit {

void GeomMesh::addParameters(PelkParameterListDesc& list) {
    HostGeometry::addParameters(list);
    list.addParamString("file", "", -1, "OBJ, PLY, glTF or GLB file", kFileGuide);
}

const char* GeomMesh::fileName() const {
    PelkPluginParameter* const parameter = paramList.getParam("file");
    const char* const file = parameter ? parameter->getString(0, 0.0) : nullptr;
    return file ? file : "";
}

bool GeomMesh::makeShape(Mesh& mesh, std::string& error) {
    const char* const file = fileName();
    if (*file)
        return loadMesh(file, geometry.smooth != 0, mesh, error);
    error = "\"file\" must name a mesh file";
    return false;
}

}  // namespace Tarnkit
