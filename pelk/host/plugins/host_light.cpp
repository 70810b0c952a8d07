#include "pelk/host/plugins/host_light.h"

#include "pelk/contract/context.h"
#include "pelk/contract/param_table.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kLightParams{
    colorParam("color", &LightParams::color, Color(1), "Colour of the light, linear"),
    floatParam("intensity", &LightParams::intensity, 1.0f, "Brightness; scales the colour"),
    boolParam("visible", &LightParams::visible, true, "Camera rays see the light itself"),
    boolParam("reflection_visible", &LightParams::reflectionVisible, true,
              "Reflected and refracted rays see the light itself"),
    boolParam("shadows", &LightParams::shadows, true, "Geometry stands in the light's way"),
    boolParam("affect_specular", &LightParams::affectSpecular, true,
              "Surfaces show highlights of the light"),
};

}  // namespace

HostLight::HostLight(PelkPluginDesc* pluginDesc) : PluginOffering(pluginDesc) {
    kLightParams.bind(paramList, light);
}

void HostLight::addParameters(PelkParameterListDesc& list) {
    kLightParams.addTo(list);
}

bool HostLight::isVisibleTo(u32 rayType, int traceDepth) const {
    if (traceDepth == 0 && (rayType & kRayCamera))
        return light.visible != 0;
    return light.reflectionVisible != 0;
}

}  // namespace Tarnkit
