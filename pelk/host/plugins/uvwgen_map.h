#pragma once

#include "pelk/contract/pelk_plugin.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {

/// The texture coordinates of the surface: scaled, turned about their origin, and moved.
class UVWGenMap final : public PelkPlugin, public UVWGenInterface {
public:
    struct Params {
        Color scale;
        float rotation = 0.0f;  ///< degrees, from u towards v
        Color offset;
        int uv_set = 0;
    };

    static constexpr const char* kName = "UVWGenMap";
    static constexpr u32 kID = 0x7E100012;
    using Offered = InterfaceList<UVWGenInterface>;

    explicit UVWGenMap(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }

    void frameBegin(PelkRenderer& renderer) override;
    Vector getUVW(PelkContext& context) override;
    Transform getTangentFrame(PelkContext& context, int& valid) override;

private:
    Params params;
    float sine = 0.0f, cosine = 1.0f;  // set in frameBegin
};

}  // namespace Tarnkit
