#pragma once

#include "pelk/contract/material.h"

/// A material that hands out one sampler and knows nothing else. Its bodies stand in a source of
/// their own, so that calls of them stay calls.
class Leaf final : public Plugin, public MaterialInterface, public BSDFInterface {
public:
    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override;
    void shade(PelkContext& context) override;
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* released) override;

private:
    BSDFSampler sampler;
};
