#include "pelk/materials/maya/maya_ramp_brdf.h"

#include <algorithm>
#include <cmath>

#include "pelk/contract/shading.h"
#include "pelk/shading_math/refraction.h"

namespace Tarnkit {
namespace {

constexpr float kThird = 0.33333334f;
constexpr float kPi = 3.1415927f;
/// A contribution to the picture below which a ray isn't traced.
constexpr float kLeastContribution = 0.001f;

float sum(Color c) {
    return c.r + c.g + c.b;
}

bool anyAbove(Color c, float bound) {
    return c.r > bound || c.g > bound || c.b > bound;
}

bool anyBelow(Color c, float bound) {
    return c.r < bound || c.g < bound || c.b < bound;
}

Color clamped(Color c) {
    return {std::clamp(c.r, 0.0f, 1.0f), std::clamp(c.g, 0.0f, 1.0f), std::clamp(c.b, 0.0f, 1.0f)};
}

Vector divided(Vector v, float by) {
    return {v.x / by, v.y / by, v.z / by};
}

float facingOf(const PelkContext& context) {
    return std::min(1.0f, std::max(0.0f, dotDouble(context.normal, -context.rayDir)));
}

/// Columns are two tangents and the normal. The tangents depend on the normal alone, and the larger
/// of two lengths is divided by, so that no normal of unit length comes near a division by 0.
Matrix frameOf(Vector n) {
    Vector u;
    if (n.z * n.z + n.x * n.x <= n.x * n.x + n.y * n.y) {
        const float s = 1.0f / std::sqrt(n.x * n.x + n.y * n.y);
        u = {n.y * s, -n.x * s, 0.0f};
    } else {
        const float s = 1.0f / std::sqrt(n.z * n.z + n.x * n.x);
        u = {-n.z * s, 0.0f, n.x * s};
    }
    return {{u, cross(n, u), n}};
}

/// By cofactors. Of a normal that isn't of unit length this is not the transpose.
Matrix inverse(const Matrix& m) {
    const auto& [u, v, n] = m.columns;
    const Vector uv = cross(u, v);
    const float determinant = dotDouble(uv, n);
    return transposed({{divided(cross(v, n), determinant), divided(cross(n, u), determinant),
                        divided(uv, determinant)}});
}

/// Masking and shadowing of V-shaped grooves over N . V: min(1, 2 NH NV / VH, 2 NH NL / VH) / NV.
/// Blinn, "Models of Light Reflection for Computer Synthesized Pictures", SIGGRAPH 1977, the term G
/// of Torrance and Sparrow. A formula of two cases, in which NV isn't divided by where it cancels.
float geometryTerm(float nh, float vh, float nv, float nl) {
    const float b = std::max(vh, 1.1920929e-7f);
    const float g = std::min(nv, nl);
    if (!(b >= 2.0f * nh * g))
        return 1.0f / nv;
    const float f = g == nv ? 1.0f : nl / nv;
    return 2.0f * nh * f / b;
}

void writeChannel(PelkContext& context, int channel, Color value) {
    if (context.resultFragment && channel != -1)
        context.resultFragment->setChannel(channel, &value);
}

/// Enters what a traced ray adds, the same without its weight, and the weight. Of a ray without
/// weight nothing is known, and a quotient of zeros would stay in the pixel.
void writeRayChannels(PelkContext& context, Color color, float weight, int full, int raw,
                      int filter) {
    const Color shown = color * context.resultAlpha;
    writeChannel(context, full, shown);
    writeChannel(
        context, raw,
        weight != 0.0f ? Color(shown.r / weight, shown.g / weight, shown.b / weight) : Color(0));
    writeChannel(context, filter, Color(weight));
}

}  // namespace

void MayaRampBRDF::init(PelkContext& context, const MayaRampParams& rampParams, float diffuseWeight,
                        const AColor& ambientColor, float highlightWidth, float highlight) {
    params = &rampParams;
    wasBackSide = context.backSide;
    {
        const ScopedValue toViewer(context.normal, wasBackSide ? -context.normal : context.normal);
        transparency =
            clamped(evalColorRamp(params->transparencyRamp, context, facingOf(context)).color);
        toNormalFrame = inverse(frameOf(context.normal));
    }
    hasOpacity = anyBelow(transparency, 0.999999f);
    diffuse = diffuseWeight;
    ambient = ambientColor;
    eccentricity = highlightWidth;
    specularity = highlight;
    const int input = params->colorRamp.input;
    brightnessInput = input == kRampBrightness || input == kRampNormalBrightness;
    lightInput = 0.0f;
    refractDerivatives[0] = refractDerivatives[1] = Vector();
}

BRDFSampler* MayaRampBRDF::getBRDF(BSDFSide side) {
    return side == (wasBackSide ? kBackSide : kFrontSide) ? this : nullptr;
}

Color MayaRampBRDF::getDiffuseColor(Color& lightColor) {
    return lightColor = Color(0);
}

Color MayaRampBRDF::getLightMult(Color& lightColor) {
    return lightColor = Color(1);
}

Color MayaRampBRDF::eval(PelkContext& context, const Vector& direction, Color& lightColor,
                         Color& origLightColor, float, int flags) {
    if (!hasOpacity)
        return Color(0);
    Color result;
    if (flags & kEvalDiffuse)
        result = evalDiffuse(context, direction, lightColor);
    const bool wantsSpecular = (flags & kEvalSpecular) && !(context.rayType & kRayNoSpecular);
    if (wantsSpecular && specularity > 1e-6f)
        result += evalSpecular(context, direction, lightColor);
    lightColor *= context.resultTransparency;
    origLightColor *= context.resultTransparency;
    return result;
}

float MayaRampBRDF::colorPosition(const PelkContext& context, const Vector& direction,
                                  Color light) const {
    const float cosine = std::clamp(dotDouble(context.normal, direction), -1.0f, 1.0f);
    const float total = sum(light);
    const float brightness = std::max(0.0f, std::max(0.0f, cosine) * kThird * total);
    switch (params->colorRamp.input) {
        case kRampLightAngle:
            return (1.0f - std::acos(cosine) / kPi) * 1.1f;
        case kRampFacingAngle:
            return std::max(0.0f, dotDouble(context.normal, -context.rayDir));
        case kRampBrightness:
            return total < 1e-6f ? 0.0f : brightness;
        case kRampNormalBrightness:
            return total < 1e-6f ? 0.0f : brightness / (kThird * total);
        case kRampWhole:
            return 1.0f;
        default:
            return 0.0f;
    }
}

Color MayaRampBRDF::evalDiffuse(PelkContext& context, const Vector& direction, Color light) {
    const float position = colorPosition(context, direction, light);
    if (brightnessInput) {
        lightInput += position;
        return Color(0);
    }
    const AColor ramp = evalColorRamp(params->colorRamp, context, std::min(1.0f, position));
    const Color color = complement(transparency) * ramp.color * diffuse;
    writeChannel(context, params->diffuseChannel, color);
    lightInput = 1.0f;
    const float cosine = std::clamp(dotDouble(context.normal, direction), 0.0f, 1.0f);
    return light * color * (cosine * kThird * sum(light));
}

/// Of a vector that need not be unit, to the normal that the frame was built from.
float MayaRampBRDF::cosineToNormal(Vector v) const {
    const Vector local = toNormalFrame * v;
    const float len = length(local);
    return isCollapsed(local, len) ? local.z : local.z / len;
}

/// The distribution is Blinn's third, of Trowbridge and Reitz, with the eccentricity as its width.
/// Comparisons are written so that a NaN ends the highlight.
Color MayaRampBRDF::evalSpecular(PelkContext& context, const Vector& direction, Color light) const {
    const Vector n = context.normal, v = context.rayDir;
    const Vector h = direction - v;
    const float z = cosineToNormal(h);
    if (!(z > 1e-6f))
        return Color(0);
    const float vh = -dotDouble(divided(h, length(h)), v);
    if (!(vh > 1e-6f))
        return Color(0);
    const float nh = std::min(1.0f, z);
    const float nv = dotDouble(n, -v), nl = dotDouble(n, direction);

    const float e = eccentricity * eccentricity;
    const float k = e / (nh * nh * (e - 1.0f) + 1.0f);
    const float geometry = geometryTerm(nh, vh, nv, nl);
    const float rollOff = evalFloatRamp(params->specularRollOffRamp, context, std::min(1.0f, nv));
    // Schlick's approximation, with the roll-off as the reflectance at normal incidence.
    const float x = 1.0f - vh, f5 = x * x * x * x * x;
    const float fresnelTerm = std::clamp(f5 + rollOff * (1.0f - f5), 0.0f, 1.0f);

    const float position = std::min(1.0f, dotDouble(v, mirrored(direction, n)));
    const AColor ramp = evalColorRamp(params->specularRamp, context, position);
    const Color result = ramp.color * light * (k * k * geometry * fresnelTerm * specularity);
    writeChannel(context, params->specularChannel, result);
    return result;
}

void MayaRampBRDF::traceForward(PelkContext& context, int) {
    const Color clear = getTransparency(context);
    setFilterResults(context, clear);
    const ScopedFlip ownSide(context, context.flippedSide != 0);
    const float facing = facingOf(context);
    const float reflectivity = evalFloatRamp(params->reflectivityRamp, context, facing);
    if (!(reflectivity < 1e-6f)) {
        addTracedRays(context, reflectivity);
        addEnvironment(context, facing, reflectivity);
    }
    addSurfaceColor(context);
    context.resultColor *= context.resultAlpha;
    addIncandescence(context, facing);
}

void MayaRampBRDF::addTracedRays(PelkContext& context, float reflectivity) {
    float share = 1.0f;
    bool reflects = context.traceDepth < params->reflectionLimit;
    if (params->refractions && context.traceDepth < params->refractionLimit) {
        bool isTotal = false;
        share = addRefraction(context, reflectivity, isTotal);
        // All light goes on in the mirror direction, so the limit of reflections would end a path
        // within glass that the limit of refractions allows.
        reflects = reflects || isTotal;
    }
    if (reflects && share > 1e-6f)
        addReflection(context, share, reflectivity);
}

/// Returns the share of the light that is left to the reflection: the Fresnel reflectance, or 1 of
/// a ray that is totally reflected, which is not traced here.
float MayaRampBRDF::addRefraction(PelkContext& context, float reflectivity, bool& isTotal) {
    const float n = relativeIOR(context);
    const Refraction refraction =
        refract(context.rayDir, context.normal, n, context.rayDerivX, context.rayDerivY);
    refractDerivatives[0] = refraction.derivX;
    refractDerivatives[1] = refraction.derivY;
    isTotal = refraction.total;
    if (isTotal)
        return 1.0f;
    const float reflectance =
        fresnelDielectric(context.rayDir, context.normal, refraction.direction, n);
    const float weight = (1.0f - reflectance) * reflectivity;
    const Color color = traceAlong(context, refraction.direction, weight, kRayRefract);
    context.resultColor += color;
    writeRayChannels(context, color, weight, params->refractionChannel,
                     params->rawRefractionChannel, params->refractionFilterChannel);
    return reflectance;
}

void MayaRampBRDF::addReflection(PelkContext& context, float share, float reflectivity) {
    const Color color =
        traceAlong(context, mirrorDirection(context), share * reflectivity, kRayReflect);
    context.resultColor += color;
    writeRayChannels(context, color, reflectivity, params->reflectionChannel,
                     params->rawReflectionChannel, params->reflectionFilterChannel);
}

/// Index of refraction of what lies behind the surface over that of what lies before it, as the ray
/// comes. The side by which the medium is entered is that of the geometry, not of a bumped normal.
float MayaRampBRDF::relativeIOR(PelkContext& context) const {
    PelkVolume* const inside = context.surfaceVolume;
    if (!inside)
        return params->ior;
    const bool isAgainstNormal = dotDouble(context.rayDir, context.geomNormal) < 0.0f;
    const bool enters = isAgainstNormal != (context.flippedSide != 0);
    PelkVolume* outside = context.currentVolume(nullptr);
    if (!enters) {
        if (outside != inside)
            return 1.0f;  // the ray never went into the medium that it leaves here
        outside = context.currentVolume(inside);
    }
    const float ior = inside->getIOR(context);
    return outside ? ior / outside->getIOR(context) : ior;
}

/// Traces a ray from the hit and returns what it saw times its contribution; black if that is too
/// small for the picture, or if the host spawns no ray. `rayFlag`: kRayReflect or kRayRefract.
Color MayaRampBRDF::traceAlong(PelkContext& context, const Vector& direction, float weight,
                               u32 rayFlag) {
    const float contribution = weight * context.rayContribution;
    if (contribution < kLeastContribution)
        return Color(0);
    const ScopedRay ray(context.newSpawnedContext(0, Color(contribution), rayFlag, direction));
    if (!ray)
        return Color(0);
    ray->rayContribution = contribution;
    if (ray->parentContext) {
        ray->rayDir = normalizeGuarded(direction);
        ray->rayDir2 = direction;
        ray->parentHitLink = ray->parentContext->hitLink;
        ray->rayMinT = 0.0;
        ray->rayMaxT = kRayFar;
    }
    if (rayFlag == kRayReflect) {
        setReflectDerivs(context, *ray, direction, 0, kCollapsed);
        ray->rayOrigin = context.hitPoint;
    } else {
        ray->rayDerivX = refractDerivatives[0];
        ray->rayDerivY = refractDerivatives[1];
        ray->rayOrigin = context.refractionOrigin;
    }
    context.renderer->traceRay(*ray);
    return ray->traceResult * contribution;
}

/// The ramp is read twice, and its colour counts squared.
void MayaRampBRDF::addEnvironment(PelkContext& context, float facing, float reflectivity) const {
    const Color first = evalColorRamp(params->environmentRamp, context, facing).color;
    if (!anyAbove(first, 1e-6f))
        return;
    const Color second = evalColorRamp(params->environmentRamp, context, facing).color;
    context.resultColor += first * reflectivity * second;
}

/// Light from everywhere sees the mean of the ramp's upper half, by colour and alpha.
Color MayaRampBRDF::ambientTerm(PelkContext& context) const {
    const AColor half = evalColorRamp(params->colorRamp, context, 0.5f);
    const AColor full = evalColorRamp(params->colorRamp, context, 1.0f);
    const Color color = (half.color + full.color) * ambient.color * 0.5f;
    const float alpha = (half.alpha + full.alpha) * ambient.alpha * 0.5f;
    return color * alpha;
}

void MayaRampBRDF::addSurfaceColor(PelkContext& context) const {
    const Color ambientColor = ambientTerm(context);
    if (brightnessInput) {
        if (!anyBelow(context.resultTransparency, 0.999999f))
            return;
        const AColor lit = evalColorRamp(params->colorRamp, context, lightInput * diffuse);
        const Color color = lit.color + ambientColor;
        context.resultColor += color;
        writeChannel(context, params->diffuseChannel, color * context.resultAlpha);
        return;
    }
    context.resultColor += ambientColor;
    if (!context.resultFragment || params->diffuseChannel == -1)
        return;
    Color channel;
    context.resultFragment->getChannel(params->diffuseChannel, &channel);
    if (lightInput < 1.0f)  // no light has entered the surface colour
        channel +=
            evalColorRamp(params->colorRamp, context, 0.0f).color * diffuse * context.resultAlpha;
    channel += ambientColor * context.resultAlpha;
    writeChannel(context, params->diffuseChannel, channel);
}

void MayaRampBRDF::addIncandescence(PelkContext& context, float facing) const {
    const Color color = evalColorRamp(params->incandescenceRamp, context, facing).color;
    writeChannel(context, params->selfIllumChannel, color);
    context.resultColor += color;
}

}  // namespace Tarnkit
