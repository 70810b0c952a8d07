#pragma once

#include "pelk/base/vector.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

class PelkContext;
class RenderChannel;

/// A render channel as materials see it: a place in a fragment.
class PELK_API RenderChannelInterface : public PluginInterface {
public:
    static constexpr InterfaceID<RenderChannelInterface> kInterfaceID{0x77836B59,
                                                                      "EXT_RENDER_CHANNEL"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    virtual int getChannelIndex() = 0;
};

/// The channels of a render, in the order of their indices. Entries may be null.
class PELK_API ChannelHostInterface : public PluginInterface {
public:
    static constexpr InterfaceID<ChannelHostInterface> kInterfaceID{0x7783DEF9, "EXT_CHANNEL_HOST"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    virtual int getNumChannels() = 0;
    virtual RenderChannel* getChannel(int index) = 0;
};

/// A scene object that has geometry.
class PELK_API GeomObjectInterface : public PluginInterface {
public:
    static constexpr InterfaceID<GeomObjectInterface> kInterfaceID{0x77790001, "EXT_GEOM_OBJECT"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    virtual int getRenderID(PelkContext& context) = 0;
};

/// A hit object that knows the axes of its texture coordinates.
class PELK_API SurfaceFrameInterface : public PluginInterface {
public:
    static constexpr InterfaceID<SurfaceFrameInterface> kInterfaceID{0x77780010,
                                                                     "EXT_SURFACE_FRAME"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// The map from the world to the space of u, v and the normal: its inverse has the directions
    /// in which they grow as columns. `channel`: the set of texture coordinates, -1 for the first.
    virtual Transform getSurfaceFrame(PelkContext& context, int channel) = 0;
};

/// A hit object that has a space of its own.
class PELK_API ObjectMappingInterface : public PluginInterface {
public:
    static constexpr InterfaceID<ObjectMappingInterface> kInterfaceID{0x77915061,
                                                                      "EXT_OBJECT_MAPPING"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// A direction of the object's space in world space; its length follows the object's scale.
    virtual Vector objectToWorld(PelkContext& context, Vector vector) = 0;
};

/// A hit object whose faces carry material ids.
class PELK_API SurfaceMtlIDInterface : public PluginInterface {
public:
    static constexpr InterfaceID<SurfaceMtlIDInterface> kInterfaceID{0x77790010,
                                                                     "EXT_SURFACE_MTLID"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
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
    static constexpr InterfaceID<ShaderSetInterface> kInterfaceID{0x2016031459, "EXT_SHADER_SET"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Writes the name of the hit's shader set, with id 0 if it has none.
    virtual void getShaderSetName(StringHandle& out, PelkContext& context, int channel) = 0;
};

/// The medium on one side of a surface.
class PELK_API PelkVolume : public PluginInterface {
public:
    static constexpr InterfaceID<PelkVolume> kInterfaceID{0x2005072410, "EXT_VOLUME"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// The index of refraction.
    virtual float getIOR(PelkContext& context) = 0;
};

}  // namespace Tarnkit
