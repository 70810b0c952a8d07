#pragma once

#include "pelk/base/vector.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

class PelkContext;
class RenderChannel;

/// A render channel as materials see it: a place in a fragment.
class PELK_API RenderChannelInterface : public PluginInterface {
public:
    u64 getInterfaceID() const override { return EXT_RENDER_CHANNEL; }
    const char* getInterfaceName() const override { return "EXT_RENDER_CHANNEL"; }
    virtual int getChannelIndex() = 0;
};

/// The channels of a render, in the order of their indices. Entries may be null.
class PELK_API ChannelHostInterface : public PluginInterface {
public:
    u64 getInterfaceID() const override { return EXT_CHANNEL_HOST; }
    const char* getInterfaceName() const override { return "EXT_CHANNEL_HOST"; }
    virtual int getNumChannels() = 0;
    virtual RenderChannel* getChannel(int index) = 0;
};

/// A scene object that has geometry.
class PELK_API GeomObjectInterface : public PluginInterface {
public:
    u64 getInterfaceID() const override { return EXT_GEOM_OBJECT; }
    const char* getInterfaceName() const override { return "EXT_GEOM_OBJECT"; }
    virtual int getRenderID(PelkContext& context) = 0;
};

/// A hit object that knows the axes of its texture coordinates.
class PELK_API SurfaceFrameInterface : public PluginInterface {
public:
    u64 getInterfaceID() const override { return EXT_SURFACE_FRAME; }
    const char* getInterfaceName() const override { return "EXT_SURFACE_FRAME"; }
    /// The map from the world to the space of u, v and the normal: its inverse has the directions
    /// in which they grow as columns. `channel`: the set of texture coordinates, -1 for the first.
    virtual Transform getSurfaceFrame(PelkContext& context, int channel) = 0;
};

/// A hit object that has a space of its own.
class PELK_API ObjectMappingInterface : public PluginInterface {
public:
    u64 getInterfaceID() const override { return EXT_OBJECT_MAPPING; }
    const char* getInterfaceName() const override { return "EXT_OBJECT_MAPPING"; }
    /// A direction of the object's space in world space; its length follows the object's scale.
    virtual Vector objectToWorld(PelkContext& context, Vector vector) = 0;
};

/// A hit object whose faces carry material ids.
class PELK_API SurfaceMtlIDInterface : public PluginInterface {
public:
    u64 getInterfaceID() const override { return EXT_SURFACE_MTLID; }
    const char* getInterfaceName() const override { return "EXT_SURFACE_MTLID"; }
    virtual int getSurfaceMtlID(PelkContext& context) = 0;
};

/// A text in the renderer's string table. Equal texts have equal ids; 0 is no text.
struct StringHandle {
    u32 id = 0;
};

/// Texts that are compared at hits, by number.
class PELK_API StringTable {
public:
    virtual ~StringTable();
    /// The handle of `text`, made at the first call with it. Not at hits.
    virtual StringHandle intern(const char* text) = 0;
};

/// A hit object whose faces belong to named shader sets.
class PELK_API ShaderSetInterface : public PluginInterface {
public:
    u64 getInterfaceID() const override { return EXT_SHADER_SET; }
    const char* getInterfaceName() const override { return "EXT_SHADER_SET"; }
    /// Writes the name of the hit's shader set, with id 0 if it has none.
    virtual void getShaderSetName(StringHandle& out, PelkContext& context, int channel) = 0;
};

/// The medium on one side of a surface.
class PELK_API PelkVolume : public PluginInterface {
public:
    u64 getInterfaceID() const override { return EXT_VOLUME; }
    const char* getInterfaceName() const override { return "EXT_VOLUME"; }
    /// The index of refraction.
    virtual float getIOR(PelkContext& context) = 0;
};

}  // namespace Tarnkit
