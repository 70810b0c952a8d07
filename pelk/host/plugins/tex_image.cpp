#include "pelk/host/plugins/tex_image.h"

#include <cmath>

#include "pelk/contract/param_table.h"
#include "pelk/contract/renderer.h"
#include "pelk/contract/shader_source.h"
#include "pelk/host/plugins/text_parameter.h"
#include "pelk/host/plugins/uvwgen_environment.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kParams{
    ParamRow<TexImageParams>{.desc = {.name = "file",
                                      .type = ParameterType::String,
                                      .hasDefault = true,
                                      .stringDefault = "",
                                      .description = "Image file: PNG, JPEG, EXR, TIFF and more",
                                      .guide = kFileGuide}},
    ParamRow<TexImageParams>{
        .desc = {.name = "color_space",
                 .type = ParameterType::String,
                 .hasDefault = true,
                 .stringDefault = "auto",
                 .description = "How the file's numbers stand for light: srgb, linear, or auto, "
                                "which takes whole numbers for sRGB and fractions for linear"}},
    boolParam("repeat", &TexImageParams::repeat, true,
              "The picture repeats; else its border goes on"),
    pluginParam<UVWGenInterface>("uvwgen", &TexImageParams::uvwgen,
                                 "Texture coordinates; those of the surface without one"),
};

bool parseColorSpace(const std::string& text, ColorSpace& space) {
    static constexpr struct {
        const char* name;
        ColorSpace space;
    } kSpaces[] = {
        {"auto", ColorSpace::Auto}, {"srgb", ColorSpace::SRGB}, {"linear", ColorSpace::Linear}};
    for (const auto& known : kSpaces) {
        if (text == known.name) {
            space = known.space;
            return true;
        }
    }
    return false;
}

}  // namespace

ParamRows<TexImageParams> TexImageParams::table() {
    return kParams;
}

PluginInterface* TexImage::getInterface(u64 id) {
    PluginInterface* const own = Offered::find(*this, id);
    return own ? own : HostTexture::getInterface(id);
}

bool TexImage::openFile(std::string& error) {
    openedFile = textParameter(paramList, *desc, "file");
    openedSpace = textParameter(paramList, *desc, "color_space");
    ColorSpace space = ColorSpace::Auto;
    if (openedFile.empty())
        error = "\"file\" must name an image file";
    else if (!parseColorSpace(openedSpace, space))
        error = "\"color_space\" must be \"auto\", \"srgb\" or \"linear\"";
    else
        return image.open(openedFile, space, error);
    return false;
}

bool TexImage::getSkyLayout(SkyLayout& layout) const {
    const auto* const turned = dynamic_cast<const UVWGenEnvironment*>(params.uvwgen);
    if (!image.isOpen() || (uvwgen && !turned))
        return false;
    layout = {image.getWidth(), image.getHeight(), turned ? turned->getRotation() : 0.0f,
              openedFile.c_str()};
    return true;
}

void TexImage::frameBegin(PelkRenderer& renderer) {
    HostTexture::frameBegin(renderer);
    uvwgen = findInterface<UVWGenInterface>(params.uvwgen);
    if (image.isOpen() && openedFile == textParameter(paramList, *desc, "file") &&
        openedSpace == textParameter(paramList, *desc, "color_space"))
        return;
    std::string error;
    if (!openFile(error) && renderer.sequenceData.log)
        renderer.sequenceData.log->error("[TexImage] %s\n", error.c_str());
}

AColor TexImage::getTexColor(PelkContext& context) {
    const Vector uvw = textureCoordinates(context, uvwgen);
    return image.sample(uvw.x, uvw.y, params.repeat != 0);
}

int TexImage::getTexInt(PelkContext& context) {
    const Vector uvw = textureCoordinates(context, uvwgen);
    return nearestInt(image.nearest(uvw.x, uvw.y, params.repeat != 0));
}

void TexImage::describe(ShaderSource& source) {
    source.printf("bitmap \"%s\"\n", openedFile.c_str());
}

}  // namespace Tarnkit
