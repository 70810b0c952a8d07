#pragma once

#include "pelk/host/plugins/host_texture.h"

namespace Tarnkit {

/// The same colour everywhere.
class TexConstant final : public HostTexture {
public:
    struct Params {
        Color color;
        float alpha = 1.0f;
    };

    static constexpr const char* kName = "TexConstant";
    static constexpr u32 kID = 0x7E100031;

    explicit TexConstant(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    AColor getTexColor(PelkContext& context) override;

private:
    void describe(ShaderSource& source) override;

    Params params;
};

}  // namespace Tarnkit
