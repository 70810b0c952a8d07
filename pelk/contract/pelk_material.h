#pragma once

#include "pelk/contract/pelk_plugin.h"

// What a material is to a host: four interfaces of one object.
//   MaterialInterface         shades a hit as a whole: light, reflection, what shows through
//   BSDFInterface             hands out the scattering of a hit, for another material to build upon
//   OpaqueShadeableInterface  a hint for shadow rays
//   RTMtlInterface            describes the material as text
//
// A host that renders calls `shade` at every hit: of camera rays, of rays that were reflected,
// refracted or spawned for indirect light, and of shadow rays. It never needs a material's sampler,
// and `pelk` asks for none. getBSDF is called by materials on the material or BSDF plug-in that
// they are built upon (a side of Mtl2Sided, a layer of MtlLayeredBRDF, the plug-in of
// MtlSingleBRDF), and by hosts that sample paths themselves. A plug-in that only scatters offers
// EXT_BSDF alone and becomes a surface by an MtlSingleBRDF in front of it. A material should show
// the same surface either way, as its parents choose freely, and its header says what the sampler
// leaves out (MtlDiffuse: transparency). The easiest way is to write getBSDF alone and have `shade`
// call shadeBSDF with its sampler.

namespace Tarnkit {

class BSDFSampler;
class PelkContext;
class ShaderSource;
class RTMtlInterface;
struct OCLData;

/// Shades hits. All operations are called from all render threads at once, between frameBegin and
/// frameEnd, with a context that belongs to the calling thread. They take no lock and no memory
/// from the heap: what a hit needs stands on the stack or comes from the pool entry of
/// `context.threadData->threadIndex`. An ExceptionMsg, when such a pool must grow and can't, is all
/// that they throw; `pelk` ends the job with it. What else a plug-in throws costs the sample, and
/// `pelk` tells how many it lost so.
class PELK_API MaterialInterface : public PluginInterface {
public:
    static constexpr InterfaceID<MaterialInterface> kInterfaceID{0x77770002, "EXT_MATERIAL"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Shades the hit for the ray that met it, and writes all four results. They are premultiplied:
    /// the host composites results front to back along the ray, colour += through * resultColor and
    /// then through *= resultTransparency, and traces what lies behind itself.
    ///   - resultColor: radiance towards the ray's origin, from emission, direct light (next-event
    ///     estimation), indirect light, and the rays that the material has traced.
    ///   - resultTransparency: the factor per channel for what lies straight behind; 1 is clear.
    ///   - resultAlpha and resultAlphaTransparency: the same two for the picture's alpha.
    ///
    /// Where `resultFragment` isn't null, writes its render channels there too. At a shadow ray
    /// (bit kRayShadow of rayType) resultTransparency alone counts, the share of light that passes;
    /// no light is evaluated there, or each shadow ray would spawn more of them.
    ///
    /// `surfaceVolume`, `surfaceProperties` and `shadedFlags` may be set for the host to read after
    /// the call. All else that is changed around the call of another plug-in is put back, also when
    /// that throws. Where one of the four results isn't finite, `pelk` replaces all of them by
    /// opaque black, leaves the sample out of the picture and tells the user.
    virtual void shade(PelkContext& context) = 0;
    /// The id by which a picture's id channel tells this material from others, at the hit, which is
    /// filled as for shade. Not the id of the polygon, SurfaceMtlIDInterface, which goes into the
    /// choice of a material. 0 without one; wrappers ask the material that they stand before, or
    /// the one that they choose at this hit. Called at hits from all render threads at once, each
    /// with a context of its own. `pelk` itself doesn't ask.
    virtual int getMaterialID(PelkContext&) { return 0; }
    /// As in OpaqueShadeableInterface, and the same answer.
    virtual int getOpaqueFlags() { return 0; }
};

/// Hands out the BSDF of a hit as an object, a sampler, that can be evaluated for lights and
/// sampled for rays. Called from all render threads at once, between frameBegin and frameEnd.
/// ScopedSampler in shading.h gives back what it got on every way out:
///
///     const ScopedSampler sampler(context, *bsdfInterface, 0);
///     if (!sampler.get())
///         return setFullyTransparent(context);
///     shadeBSDF(context, sampler.get());
class PELK_API BSDFInterface : public PluginInterface {
public:
    static constexpr InterfaceID<BSDFInterface> kInterfaceID{0x77770020, "EXT_BSDF"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// A sampler for this hit, on this thread alone; null if the plug-in has none here, and the
    /// surface is taken for fully transparent. It comes from a pool, stays the plug-in's, and is
    /// valid until releaseBSDF, which must be called on the same interface. Several may be out at
    /// once, from one plug-in too. `flags`: bit 0x1, kSingleSided, asks for the sampler of a
    /// surface that scatters on its front alone; no other bit has a meaning here, and a wrapper
    /// passes all of them on. Throws an ExceptionMsg if a pool can't grow; no sampler is out then.
    virtual BSDFSampler* getBSDF(PelkContext& context, int flags) = 0;
    /// Takes back what getBSDF gave, on the same thread and with the same context, still at the
    /// same hit: a material that chooses among others looks the choice up by it. A wrapper gives
    /// the sampler it was built upon back first. A null sampler does nothing.
    virtual void releaseBSDF(PelkContext& context, BSDFSampler* sampler) = 0;
};

/// Bit of getOpaqueFlags: opaque everywhere and to every light. A wrapper has it if all that it can
/// show has it, and drops it where it makes the surface less than opaque itself.
constexpr int kOpaqueToShadows = 0x1;
/// Bit of getOpaqueFlags: set by Mtl2Sided, whose sides show different materials; MtlOverride hands
/// it up from any of its materials.
constexpr int kOpaqueTwoSided = 0x2;

/// Tells whether a shadow ray that meets the material can end there, without `shade` being asked
/// how much light passes. A hint: 0 is always a right answer, and a host may ignore it. `pelk`
/// does, and asks `shade` at each surface on the way, because an MtlRenderStats of partial
/// visibility hands kOpaqueToShadows of its base up and still lets light through.
class PELK_API OpaqueShadeableInterface : public PluginInterface {
public:
    static constexpr InterfaceID<OpaqueShadeableInterface> kInterfaceID{0x781B9321,
                                                                        "EXT_OPAQUE_SHADEABLE"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// A set of the two bits above, the same for all hits of a frame; from all render threads at
    /// once. MtlRenderStats and MtlMulti answer kOpaqueToShadows alone. Bits that a wrapper doesn't
    /// judge it hands up as they are.
    virtual int getOpaqueFlags() { return 0; }
};

/// A growing list of materials that describe themselves. The host's, filled by collectSubMtls.
class PELK_API RTMtlList {
public:
    virtual ~RTMtlList();
    /// `material` is not null, and stays its plug-in's. May throw an ExceptionMsg.
    virtual void append(RTMtlInterface* material) = 0;
};

/// Describes a material and all below it as text, the descriptor text, for a renderer that can't
/// call it, such as one on a graphics processor. All operations are called outside of hits, on the
/// thread that begins frames and between frameBegin and frameEnd: they read bound fields and what
/// frameBegin has looked up.
///
/// The text is a sequence of lines, each ended by a line feed: a keyword, or a keyword and values
/// with blanks or commas between them, as printf writes %f, %i and %s in the "C" locale. There are
/// two sections, asked for one by one; names are compared in full, upper and lower case apart.
///
/// "MaterialDescriptor": what each material is. The lines of a sub-material come in one of three
/// ways:
///   - passed through: they follow the wrapper's own lines, with nothing between;
///   - as a block: between the lines "<coatlayer_begin>" and "<coatlayer_end>", which may hold
///   lines of
///     the parent ahead of the child's, as a weight;
///   - as an addressed block: the parent's header names each child by an offset, the number of its
///     block among all blocks behind the header, nested ones included, from 1. A position without
///     text of its own takes 1 if the first position has some, else 0.
/// An MtlOverride with materials for its first and third position:
///
///     override_mtl
///     override_sub_mtls_offsets 1,1,2,1,1
///     <coatlayer_begin>
///     diffuse
///     color_value 0.500000 0.500000 0.500000
///     <coatlayer_end>
///     <coatlayer_begin>
///     diffuse
///     color_value 0.000000 0.100000 0.800000
///     <coatlayer_end>
///
/// "HierarchyDescriptor": the shape of the tree. A material with children writes "Num_children: 2"
/// and then has each child write its lines; for a child that answers 0, a leaf, it writes
/// "Num_children: 0". Materials that pass through are no nodes of the tree.
///
/// A child without this interface is no error: it isn't described, and doesn't count.
class PELK_API RTMtlInterface : public PluginInterface {
public:
    static constexpr InterfaceID<RTMtlInterface> kInterfaceID{0x77C0A07E, "EXT_RTMTL"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    // Two operations without a meaning: every material answers 0. They keep their places in the
    // table of operations, so that libraries that were built apart agree on those behind them.
    virtual int reserved1() { return 0; }
    virtual int reserved2() { return 0; }
    /// Appends the section `kind` to `source`. Returns 1 if the material handled the section, else
    /// 0; then it has written nothing, unless it passes through and wrote ahead of its child. An
    /// unknown `kind` is no error. `owner` and `name` are the host's, may be null, and pass through
    /// to every sub-material; `name` goes to textures too. `data` passes through. Throws an
    /// ExceptionMsg if there is no memory for the text.
    virtual int getMaterialSource(void* owner, const char* name, const char* kind,
                                  ShaderSource& source, OCLData& data) = 0;

    // For hosts that choose a material by the polygon's id themselves. MtlMulti answers; for all
    // other materials the defaults hold, but that wrappers hand getMultiMtl on. Answers hold for
    // the frame.

    /// The number of entries, those without a material or without a description counted too.
    virtual int getNumSubMtls() { return 0; }
    /// The id of an entry, by its position from 0; -1 outside.
    virtual int getSubMtlID(int) { return -1; }
    /// The first entry with that id, null if there is none or it doesn't describe itself. Wraps ids
    /// as shading does, but doesn't fall back to the first entry.
    virtual RTMtlInterface* getSubMtlByID(int) { return nullptr; }
    /// The entry at a position from 0; null outside, or if it doesn't describe itself.
    virtual RTMtlInterface* getSubMtl(int) { return nullptr; }
    /// Appends all entries that describe themselves to the list, in their order, and returns how
    /// many it appended.
    virtual int collectSubMtls(RTMtlList&) { return 0; }
    /// The material that chooses among sub-materials by id: this one, or the one that a wrapper
    /// stands before; null without.
    virtual RTMtlInterface* getMultiMtl() { return nullptr; }
};

/// Base of all materials: one object with the interfaces of a plug-in, a material, a BSDF and an
/// opaque shadeable. A material overrides shade, getBSDF and releaseBSDF, and of the life cycle in
/// PelkPluginInterface what it needs. A wrapper looks up the interfaces of what it stands before in
/// frameBegin; each may be missing there, and a missing one has an answer in each operation (opaque
/// black in shade, a null sampler from getBSDF).
class PELK_API PelkMaterial : public PelkPlugin,
                              public MaterialInterface,
                              public BSDFInterface,
                              public OpaqueShadeableInterface {
public:
    using Offered = InterfaceList<MaterialInterface, BSDFInterface, OpaqueShadeableInterface>;
    /// What descriptors of materials tell of them: the rest is offered without being announced.
    using Announced = InterfaceList<MaterialInterface, PelkPluginInterface>;

    explicit PelkMaterial(PelkPluginDesc* pluginDesc) : PelkPlugin(pluginDesc) {}

    /// The three of `Offered`, then what PelkPlugin has. Asked at hits too.
    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }
    /// Overrides it in both interfaces that have it, so that they answer the same.
    int getOpaqueFlags() override { return 0; }
};

/// Base of the materials that also describe themselves as text. They override getMaterialSource;
/// what isn't derived from this counts in the text of others as no material at all.
class PELK_API PelkRTMaterial : public PelkMaterial, public RTMtlInterface {
public:
    using Offered = InterfaceList<RTMtlInterface>;

    explicit PelkRTMaterial(PelkPluginDesc* pluginDesc) : PelkMaterial(pluginDesc) {}

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }
};

}  // namespace Tarnkit
