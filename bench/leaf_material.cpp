#include "leaf_material.h"

PluginInterface* Leaf::getInterface(u64 id) {
    if (id == EXT_MATERIAL)
        return static_cast<MaterialInterface*>(this);
    return id == EXT_BSDF ? static_cast<BSDFInterface*>(this) : nullptr;
}

PluginBase* Leaf::getPlugin() {
    return this;
}

void Leaf::shade(PelkContext&) {}

BSDFSampler* Leaf::getBSDF(PelkContext&, int) {
    return &sampler;
}

void Leaf::releaseBSDF(PelkContext&, BSDFSampler*) {}
