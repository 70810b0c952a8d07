#pragma once

// Interfaces that materials ask of the objects of a scene: what was hit, render channels, media.
// The host or its plug-ins implement them; a material looks one up with findInterface and goes
// without if the answer is null, so none of them is a duty. An interface belongs to the object that
// offers it and is valid as long as that. What takes a context is called at hits, from all render
// threads at once, and allocates nothing:
//
//     auto* ids = findInterface<SurfaceMtlIDInterface>(context.hitObject);
//     const int id = ids ? ids->getSurfaceMtlID(context) : 0;
//
// The answers must not change while a frame is rendered, and hang on the hit alone: one hit may be
// asked for more than once, by a parent material and by its children.

#include "pelk/base/vector.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

class PelkContext;
class RenderChannel;

/// A render channel as materials see it: a place in a fragment. Asked of the plug-in that a
/// parameter such as `render_channel_color` names, once a frame, so that a hit is spared the
/// look-up. Without it the material takes the position -1, which fragments ignore.
class PELK_API RenderChannelInterface : public PluginInterface {
public:
    static constexpr InterfaceID<RenderChannelInterface> kInterfaceID{0x77836B59,
                                                                      "EXT_RENDER_CHANNEL"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// The position to be used with Fragment::setChannel, from 0; -1 if the channel isn't rendered.
    /// Asked in renderBegin or frameBegin, so the host gives positions out before, for the render.
    virtual int getChannelIndex() = 0;
};

/// The channels of a render, for a material that looks for well-known ones by their aliases instead
/// of having them named by parameters. Asked of SequenceData, in frameBegin. A host that has it
/// adds it there with addInterface; without it those channels just aren't written.
class PELK_API ChannelHostInterface : public PluginInterface {
public:
    static constexpr InterfaceID<ChannelHostInterface> kInterfaceID{0x7783DEF9, "EXT_CHANNEL_HOST"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// One more than the highest position, as the loop bound of a search by alias; positions are
    /// those of RenderChannelInterface and of Fragment::setChannel.
    virtual int getNumChannels() = 0;
    /// The channel at a position, from 0; may be null. Of two with one alias the later one counts.
    virtual RenderChannel* getChannel(int index) = 0;
};

/// A scene object that has geometry: what exclude lists of surfaces name. A plug-in without it in
/// such a list is left out with a warning.
class PELK_API GeomObjectInterface : public PluginInterface {
public:
    static constexpr InterfaceID<GeomObjectInterface> kInterfaceID{0x77790001, "EXT_GEOM_OBJECT"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// The object's render id: a number by which host, exclude tables and the channel
    /// kAliasRenderID know it. The host gives ids out before the materials' frameBegin, where they
    /// are read with a blank context, and no two objects share one; it holds for the frame.
    virtual int getRenderID(PelkContext& context) = 0;
};

/// A hit object that knows its tangent frame, the axes of its texture coordinates, about which
/// normal maps are read. Asked of PelkContext::hitObject. Without it a normal map has no tangent
/// frame to be read in, and its vector is taken as the bump itself.
class PELK_API SurfaceFrameInterface : public PluginInterface {
public:
    static constexpr InterfaceID<SurfaceFrameInterface> kInterfaceID{0x77780010,
                                                                     "EXT_SURFACE_FRAME"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// The map from world space to tangent space (u, v, normal) at the hit: its inverse has the
    /// directions in which they grow as columns. They need not be unit or at right
    /// angles; who needs unit axes makes them so. `channel`: the set of texture coordinates, from
    /// 0; -1 for the first.
    virtual Transform getSurfaceFrame(PelkContext& context, int channel) = 0;
};

/// A hit object that has texture coordinates. Asked of PelkContext::hitObject by textures that the
/// scene gives no UVW generator, and by whoever takes finite differences of a texture: a bump moves
/// hitPoint, reads the texture, and puts hitPoint back. It has an id of its own so that objects
/// made before it stay as they are. Without it the coordinates count as 0.
///
///     auto* surface = findInterface<SurfaceUVInterface>(context.hitObject);
///     const Vector uvw = surface ? surface->getSurfaceUVW(context, -1) : Vector();
class PELK_API SurfaceUVInterface : public PluginInterface {
public:
    static constexpr InterfaceID<SurfaceUVInterface> kInterfaceID{0x7E1C0006, "EXT_SURFACE_UV"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Texture coordinates u, v and w (0 where there are only two) at the present hitPoint, which
    /// need not be where the ray met the surface: they run on linearly in the plane of the face
    /// that was hit, also beyond its edges, and a point off the plane counts as its foot on it. A
    /// bump gets the slope of this one face so, and no step where the next one begins. Never NaN:
    /// 0 without coordinates; a face whose coordinates are degenerate, which has no tangent frame,
    /// still gives them. `channel`: as for getSurfaceFrame; a set that the object lacks is
    /// replaced by the first.
    virtual Vector getSurfaceUVW(PelkContext& context, int channel) = 0;
};

/// A hit object that has a space of its own, for normal maps that are given in it. Asked of
/// PelkContext::hitMapping. Without it object space counts as world space.
class PELK_API ObjectMappingInterface : public PluginInterface {
public:
    static constexpr InterfaceID<ObjectMappingInterface> kInterfaceID{0x77915061,
                                                                      "EXT_OBJECT_MAPPING"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Takes a direction from object space to world space. It is not made unit: its length follows
    /// the object's scale, and who needs a unit one makes it so.
    virtual Vector objectToWorld(PelkContext& context, Vector vector) = 0;
};

/// A hit object whose polygons carry material ids, by which MtlMulti chooses a sub-material if no
/// texture does. Asked of PelkContext::hitObject. Without it the id is 0.
class PELK_API SurfaceMtlIDInterface : public PluginInterface {
public:
    static constexpr InterfaceID<SurfaceMtlIDInterface> kInterfaceID{0x77790010,
                                                                     "EXT_SURFACE_MTLID"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// The id of the polygon hit, as the scene gave it; 0 where there is none.
    virtual int getSurfaceMtlID(PelkContext& context) = 0;
};

/// A text in the renderer's string table: a plain value, valid until the render ends. Equal texts
/// have equal ids, so that hits compare numbers and not strings.
struct StringHandle {
    u32 id = 0;  ///< above 0; 0 is no text
};

/// The renderer's string table: gives texts numbers, which hold until the render ends. The
/// renderer's own; see PelkRenderer::getStringTable.
class PELK_API StringTable {
public:
    virtual ~StringTable();
    /// The handle of `text`, which is copied at the first call with it; id 0 for null. For the
    /// single thread of renderBegin and frameBegin, not at hits, as it draws memory: it may throw
    /// an ExceptionMsg.
    virtual StringHandle intern(const char* text) = 0;
};

/// A hit object whose polygons belong to named shader sets (groups of polygons that share a
/// material by name). Asked of PelkContext::hitObject by MtlMulti, if its parameters name sets.
/// Without it, as without a set, the hit gets the first sub-material.
class PELK_API ShaderSetInterface : public PluginInterface {
public:
    static constexpr InterfaceID<ShaderSetInterface> kInterfaceID{0x2016031459, "EXT_SHADER_SET"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Overwrites `out` with the name of the shader set of the polygon hit, or with id 0 if it is
    /// in none. The id and not the text: a hit compares numbers. `channel`: 0; reserved for objects
    /// with several sets.
    virtual void getShaderSetName(StringHandle& out, PelkContext& context, int channel) = 0;
};

/// The medium behind a surface, such as glass or water. Found by BSDFSampler::getVolume and set as
/// PelkContext::surfaceVolume; a host keeps a stack of those that a ray has entered
/// (PelkContext::currentVolume), so that objects can lie in one another without gaps. Media are
/// told apart by their addresses, which costs a hit one comparison: two objects of one medium share
/// the plug-in. A volume lives as long as the frame.
class PELK_API PelkVolume : public PluginInterface {
public:
    static constexpr InterfaceID<PelkVolume> kInterfaceID{0x2005072410, "EXT_VOLUME"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// The absolute index of refraction at the hit, 1 for vacuum, above 0. Who refracts divides
    /// that of the medium that the ray enters by that of the one it leaves:
    ///
    ///     PelkVolume* outside = context.currentVolume(nullptr);  // entering: null is vacuum
    ///     const float n = inside->getIOR(context) / (outside ? outside->getIOR(context) : 1.0f);
    virtual float getIOR(PelkContext& context) = 0;
};

}  // namespace Tarnkit
