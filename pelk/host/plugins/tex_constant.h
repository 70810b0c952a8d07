#pragma once

#include "pelk/host/plugins/host_texture.h"

namespace Tarnkit {

/// Parameters of TexConstant, as the host refreshes them at each frameBegin.
struct TexConstantParams {
    Color color;
    float alpha = 1.0f;

    static ParamRows<TexConstantParams> table();
};

/// A constant colour.
class TexConstant final : public WithParams<TexConstantParams, HostTexture> {
public:
    static constexpr const char* kName = "TexConstant";
    static constexpr u32 kID = 0x7E100031;

    using WithParams::WithParams;

    AColor getTexColor(PelkContext& context) override;

private:
    void describe(ShaderSource& source) override;
};

}  // namespace Tarnkit
