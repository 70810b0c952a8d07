#pragma once

#include "pelk/contract/param_table.h"
#include "pelk/contract/pelk_plugin.h"

namespace Tarnkit {

/// Descriptor of one kind of plug-in of this host. A plug-in class has
///   static constexpr const char* kName, u32 kID,
///   `Offered`, the InterfaceList of what it offers beside the plug-in's own interface,
///   static void addParameters(PelkParameterListDesc&),
/// and a constructor that takes its descriptor.
template <class T>
class HostPluginDesc final : public PelkPluginDesc {
public:
    HostPluginDesc() {
        T::addParameters(list);
        paramDesc = &list;
    }

    u32 getPluginID() override { return T::kID; }
    Plugin* newPlugin(PelkPluginHost*) override { return new T(this); }
    void deletePlugin(Plugin* plugin) override { delete plugin; }
    const char* getName() override { return T::kName; }

    int supportsInterface(u64 id) override {
        return T::Offered::contains(id) || PelkPlugin::Offered::contains(id);
    }

private:
    PelkParameterListDesc list;
};

}  // namespace Tarnkit
