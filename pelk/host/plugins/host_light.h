#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// What all lights have: colour and brightness, and which rays see them.
struct LightParams {
    Color color;
    float intensity = 1.0f;      ///< scales the colour; units as each light tells
    int visible = 1;             ///< camera rays see the light itself
    int reflection_visible = 1;  ///< reflected and refracted rays see it
    int shadows = 1;             ///< geometry stands in its way
    int affect_specular = 1;     ///< surfaces show highlights of it
};

/// Base of the lights of this host. A class that derives from it registers and binds the
/// parameters of LightParams in front of its own.
class HostLight : public PluginOffering<LightInterface> {
public:
    explicit HostLight(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    bool isVisibleTo(u32 rayType, int traceDepth) const override;
    bool hasExtent() const override { return true; }
    bool castsShadows() const override { return light.shadows != 0; }
    bool affectsSpecular() const override { return light.affect_specular != 0; }

protected:
    Color emission() const { return light.color * light.intensity; }

    LightParams light;
};

}  // namespace Tarnkit
