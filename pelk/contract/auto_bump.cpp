#include <cmath>

#include "pelk/contract/context.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {
namespace {

/// The width of a pixel where nobody knows the ray differentials, as a share of the distance: that
/// of a picture a thousand pixels wide at a usual field of view.
constexpr float kUsualPixel = 1e-3f;

/// The width of the ray's pixel at the hit, in scene units, measured across the ray: the longer of
/// the two ray differentials, carried on to the hit (Igehy, "Tracing Ray Differentials", SIGGRAPH
/// 1999, section 3.1.1) and without their part along the ray, which those of a spawned ray have,
/// as they begin on a surface. Not along this surface, where at a silhouette it has no end.
float pixelWidth(const PelkContext& context) {
    const float distance = length(context.hitPoint - context.rayOrigin);
    const auto widthOf = [&](Vector origin, Vector direction) {
        const Vector moved = origin + direction * distance;
        return length(moved - context.rayDir * dot(context.rayDir, moved));
    };
    // A side that isn't known gives way to the other.
    const float width = std::fmax(widthOf(context.originDerivX, context.rayDerivX),
                                  widthOf(context.originDerivY, context.rayDerivY));
    if (std::isfinite(width) && width > 0.0f)
        return width;
    return distance > 0.0f ? distance * kUsualPixel : kUsualPixel;
}

/// A unit vector at right angles to `n`: the axis that is farthest from `n`, made so.
Vector tangentOf(Vector n) {
    const float x = std::fabs(n.x), y = std::fabs(n.y), z = std::fabs(n.z);
    const Vector axis = x <= y && x <= z ? Vector(1, 0, 0)
                        : y <= z         ? Vector(0, 1, 0)
                                         : Vector(0, 0, 1);
    return normalizeGuarded(cross(axis, n));
}

/// The bump of the height field that `heightAt` reads at the context's hitPoint.
template <class HeightAt>
Vector bumpOf(PelkContext& context, float amount, HeightAt heightAt) {
    const float width = amount * pixelWidth(context);
    if (!(width > 0.0f))
        return {};
    const auto heightBeside = [&](Vector way) {
        const ScopedValue hitPoint(context.hitPoint, context.hitPoint + way);
        return heightAt();
    };
    // Half a width to both sides and not a whole one to one side: so the slope is that of the hit,
    // and the top of a ridge is flat.
    const auto slopeAlong = [&](Vector direction) {
        const Vector way = direction * (0.5f * width);
        const float ahead = heightBeside(way), behind = heightBeside(-way);
        return (ahead - behind) / width;
    };
    const Vector n = context.normal, u = tangentOf(n), v = cross(n, u);
    const Vector gradient = slopeAlong(u) * u + slopeAlong(v) * v;
    const Vector bump = cross(n, gradient);
    const bool isFinite = std::isfinite(bump.x) && std::isfinite(bump.y) && std::isfinite(bump.z);
    return isFinite ? bump : Vector();
}

}  // namespace

Vector getAutoBump(PelkContext& context, TextureInterface* texture, int, float amount) {
    return bumpOf(context, amount, [&] { return mean(texture->getTexColor(context).color); });
}

Vector getAutoBump(PelkContext& context, TextureFloatInterface* texture, int, float amount) {
    return bumpOf(context, amount, [&] { return texture->getTexFloat(context); });
}

}  // namespace Tarnkit
