#include "pelk/host/scene/interface_names.h"

#include "pelk/contract/interface_ids.h"
#include "pelk/host/plugins/file_guide.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

namespace {

constexpr InterfaceName kInterfaces[] = {
    {EXT_PLUGIN_BASE, "EXT_PLUGIN_BASE"},
    {EXT_MATERIAL, "EXT_MATERIAL"},
    {EXT_BSDF, "EXT_BSDF"},
    {EXT_OPAQUE_SHADEABLE, "EXT_OPAQUE_SHADEABLE"},
    {EXT_RTMTL, "EXT_RTMTL"},
    {EXT_SURFACE_PROPERTIES, "EXT_SURFACE_PROPERTIES"},
    {EXT_SURFACE_PROPERTIES2, "EXT_SURFACE_PROPERTIES2"},
    {EXT_TEXTURE, "EXT_TEXTURE"},
    {EXT_TEXTURE_FLOAT, "EXT_TEXTURE_FLOAT"},
    {EXT_TEXTURE_INT, "EXT_TEXTURE_INT"},
    {EXT_RTTEX, "EXT_RTTEX"},
    {EXT_VOLUME, "EXT_VOLUME"},
    {EXT_UVWGEN, "EXT_UVWGEN"},
    {EXT_RENDER_CHANNEL, "EXT_RENDER_CHANNEL"},
    {EXT_CHANNEL_HOST, "EXT_CHANNEL_HOST"},
    {EXT_GEOM_OBJECT, "EXT_GEOM_OBJECT"},
    {EXT_SURFACE_FRAME, "EXT_SURFACE_FRAME"},
    {EXT_OBJECT_MAPPING, "EXT_OBJECT_MAPPING"},
    {EXT_SURFACE_MTLID, "EXT_SURFACE_MTLID"},
    {EXT_SHADER_SET, "EXT_SHADER_SET"},
    {EXT_GEOMETRY, "EXT_GEOMETRY"},
    {EXT_LIGHT, "EXT_LIGHT"},
    {EXT_CAMERA, "EXT_CAMERA"},
    {EXT_FILE_USER, "EXT_FILE_USER"},
    {EXT_CHANNEL_SOURCE, "EXT_CHANNEL_SOURCE"},
};

}  // namespace

std::span<const InterfaceName> knownInterfaces() {
    return kInterfaces;
}

const char* interfaceName(u64 id) {
    for (const InterfaceName& known : kInterfaces) {
        if (known.id == id)
            return known.name;
    }
    return nullptr;
}

}  // namespace Tarnkit
