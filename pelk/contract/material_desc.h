#pragma once

#include "pelk/contract/pelk_material.h"

namespace Tarnkit {

/// Descriptor of one kind of material: all but the name, the id and the parameters. The instances
/// come from, and go back to, the operator new of the library that the descriptor stands in.
template <class Material>
class MaterialDesc : public PelkPluginDesc {
public:
    Plugin* newPlugin(PelkPluginHost*) override { return new Material(this); }

    void deletePlugin(Plugin* plugin) override { delete plugin; }

    int supportsInterface(u64 id) override {
        return id == MaterialInterface::kInterfaceID || id == PelkPluginInterface::kInterfaceID;
    }

protected:
    PelkParameterListDesc list;
};

}  // namespace Tarnkit
