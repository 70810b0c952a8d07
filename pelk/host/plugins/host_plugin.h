#pragma once

#include "pelk/contract/param_table.h"
#include "pelk/contract/pelk_plugin.h"

namespace Tarnkit {

/// Descriptor of one kind of plug-in of this host. A plug-in class has
///   static constexpr const char* kName, u32 kID, and a constexpr array or list `kFaces` of the
///   ids of the faces that it offers beside the plug-in base,
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
        for (u64 face : T::kFaces) {
            if (face == id)
                return 1;
        }
        return id == EXT_PLUGIN_BASE;
    }

private:
    PelkParameterListDesc list;
};

}  // namespace Tarnkit
