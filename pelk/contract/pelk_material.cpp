#include "pelk/contract/pelk_material.h"

namespace Tarnkit {

RTMtlList::~RTMtlList() = default;

PluginInterface* PelkMaterial::getInterface(u64 id) {
    switch (id) {
        case EXT_MATERIAL:
            return static_cast<MaterialInterface*>(this);
        case EXT_BSDF:
            return static_cast<BSDFInterface*>(this);
        case EXT_OPAQUE_SHADEABLE:
            return static_cast<OpaqueShadeableInterface*>(this);
        default:
            return PelkPlugin::getInterface(id);
    }
}

PluginInterface* PelkRTMaterial::getInterface(u64 id) {
    if (id == EXT_RTMTL)
        return static_cast<RTMtlInterface*>(this);
    return PelkMaterial::getInterface(id);
}

}  // namespace Tarnkit
