#pragma once

#include "pelk/host/plugins/host_texture.h"

namespace Tarnkit {

/// Parameters of TexChecker, as the host refreshes them at each frameBegin.
struct TexCheckerParams {
    Color color1, color2;
    float squares = 8.0f;  ///< along one unit of u and of v
    PluginBase* uvwgen = nullptr;

    static ParamRows<TexCheckerParams> table();
};

/// A checkerboard of two colours. Read as an integer it is 0 on squares of color1, 1 on color2.
class TexChecker final : public WithParams<TexCheckerParams, HostTexture> {
public:
    static constexpr const char* kName = "TexChecker";
    static constexpr u32 kID = 0x7E100032;

    using WithParams::WithParams;

    void frameBegin(PelkRenderer& renderer) override;
    AColor getTexColor(PelkContext& context) override;
    int getTexInt(PelkContext& context) override;

private:
    void describe(ShaderSource& source) override;

    UVWGenInterface* uvwgen = nullptr;  // set in frameBegin
};

}  // namespace Tarnkit
