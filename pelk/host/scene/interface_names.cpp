#include "pelk/host/scene/interface_names.h"

#include <algorithm>

#include "pelk/contract/material.h"
#include "pelk/contract/scene_interfaces.h"
#include "pelk/contract/surface_properties.h"
#include "pelk/host/plugins/channel_plugin.h"
#include "pelk/host/plugins/file_guide.h"
#include "pelk/host/trace/interfaces.h"
#include "pelk/support/regions/pixel_readout.h"

namespace Tarnkit {

namespace {

using KnownInterfaces = InterfaceList<
    PelkPluginInterface, MaterialInterface, BSDFInterface, OpaqueShadeableInterface, RTMtlInterface,
    DefaultPelkSurfaceProperties, DefaultPelkSurfaceProperties2, TextureInterface,
    TextureFloatInterface, TextureIntInterface, RTTexInterface, PelkVolume, UVWGenInterface,
    RenderChannelInterface, ChannelHostInterface, GeomObjectInterface, SurfaceFrameInterface,
    SurfaceUVInterface, ObjectMappingInterface, SurfaceMtlIDInterface, ShaderSetInterface,
    GeometryInterface, LightInterface, CameraInterface, FileUserInterface, ChannelSourceInterface>;

/// Interfaces that no plug-in of a scene offers, yet whose ids must be others too: those of a
/// render's pixels, which callers ask the region for.
using AllInterfaces =
    KnownInterfaces::With<PixelBufferInterface, PixelBufferInterface2, PixelBufferInterface3>;

consteval bool haveOneIDEach() {
    auto interfaces = AllInterfaces::kNames;
    std::ranges::sort(interfaces, {}, &InterfaceName::id);
    return std::ranges::adjacent_find(interfaces, {}, &InterfaceName::id) == interfaces.end();
}

// getInterface of a plug-in that offers two interfaces of one id would answer with either.
static_assert(haveOneIDEach());

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
