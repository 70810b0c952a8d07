#include "pelk/contract/pelk_plugin.h"

namespace Tarnkit {

PluginInterface* PelkPlugin::getInterface(u64 id) {
    if (id == EXT_PLUGIN_BASE)
        return static_cast<PelkPluginInterface*>(this);
    return PluginBase::getInterface(id);
}

}  // namespace Tarnkit
