#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// Parameters that all lights have, as the host refreshes them at each frameBegin.
struct LightParams {
    Color color;             ///< linear, 0 to 1 as a rule
    float intensity = 1.0f;  ///< factor of the colour; its unit is the light's own
    int visible = 1;         ///< 0: camera rays pass through the light
    /// 0: secondary rays don't see the light either. Rays weighted by MIS still do, or half of the
    /// direct light would be missing.
    int reflectionVisible = 1;
    int shadows = 1;         ///< 0: next-event estimation traces no shadow rays to it
    int affectSpecular = 1;  ///< 0: it lights the diffuse part of BRDFs alone
};

/// Base of the lights of this host: the answers that come from LightParams. The constructor binds
/// them itself: with WithParams here too, `params` would be the name of two fields of one light.
/// WithParams of the derived class lists them in front of that class's own.
class HostLight : public PluginOffering<LightInterface> {
public:
    explicit HostLight(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    bool isVisibleTo(u32 rayType, int traceDepth) const override;
    bool hasExtent() const override { return true; }
    bool castsShadows() const override { return light.shadows != 0; }
    bool affectsSpecular() const override { return light.affectSpecular != 0; }

protected:
    Color emission() const { return light.color * light.intensity; }

    LightParams light;
};

}  // namespace Tarnkit
