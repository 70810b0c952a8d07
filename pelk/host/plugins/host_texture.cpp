#include "pelk/host/plugins/host_texture.h"

#include <cmath>
#include <cstring>

#include "pelk/contract/context.h"
#include "pelk/contract/renderer.h"
#include "pelk/contract/scene_interfaces.h"
#include "pelk/host/plugins/direction_map.h"

namespace Tarnkit {

int nearestInt(float x) {
    if (std::isnan(x))
        return 0;
    // The largest int is no float: the limit is the next float below it.
    constexpr float kMax = 2147483520.0f;
    return static_cast<int>(std::fmin(std::fmax(std::round(x), -2147483648.0f), kMax));
}

float HostTexture::getTexFloat(PelkContext& context) {
    return mean(getTexColor(context).color);
}

int HostTexture::getTexInt(PelkContext& context) {
    return nearestInt(getTexFloat(context));
}

Vector HostTexture::getTexBump(PelkContext& context) {
    // getAutoBump is n x the gradient g of the height. As g is at right angles to n,
    // n x (n x g) = -g.
    TextureFloatInterface* const height = this;
    return cross(context.normal, getAutoBump(context, height, 0, 1.0f));
}

int HostTexture::writeTexSource(const char*, const char*, const char* kind, ShaderSource& source,
                                OCLData&) {
    if (!kind || std::strcmp(kind, "MaterialDescriptor") != 0)
        return 0;
    describe(source);
    return 1;
}

Vector textureCoordinates(PelkContext& context, UVWGenInterface* uvwgen) {
    return uvwgen ? uvwgen->getUVW(context) : ownCoordinates(context, 0);
}

Vector ownCoordinates(PelkContext& context, int uvSet) {
    if (context.shadeFlags & kShadeBackgroundLookup) {
        const FrameData& frame = context.renderer->frameData;
        return {static_cast<float>(context.screenX / frame.imageWidth),
                static_cast<float>(1.0 - context.screenY / frame.imageHeight), 0.0f};
    }
    if (!context.hitObject)
        return directionToUVW(context.rayDir);
    auto* const surface = findInterface<SurfaceUVInterface>(context.hitObject);
    return surface ? surface->getSurfaceUVW(context, uvSet) : Vector();
}

}  // namespace Tarnkit
