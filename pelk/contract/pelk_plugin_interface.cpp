#include "pelk/contract/pelk_plugin.h"
#include "pelk/contract/renderer.h"

namespace Tarnkit {

PelkPluginInterface::PelkPluginInterface(PelkPluginDesc* pluginDesc)
    : desc(pluginDesc), paramList(pluginDesc) {}

u64 PelkPluginInterface::getInterfaceID() const {
    return kInterfaceID;
}

const char* PelkPluginInterface::getInterfaceName() const {
    return kInterfaceID.name;
}

void PelkPluginInterface::renderBegin(PelkRenderer&) {}

void PelkPluginInterface::renderEnd(PelkRenderer&) {}

void PelkPluginInterface::frameBegin(PelkRenderer& renderer) {
    paramList.cacheParams(renderer.frameData.frameTime, TracePoint());
}

void PelkPluginInterface::frameEnd(PelkRenderer&) {}

void PelkPluginInterface::setParameter(PelkPluginParameter* parameter) {
    paramList.setParam(parameter);
}

PelkPluginParameter* PelkPluginInterface::getParameter(const char* name) {
    return paramList.getParam(name);
}

}  // namespace Tarnkit
