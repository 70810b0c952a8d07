#include "pelk/host/scene/interface_names.h"

#include "pelk/contract/material.h"
#include "pelk/contract/scene_interfaces.h"
#include "pelk/contract/surface_properties.h"
#include "pelk/host/plugins/channel_plugin.h"
#include "pelk/host/plugins/file_guide.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

namespace {

using KnownInterfaces = InterfaceList<
    PelkPluginInterface, MaterialInterface, BSDFInterface, OpaqueShadeableInterface, RTMtlInterface,
    DefaultPelkSurfaceProperties, DefaultPelkSurfaceProperties2, TextureInterface,
    TextureFloatInterface, TextureIntInterface, RTTexInterface, PelkVolume, UVWGenInterface,
    RenderChannelInterface, ChannelHostInterface, GeomObjectInterface, SurfaceFrameInterface,
    SurfaceUVInterface, ObjectMappingInterface, SurfaceMtlIDInterface, ShaderSetInterface,
    GeometryInterface, LightInterface, CameraInterface, FileUserInterface, ChannelSourceInterface>;

}  // namespace

std::span<const InterfaceName> knownInterfaces() {
    return KnownInterfaces::kNames;
}

const char* interfaceName(u64 id) {
    for (const InterfaceName& known : KnownInterfaces::kNames) {
        if (known.id == id)
            return known.name;
    }
    return nullptr;
}

}  // namespace Tarnkit
