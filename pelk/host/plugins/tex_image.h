#pragma once

#include <string>

#include "pelk/host/plugins/file_guide.h"
#include "pelk/host/plugins/host_texture.h"
#include "pelk/host/plugins/image_source.h"
#include "pelk/host/plugins/sky_image.h"

namespace Tarnkit {

/// Parameters of TexImage, as the host refreshes them at each frameBegin.
struct TexImageParams {
    int repeat = 1;  ///< 0: clamps to the border pixels instead of tiling
    PluginBase* uvwgen = nullptr;

    static ParamRows<TexImageParams> table();
};

/// A bitmap texture, bilinearly filtered, read through a cache that all bitmaps share. Pixels are
/// decoded to linear before they are filtered. Read as an integer it is the first channel of the
/// nearest pixel as the file stores it, since ids must not be blended: 0 to 255 of 8 bits, 0 to
/// 65535 of 16.
class TexImage final : public WithParams<TexImageParams, HostTexture>,
                       public FileUserInterface,
                       public SkyImageInterface {
public:
    static constexpr const char* kName = "TexImage";
    static constexpr u32 kID = 0x7E100033;
    using Offered = HostTexture::Offered::With<FileUserInterface, SkyImageInterface>;

    using WithParams::WithParams;

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }
    bool openFile(std::string& error) override;
    bool getSkyLayout(SkyLayout& layout) const override;
    void readSkyRow(int y, std::span<AColor> row) const override { image.readRow(y, row); }

    /// Opens a file that was set since; one that can't be read is opaque black, with an error.
    void frameBegin(PelkRenderer& renderer) override;
    AColor getTexColor(PelkContext& context) override;
    int getTexInt(PelkContext& context) override;

private:
    void describe(ShaderSource& source) override;

    UVWGenInterface* uvwgen = nullptr;  // set in frameBegin
    ImageSource image;
    std::string openedFile, openedSpace;
};

}  // namespace Tarnkit
