#pragma once

#include "pelk/contract/parameters.h"
#include "pelk/contract/plugin.h"
#include "pelk/contract/plugin_desc.h"

namespace Tarnkit {

class PelkRenderer;

/// Tells how many samplers a plug-in has out, for hosts that look for those that were never given
/// back.
class SamplerCount {
public:
    /// Samplers of all threads that were handed out and not given back. Asked between the last hit
    /// of a frame and frameEnd, while no thread renders.
    virtual int getNumOut() const = 0;

protected:
    ~SamplerCount() = default;
};

/// The interface that every plug-in with parameters has: its parameters and its life cycle.
///
/// The host drives an instance in this order, and nothing here guards against another:
///   1. newPlugin of the descriptor, then setPluginName and setParameter. All fields hold defaults.
///   2. renderBegin, once per render. Per-thread pools are sized to sequenceData.numThreads, which
///      may have changed since the last render.
///   3. Per frame: frameBegin; then hits, on all render threads at once; then frameEnd. Between the
///      two the bound fields are read-only, which is why hits need no lock.
///   4. renderEnd, once.
///   5. deletePlugin of the descriptor. The parameters must live until then.
/// Steps 2 to 4 come again for each render. All but the hits run on one thread, the one that runs
/// the job. The host calls every instance itself, also those that others refer to: a plug-in
/// forwards none of these calls.
///
/// All instances have had renderBegin before the first frameBegin, and all have had frameBegin
/// before the first hit. Among instances there is no order to rely on but one: the camera's frame
/// begins first, so that cameraPosition and cameraMatrix of frameData hold in everybody else's
/// frameBegin. So frameBegin may look up another instance's interfaces, but must not read what that
/// computes in its own frameBegin; that waits for the hits.
///
/// Any operation may throw an ExceptionMsg, for lack of memory only; what is wrong with a scene has
/// a fixed answer instead. What leaves renderBegin or frameBegin ends the job of `pelk` with a
/// message that names the instance; what leaves a hit for another reason costs the sample, and
/// frameEnd, renderEnd or deletePlugin are done with a warning. Each instance whose frameBegin or
/// renderBegin returned still gets the frameEnd or renderEnd that pairs with it, in reverse order;
/// one that threw gets none for that call, so its destructor frees what it had made by then.
class PELK_API PelkPluginInterface : public PluginInterface {
public:
    static constexpr InterfaceID<PelkPluginInterface> kInterfaceID{0x7776FFFF, "EXT_PLUGIN_BASE"};

    /// `desc` is kept, has the parameters, and outlives the instance.
    explicit PelkPluginInterface(PelkPluginDesc* desc);

    u64 getInterfaceID() const override;
    const char* getInterfaceName() const override;

    /// A render begins. Makes what lasts for it, such as pools. Does nothing here, and an override
    /// does not call the base. Fields hold what they held before, defaults at first; a plug-in that
    /// needs values now calls paramList.cacheParams(0.0, {}). `renderer` stays the host's and is
    /// the one of all calls until renderEnd.
    virtual void renderBegin(PelkRenderer& renderer);
    /// Frees what renderBegin made. Does nothing here, and an override does not call the base.
    virtual void renderEnd(PelkRenderer& renderer);
    /// A frame begins. Rewrites every bound field from its parameter, at frameData.frameTime, so an
    /// override calls it first, and whatever it has changed in a field before is gone. The override
    /// then looks up the interfaces of the plug-ins it refers to, computes what all hits have in
    /// common, reads lists by paramList.getParam, and gives its warnings: here they come once a
    /// frame, at a hit they would come from every pixel.
    virtual void frameBegin(PelkRenderer& renderer);
    /// Frees what frameBegin made. Does nothing here, and an override does not call the base.
    virtual void frameEnd(PelkRenderer& renderer);
    /// Sets a parameter by its name. The parameter stays the caller's and must outlive the plug-in
    /// or its replacement by another of that name; null does nothing. Fields follow at the next
    /// frameBegin. A name that the plug-in doesn't know is kept too, and read by nobody.
    virtual void setParameter(PelkPluginParameter* parameter);
    /// What was set under that name; null if nothing was, also where there is a default.
    virtual PelkPluginParameter* getParameter(const char* name);

    /// What is bound and set, for hosts that check plug-ins.
    const PelkParameterList& getParameterList() const { return paramList; }
    /// Null for a plug-in that doesn't count its samplers.
    const SamplerCount* getSamplerCount() const { return samplerCount; }

protected:
    /// Set once by the constructor of a plug-in that hands out samplers, to its pool; see
    /// sampler_pool.h.
    const SamplerCount* samplerCount = nullptr;
    PelkPluginDesc* desc;         ///< the kind of this instance; not owned
    PelkParameterList paramList;  ///< bound to the fields by the derived class's constructor
};

/// One instance of a plug-in with parameters: base of materials, textures, lights and all else that
/// a scene connects. A derived class adds the interfaces by which others use it. A whole one, a
/// texture that shows how far the hit is:
///
///     struct DistanceParams {
///         float range = 1.0f;  ///< distance that is shown as 1, above 0
///         static ParamRows<DistanceParams> table();
///     };
///
///     class TexDistance final
///         : public WithParams<DistanceParams, PluginOffering<TextureFloatInterface>> {
///     public:
///         static constexpr const char* kName = "TexDistance";
///         static constexpr u32 kID = 0x5C1D9E37;
///
///         using WithParams::WithParams;
///
///         float getTexFloat(PelkContext& context) override {
///             const Vector way = context.hitPoint - context.rayOrigin;
///             return length(way) / params.range;
///         }
///         Vector getTexBump(PelkContext&) override { return {}; }
///     };
///
///     constexpr ParamTable kParams{
///         floatParam("range", &DistanceParams::range, 1.0f, "Distance that is white"),
///     };
///     ParamRows<DistanceParams> DistanceParams::table() { return kParams; }
///
///     using TexDistanceDesc = DescOf<TexDistance>;  // its descriptor, from desc_of.h
class PELK_API PelkPlugin : public Plugin, public PelkPluginInterface {
public:
    using Offered = InterfaceList<PelkPluginInterface>;

    /// Called by newPlugin of the descriptor. A derived constructor binds its fields and reads no
    /// values: none is set yet.
    explicit PelkPlugin(PelkPluginDesc* pluginDesc) : PelkPluginInterface(pluginDesc) {}

    /// EXT_PLUGIN_BASE and the interfaces that were added to the instance.
    PluginInterface* getInterface(u64 id) override;
    PluginDesc* getPluginDesc() override { return desc; }
    /// A class with further interfaces overrides this, as each of them asks for its plug-in.
    PluginBase* getPlugin() override { return this; }
};

}  // namespace Tarnkit
