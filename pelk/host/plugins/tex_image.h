#pragma once

#include <string>

#include "pelk/host/plugins/file_guide.h"
#include "pelk/host/plugins/host_texture.h"
#include "pelk/host/plugins/image_source.h"

namespace Tarnkit {

/// Parameters of TexImage, as the host refreshes them at each frameBegin.
struct TexImageParams {
    int repeat = 1;  ///< 0: the picture's border goes on outside of it
    PluginBase* uvwgen = nullptr;

    static ParamRows<TexImageParams> table();
};

/// A picture from a file, read through one cache for all. Colours are decoded to linear before
/// they are blended. As an integer it is the nearest pixel's first channel as the file holds it,
/// since ids don't blend: 0 to 255 for 8 bits, 0 to 65535 for 16.
class TexImage final : public WithParams<TexImageParams, HostTexture>, public FileUserInterface {
public:
    static constexpr const char* kName = "TexImage";
    static constexpr u32 kID = 0x7E100033;
    using Offered = HostTexture::Offered::With<FileUserInterface>;

    using WithParams::WithParams;

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }
    bool openFile(std::string& error) override;

    /// Opens a file that was set since; one that can't be read is opaque black, with an error.
    void frameBegin(PelkRenderer& renderer) override;
    AColor getTexColor(PelkContext& context) override;
    int getTexInt(PelkContext& context) override;

private:
    std::string text(const char* parameterName);
    void describe(ShaderSource& source) override;

    UVWGenInterface* uvwgen = nullptr;  // set in frameBegin
    ImageSource image;
    std::string openedFile, openedSpace;
};

}  // namespace Tarnkit
