#include "pelk/contract/pelk_plugin.h"

namespace Tarnkit {

PluginInterface* PelkPlugin::getInterface(u64 id) {
    PluginInterface* const own = Offered::find(*this, id);
    return own ? own : PluginBase::getInterface(id);
}

}  // namespace Tarnkit
