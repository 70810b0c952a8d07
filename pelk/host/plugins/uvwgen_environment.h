#pragma once

#include "pelk/contract/pelk_plugin.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {

/// Texture coordinates by direction: a map of the surroundings whose width goes once around. The
/// middle of the map lies at -Z, the top at +Y.
class UVWGenEnvironment final : public PelkPlugin, public UVWGenInterface {
public:
    struct Params {
        float rotation = 0.0f;  ///< about +Y, in degrees; turns the surroundings to the right
    };

    static constexpr const char* kName = "UVWGenEnvironment";
    static constexpr u32 kID = 0x7E100011;
    using Offered = InterfaceList<UVWGenInterface>;

    explicit UVWGenEnvironment(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }
    Vector getUVW(PelkContext& context) override;
    Transform getTangentFrame(PelkContext& context, int& valid) override;

private:
    Params params;
};

}  // namespace Tarnkit
