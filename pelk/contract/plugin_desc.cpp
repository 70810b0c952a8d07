#include "pelk/contract/plugin_desc.h"

#include "pelk/contract/parameters.h"

namespace Tarnkit {

void PluginDesc::registerPlugin(PelkPluginHost*) {}

void PluginDesc::unregisterPlugin(PelkPluginHost*) {}

int PluginDesc::reserved() {
    return 0;
}

void PelkPluginDesc::registerPlugin(PelkPluginHost* host) {
    if (!host)
        return;
    host->addPluginDesc(this);
    if (paramDesc)
        paramDesc->registerParameters(host, this);
}

void PelkPluginDesc::unregisterPlugin(PelkPluginHost* host) {
    if (host)
        host->removePluginDesc(this);
}

}  // namespace Tarnkit
