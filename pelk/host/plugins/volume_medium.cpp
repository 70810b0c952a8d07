#include "pelk/host/plugins/volume_medium.h"

#include "pelk/contract/param_table.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kMediumParams{
    floatParam("ior", &VolumeMedium::Params::ior, 1.33f, "Index of refraction"),
};

}  // namespace

VolumeMedium::VolumeMedium(PelkPluginDesc* pluginDesc) : PelkPlugin(pluginDesc) {
    kMediumParams.bind(paramList, params);
}

void VolumeMedium::addParameters(PelkParameterListDesc& list) {
    kMediumParams.addTo(list);
}

PluginInterface* VolumeMedium::getInterface(u64 id) {
    PluginInterface* const own = Offered::find(*this, id);
    return own ? own : PelkPlugin::getInterface(id);
}

}  // namespace Tarnkit
