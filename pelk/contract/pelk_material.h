#pragma once

#include "pelk/contract/pelk_plugin.h"

namespace Tarnkit {

class BSDFSampler;
class PelkContext;
class ShaderSource;
class RTMtlInterface;
struct OCLData;

/// Shades hits. Called from all render threads at once.
class PELK_API MaterialInterface : public PluginInterface {
public:
    static constexpr InterfaceID<MaterialInterface> kInterfaceID{0x77770002, "EXT_MATERIAL"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Fills the four results of the context, and its fragment if it has one.
    virtual void shade(PelkContext& context) = 0;
    virtual int getMaterialID(PelkContext&) { return 0; }
    /// Bits as in OpaqueShadeableInterface.
    virtual int getOpaqueFlags() { return 0; }
};

/// Hands out the scattering object of a hit. Called from all render threads at once.
class PELK_API BSDFInterface : public PluginInterface {
public:
    static constexpr InterfaceID<BSDFInterface> kInterfaceID{0x77770020, "EXT_BSDF"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// A sampler for this hit, null if there is none. It is valid until releaseBSDF. Bit 0 of
    /// `flags` asks for the sampler of a single-sided surface; the rest is passed on.
    virtual BSDFSampler* getBSDF(PelkContext& context, int flags) = 0;
    /// Takes the sampler back, on the same thread and with the same context.
    virtual void releaseBSDF(PelkContext& context, BSDFSampler* sampler) = 0;
};

/// Tells whether shadow rays can be stopped without asking the material. A hint only.
class PELK_API OpaqueShadeableInterface : public PluginInterface {
public:
    static constexpr InterfaceID<OpaqueShadeableInterface> kInterfaceID{0x781B9321,
                                                                        "EXT_OPAQUE_SHADEABLE"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    virtual int getOpaqueFlags() { return 0; }
};

/// A growing list of materials that describe themselves.
class PELK_API RTMtlList {
public:
    virtual ~RTMtlList();
    virtual void append(RTMtlInterface* material) = 0;
};

/// Describes a material as text for a renderer that can't call it.
class PELK_API RTMtlInterface : public PluginInterface {
public:
    static constexpr InterfaceID<RTMtlInterface> kInterfaceID{0x77C0A07E, "EXT_RTMTL"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    // Two operations that hosts may ask and no material answers with more than 0.
    virtual int reserved1() { return 0; }
    virtual int reserved2() { return 0; }
    /// Writes the section `kind` of the text into `source`. Returns 1 if the material handled the
    /// section, else 0. `owner` and `name` pass through to every sub-material.
    virtual int getMaterialSource(void* owner, const char* name, const char* kind,
                                  ShaderSource& source, OCLData& data) = 0;
    virtual int getNumSubMtls() { return 0; }
    virtual int getSubMtlID(int) { return -1; }
    virtual RTMtlInterface* getSubMtlByID(int) { return nullptr; }
    virtual RTMtlInterface* getSubMtl(int) { return nullptr; }
    /// Appends the sub-materials to `list` and returns how many it appended.
    virtual int collectSubMtls(RTMtlList&) { return 0; }
    /// The material that chooses among sub-materials by id, looked for through wrappers.
    virtual RTMtlInterface* getMultiMtl() { return nullptr; }
};

/// Base of all materials: one object with the faces of a plug-in, a material, a BSDF and an opaque
/// shadeable.
class PELK_API PelkMaterial : public PelkPlugin,
                              public MaterialInterface,
                              public BSDFInterface,
                              public OpaqueShadeableInterface {
public:
    using Offered = InterfaceList<MaterialInterface, BSDFInterface, OpaqueShadeableInterface>;
    /// What descriptors of materials tell of them: the rest is offered without being announced.
    using Announced = InterfaceList<MaterialInterface, PelkPluginInterface>;

    explicit PelkMaterial(PelkPluginDesc* pluginDesc) : PelkPlugin(pluginDesc) {}

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }
    /// The same on both faces that have it.
    int getOpaqueFlags() override { return 0; }
};

/// Base of the materials that also describe themselves as text.
class PELK_API PelkRTMaterial : public PelkMaterial, public RTMtlInterface {
public:
    using Offered = InterfaceList<RTMtlInterface>;

    explicit PelkRTMaterial(PelkPluginDesc* pluginDesc) : PelkMaterial(pluginDesc) {}

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }
};

}  // namespace Tarnkit
