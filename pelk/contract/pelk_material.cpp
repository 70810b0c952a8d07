#include "pelk/contract/pelk_material.h"

namespace Tarnkit {

RTMtlList::~RTMtlList() = default;

PluginInterface* PelkMaterial::getInterface(u64 id) {
    PluginInterface* const own = Offered::find(*this, id);
    return own ? own : PelkPlugin::getInterface(id);
}

PluginInterface* PelkRTMaterial::getInterface(u64 id) {
    PluginInterface* const own = Offered::find(*this, id);
    return own ? own : PelkMaterial::getInterface(id);
}

}  // namespace Tarnkit
