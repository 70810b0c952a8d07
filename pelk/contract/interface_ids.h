#pragma once

#include "pelk/base/types.h"

namespace Tarnkit {

/// Numeric ids by which getInterface finds the faces of an object. Fixed for good.
enum InterfaceID : u64 {
    EXT_PLUGIN_BASE = 0x7776FFFF,  ///< PelkPluginInterface, on every plug-in

    // Faces of a material.
    EXT_MATERIAL = 0x77770002,          ///< MaterialInterface
    EXT_BSDF = 0x77770020,              ///< BSDFInterface
    EXT_OPAQUE_SHADEABLE = 0x781B9321,  ///< OpaqueShadeableInterface
    EXT_RTMTL = 0x77C0A07E,             ///< RTMtlInterface

    // Faces of surface properties.
    EXT_SURFACE_PROPERTIES = 0xFFFF0003,   ///< DefaultPelkSurfaceProperties
    EXT_SURFACE_PROPERTIES2 = 0x77DE57E9,  ///< DefaultPelkSurfaceProperties2

    // What materials ask of textures, volumes and uvw generators.
    EXT_TEXTURE = 0x77780002,        ///< TextureInterface
    EXT_TEXTURE_FLOAT = 0x7782F8E5,  ///< TextureFloatInterface
    EXT_TEXTURE_INT = 0x7782F8E6,    ///< TextureIntInterface
    EXT_RTTEX = 0x77CFFFA6,          ///< RTTexInterface
    EXT_VOLUME = 0x2005072410,       ///< PelkVolume
    EXT_UVWGEN = 0x780B88A9,         ///< UVWGenInterface

    // What materials ask of the scene around them.
    EXT_RENDER_CHANNEL = 0x77836B59,  ///< RenderChannelInterface
    EXT_CHANNEL_HOST = 0x7783DEF9,    ///< ChannelHostInterface, of the sequence data
    EXT_GEOM_OBJECT = 0x77790001,     ///< GeomObjectInterface
    EXT_SURFACE_FRAME = 0x77780010,   ///< SurfaceFrameInterface, of the hit object
    EXT_OBJECT_MAPPING = 0x77915061,  ///< ObjectMappingInterface, of the hit mapping
    EXT_SURFACE_MTLID = 0x77790010,   ///< SurfaceMtlIDInterface, of the hit object
    EXT_SHADER_SET = 0x2016031459,    ///< ShaderSetInterface, of the hit object
};

}  // namespace Tarnkit
