#include "pelk/host/plugins/host_texture.h"

#include <cmath>
#include <cstring>
#include <numbers>

#include "pelk/contract/param_table.h"
#include "pelk/contract/renderer.h"
#include "pelk/contract/shader_source.h"
#include "pelk/host/trace/render_context.h"
#include "pelk/host/trace/surface_uv.h"

namespace Tarnkit {

namespace {

constexpr ParamTable kConstantParams{
    colorParam("color", &TexConstant::Params::color, Color(1), "The colour, linear"),
    floatParam("alpha", &TexConstant::Params::alpha, 1.0f, "How much of what lies below it hides"),
};

constexpr ParamTable kCheckerParams{
    colorParam("color1", &TexChecker::Params::color1, Color(0.8f), "First colour, linear"),
    colorParam("color2", &TexChecker::Params::color2, Color(0.2f), "Second colour, linear"),
    floatParam("squares", &TexChecker::Params::squares, 8.0f,
               "Squares along one unit of the texture coordinates"),
    pluginParam<UVWGenInterface>("uvwgen", &TexChecker::Params::uvwgen,
                                 "Texture coordinates; those of the surface without one"),
};

constexpr ParamTable kMapParams{
    colorParam("scale", &UVWGenMap::Params::scale, Color(1), "Factors of u, v and w"),
    floatParam("rotation", &UVWGenMap::Params::rotation, 0.0f, "Degrees from u towards v"),
    colorParam("offset", &UVWGenMap::Params::offset, Color(0), "Added to u, v and w at last"),
    intParam("uv_set", &UVWGenMap::Params::uv_set, 0,
             "Which texture coordinates of a mesh that has several, from 0"),
};

}  // namespace

int nearestInt(float x) {
    if (std::isnan(x))
        return 0;
    // The largest int is no float: the limit is the next float below it.
    constexpr float kMax = 2147483520.0f;
    return static_cast<int>(std::fmin(std::fmax(std::round(x), -2147483648.0f), kMax));
}

// ---- what all textures have

PluginInterface* HostTexture::getInterface(u64 id) {
    PluginInterface* const own = Offered::find(*this, id);
    return own ? own : PelkPlugin::getInterface(id);
}

float HostTexture::getTexFloat(PelkContext& context) {
    return mean(getTexColor(context).color);
}

int HostTexture::getTexInt(PelkContext& context) {
    return nearestInt(getTexFloat(context));
}

int HostTexture::writeTexSource(const char*, const char*, const char* kind, ShaderSource& source,
                                OCLData&) {
    if (!kind || std::strcmp(kind, "MaterialDescriptor") != 0)
        return 0;
    describe(source);
    return 1;
}

Vector textureCoordinates(PelkContext& context, UVWGenInterface* uvwgen) {
    if (uvwgen)
        return uvwgen->getUVW(context);
    if (context.shadeFlags & kShadeBackgroundLookup) {
        const FrameData& frame = context.renderer->frameData;
        return {static_cast<float>(context.screenX / frame.imageWidth),
                static_cast<float>(1.0 - context.screenY / frame.imageHeight), 0.0f};
    }
    const UV uv = surfaceUV(context);
    return {uv.u, uv.v, 0.0f};
}

// ---- constant

TexConstant::TexConstant(PelkPluginDesc* pluginDesc) : HostTexture(pluginDesc) {
    kConstantParams.bind(paramList, params);
}

void TexConstant::addParameters(PelkParameterListDesc& list) {
    kConstantParams.addTo(list);
}

AColor TexConstant::getTexColor(PelkContext&) {
    return {params.color * params.alpha, params.alpha};
}

void TexConstant::describe(ShaderSource& source) {
    source.printf("color %f %f %f\n", params.color.r, params.color.g, params.color.b);
}

// ---- checker

TexChecker::TexChecker(PelkPluginDesc* pluginDesc) : HostTexture(pluginDesc) {
    kCheckerParams.bind(paramList, params);
}

void TexChecker::addParameters(PelkParameterListDesc& list) {
    kCheckerParams.addTo(list);
}

void TexChecker::frameBegin(PelkRenderer& renderer) {
    HostTexture::frameBegin(renderer);
    uvwgen = findInterface<UVWGenInterface>(params.uvwgen);
}

int TexChecker::getTexInt(PelkContext& context) {
    const Vector uvw = textureCoordinates(context, uvwgen);
    const float square = std::floor(uvw.x * params.squares) + std::floor(uvw.y * params.squares);
    return std::fabs(std::fmod(square, 2.0f)) == 1.0f;
}

AColor TexChecker::getTexColor(PelkContext& context) {
    return {getTexInt(context) ? params.color2 : params.color1, 1.0f};
}

void TexChecker::describe(ShaderSource& source) {
    source.printf("checker %f %f %f %f %f %f %f\n", params.color1.r, params.color1.g,
                  params.color1.b, params.color2.r, params.color2.g, params.color2.b,
                  params.squares);
}

// ---- texture coordinates

UVWGenMap::UVWGenMap(PelkPluginDesc* pluginDesc) : PelkPlugin(pluginDesc) {
    kMapParams.bind(paramList, params);
}

void UVWGenMap::addParameters(PelkParameterListDesc& list) {
    kMapParams.addTo(list);
}

PluginInterface* UVWGenMap::getInterface(u64 id) {
    PluginInterface* const own = Offered::find(*this, id);
    return own ? own : PelkPlugin::getInterface(id);
}

void UVWGenMap::frameBegin(PelkRenderer& renderer) {
    PelkPlugin::frameBegin(renderer);
    const double angle = params.rotation * (std::numbers::pi / 180.0);
    sine = static_cast<float>(std::sin(angle));
    cosine = static_cast<float>(std::cos(angle));
}

Vector UVWGenMap::getUVW(PelkContext& context) {
    const UV uv = surfaceUV(context, params.uv_set);
    const float u = uv.u * params.scale.r, v = uv.v * params.scale.g;
    return {u * cosine - v * sine + params.offset.r, u * sine + v * cosine + params.offset.g,
            params.offset.b};
}

Transform UVWGenMap::getTangentFrame(PelkContext& context, int& valid) {
    valid = 1;
    Transform frame = surfaceFrame(context, params.uv_set);
    for (Vector* column : {&frame.axisX, &frame.axisY, &frame.axisZ}) {
        const float u = column->x * params.scale.r, v = column->y * params.scale.g;
        column->x = u * cosine - v * sine;
        column->y = u * sine + v * cosine;
    }
    return frame;
}

}  // namespace Tarnkit
