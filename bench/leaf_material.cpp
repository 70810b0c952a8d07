#include "leaf_material.h"

PluginInterface* Leaf::getInterface(u64 id) {
    if (id == MaterialInterface::kInterfaceID)
        return static_cast<MaterialInterface*>(this);
    return id == BSDFInterface::kInterfaceID ? static_cast<BSDFInterface*>(this) : nullptr;
}

PluginBase* Leaf::getPlugin() {
    return this;
}

void Leaf::shade(PelkContext&) {}

BSDFSampler* Leaf::getBSDF(PelkContext&, int) {
    return &sampler;
}

void Leaf::releaseBSDF(PelkContext&, BSDFSampler*) {}
