#include "pelk/host/trace/host_renderer.h"

#include <algorithm>

#include "pelk/contract/samplers.h"
#include "pelk/contract/shading.h"
#include "pelk/contract/texture.h"
#include "pelk/host/trace/sample_recorder.h"
#include "pelk/host/trace/sampling.h"
#include "pelk/support/regions/fragments.h"

namespace Tarnkit {

namespace {

/// Transparent surfaces that a ray passes straight through before it is ended.
constexpr int kMaxSurfacesAlongRay = 256;

bool isBlack(Color c) {
    return c == Color(0);
}

/// A derivative of the ray's origin carried on to the hit: how far the point that the ray meets
/// moves on the face, P' = O' + t D' + t' D with t' such that P' lies in its plane. Igehy, "Tracing
/// Ray Differentials", SIGGRAPH 1999, eq. 10. Not finite for a ray along the face; readers of ray
/// differentials take that for unknown.
Vector transferred(const RenderContext& c, Vector origin, Vector direction) {
    const Vector across = origin + direction * c.hitDistance;
    const Vector n = c.triangleNormal;
    return across - c.rayDir * (dot(across, n) / dot(c.rayDir, n));
}

/// Whether this ray may hit `light` by itself. A ray under MIS (bsdfDensity >= 0) must hit exactly
/// the lights that next-event estimation weighted against it, or the other half of their weight is
/// lost: those that cast shadows and, for a specular ray, have highlights. Any other ray goes by
/// the light's visibility.
bool canHit(const RenderContext& c, const SceneLight& light) {
    if (c.bsdfDensity < 0.0f)
        return light.plugin->isVisibleTo(c.rayType, c.traceDepth);
    return light.castsShadows && (c.isIndirectDiffuse || light.affectsSpecular);
}

/// A shadow ray through transparent surfaces: every one that it crosses is shaded, for its opacity
/// alone, and attenuates the light. The context for that is made at the first surface only, as most
/// shadow rays cross none.
class ShadowRay final : public ShadowVisitor {
public:
    ShadowRay(HostRenderer& renderer_, RenderContext& from_, const Vector& direction_,
              double distance_, Color light_)
        : light(light_),
          renderer(renderer_),
          from(from_),
          direction(direction_),
          distance(distance_) {}

    ~ShadowRay() {
        if (context)
            context->releaseContext();
    }

    bool visit(u32 object, u32 triangle, float u, float v, float at) override {
        if (!context)
            makeContext();
        context->triangle = triangle;
        context->baryU = u;
        context->baryV = v;
        renderer.fillHit(*context, object, at);
        renderer.shadeHit(*context);
        light *= context->resultTransparency;
        return !isBlack(light);
    }

    bool replacesRefraction() const { return context && context->replacesRefraction; }

    Color light;

private:
    void makeContext() {
        context = renderer.spawn(from, kRayShadow);
        context->rayType = kRayShadow;
        context->traceDepth = from.traceDepth + 1;
        context->giDepth = from.giDepth;
        context->rayDir = context->rayDir2 = direction;
        context->rayMaxT = distance;
        context->spawnWeight = Color(1);
        context->rayWeight = from.rayWeight;
        context->rayWeight2 = from.rayWeight2;
    }

    HostRenderer& renderer;
    RenderContext& from;
    Vector direction;
    double distance;
    RenderContext* context = nullptr;
};

}  // namespace

StringHandle HostStringTable::intern(const char* text) {
    if (!text)
        return {};
    // try_emplace keeps the number of a known text; a new one gets the next, from 1.
    return {ids.try_emplace(text, static_cast<u32>(ids.size()) + 1).first->second};
}

HostRenderer::HostRenderer() {
    sequenceData.lightManager = &lightLoop;
    sequenceData.giEngine = &gi;
}

RenderContext* HostRenderer::spawn(RenderContext& parent, u32 branch) {
    RenderContext* c = parent.thread().takeContext();
    c->threadData = parent.threadData;
    c->renderer = this;
    c->parentContext = &parent;
    c->fragmentList = nullptr;
    c->shadeFlags = 0;
    c->rayOrigin = c->spawnOrigin = parent.hitPoint;
    c->rayMinT = 0.0;
    c->rayMaxT = kRayFar;
    c->time = parent.time;
    c->parentHitLink = parent.hitLink;
    c->screenX = parent.screenX;
    c->screenY = parent.screenY;
    c->originDerivX = transferred(parent, parent.originDerivX, parent.rayDerivX);
    c->originDerivY = transferred(parent, parent.originDerivY, parent.rayDerivY);
    c->rayDerivX = parent.rayDerivX;
    c->rayDerivY = parent.rayDerivY;
    c->rayClipDistance = parent.rayClipDistance;
    c->rayContribution = parent.rayContribution;
    c->environment = parent.environment;
    c->environmentPriority = parent.environmentPriority;
    c->skipObject = parent.object->index;
    c->skipTriangle = parent.triangle;
    c->bsdfDensity = -1.0f;
    c->isIndirectDiffuse = false;
    c->replacesRefraction = false;
    c->resultScale = 1.0f;
    c->hidden = {};
    c->pathSeed = hash32(parent.pathSeed ^ (branch * 0x85ebca6bu + 0x68e31da4u));
    c->sampleIndex = parent.sampleIndex;
    c->numVolumes = parent.numVolumes;
    std::copy_n(parent.volumes, parent.storedVolumes(), c->volumes);
    c->resultFragment = nullptr;
    return c;
}

void HostRenderer::fillHit(RenderContext& c, u32 objectIndex, float distance) {
    const SceneObject& object = *objects[objectIndex];
    const Shape& shape = *object.shape;
    const Mesh& mesh = shape.mesh;
    c.object = &object;
    c.hitDistance = distance;
    c.hitMapping = c.hitObject = object.plugin;
    c.surfaceVolume = nullptr;
    c.surfaceProperties = nullptr;
    c.hitLink = (u64{objectIndex} << 32) | c.triangle;
    c.hitPoint = c.refractionOrigin = {c.rayOrigin.x + static_cast<double>(c.rayDir.x) * distance,
                                       c.rayOrigin.y + static_cast<double>(c.rayDir.y) * distance,
                                       c.rayOrigin.z + static_cast<double>(c.rayDir.z) * distance};
    c.triangleNormal = shape.faceNormals[c.triangle];
    if (object.place) [[unlikely]]
        c.triangleNormal = object.place->normal(c.triangleNormal);
    c.faceNormal = c.geomNormal = c.normal = c.triangleNormal;
    if (!mesh.normals.empty()) {
        const auto& corners = mesh.triangles[c.triangle];
        c.normal = normalizeGuarded(mesh.normals[corners[0]] * (1.0f - c.baryU - c.baryV) +
                                    mesh.normals[corners[1]] * c.baryU +
                                    mesh.normals[corners[2]] * c.baryV);
        if (object.place) [[unlikely]]
            c.normal = object.place->normal(c.normal);
    }
    c.backSide = c.isInside();
    c.flippedSide = 0;
    c.hitID = c.thread().nextHitID();
    c.shadeFlags = kShadeAlphaCounts;
    c.shadedFlags = 0;
    c.lightMis = -1;
    c.gathersBeyond = 0;
    c.diffuseIsBlack = false;
    setNothing(c);
}

bool HostRenderer::hitLight(const RenderContext& c, double limit, LightHit& nearest) const {
    bool found = false;
    for (const SceneLight& light : lightLoop.getFiniteLights()) {
        if (!canHit(c, light))
            continue;
        LightHit hit;
        if (light.plugin->intersect(c.rayOrigin, c.rayDir, c.rayMinT, limit, hit)) {
            nearest = hit;
            limit = hit.distance;
            found = true;
        }
    }
    return found;
}

Color HostRenderer::weightedRadiance(const RenderContext& c, const LightHit& hit) const {
    if (c.bsdfDensity < 0.0f)
        return hit.radiance;
    return hit.radiance * powerShare(c.bsdfDensity, hit.density * lightLoop.choiceProbability());
}

Color HostRenderer::backgroundAlong(RenderContext& c, const Vector& direction) const {
    if (!c.environment)
        return lightLoop.hasDome() ? Color(0) : background;
    const ScopedValue looked(c.rayDir, direction);
    const ScopedValue noHit(c.hitObject, static_cast<PluginBase*>(nullptr));
    return c.environment->getTexColor(c).color;
}

bool HostRenderer::seesBackplate(const RenderContext& c) const {
    if (!backplate)
        return false;
    const bool isCameraRay = c.traceDepth == 0 && (c.rayType & kRayCamera);
    return isCameraRay || (c.shadeFlags & kShadeBackgroundLookup);
}

Color HostRenderer::environmentAlong(RenderContext& c) const {
    if (seesBackplate(c)) {
        const ScopedValue flags(c.shadeFlags, c.shadeFlags | u32{kShadeBackgroundLookup});
        return backplate->getTexColor(c).color;
    }
    Color sum;
    bool meetsDome = false;
    for (const SceneLight& light : lightLoop.getInfiniteLights()) {
        if (c.environment && light.isDome)
            continue;
        if (!canHit(c, light))
            continue;
        meetsDome |= light.isDome;
        LightHit hit;
        if (light.plugin->intersect(c.rayOrigin, c.rayDir, c.rayMinT, kRayFar, hit))
            sum += weightedRadiance(c, hit);
    }
    if (c.environment)
        return backgroundAlong(c, c.rayDir) + sum;
    // Behind a dome that is invisible to the ray there is the background. It is no light then: a
    // ray under MIS looks for the dome.
    const bool seesBackground = !lightLoop.hasDome() || (c.bsdfDensity < 0.0f && !meetsDome);
    return seesBackground ? background + sum : sum;
}

void HostRenderer::evalEnvironment(PelkContext& context) {
    RenderContext& c = hostContext(context);
    const ScopedValue withoutMis(c.bsdfDensity, -1.0f);
    c.resultColor = environmentAlong(c);
}

void HostRenderer::traceRay(PelkContext& context) {
    trace(hostContext(context));
}

void HostRenderer::trace(RenderContext& c) {
    if (!isTraceable(c.rayOrigin, c.rayDir, c.rayMinT)) [[unlikely]] {
        c.thread().dropSample(c.parentContext ? hostContext(*c.parentContext).object : nullptr);
        c.traceResult = c.traceAlpha = Color(0);
        return;
    }
    Color color, alpha, through(1), alphaThrough(1);
    SampleRecorder* const recorder = c.resultFragment ? c.thread().recorder : nullptr;
    for (int surfaces = 0; surfaces < kMaxSurfacesAlongRay; ++surfaces) {
        u32 object;
        const float distance = intersector.closest(c, object, c);
        const bool hitSurface = distance >= 0.0f;
        LightHit light;
        if (hitLight(c, hitSurface ? distance : c.rayMaxT, light)) {
            const Color shown = weightedRadiance(c, light);
            color += through * shown;
            alpha += alphaThrough;
            if (recorder)
                recorder->addLight(c, shown, light.distance);
            break;
        }
        if (!hitSurface) {
            c.object = nullptr;
            c.hitObject = c.hitMapping = nullptr;
            const Color shown = environmentAlong(c);
            color += through * shown;
            if (recorder)
                recorder->addSurroundings(shown);
            break;
        }
        if (c.traceDepth >= sequenceData.maxRayDepth) {
            alpha += alphaThrough;
            break;
        }
        fillHit(c, object, distance);
        if (recorder)
            c.resultFragment = recorder->nextSurfaceFragment();
        else if (c.resultFragment)
            static_cast<PKFragment*>(c.resultFragment)->PKFragment::clear(0);
        shadeHit(c);
        if (recorder)
            recorder->addSurface(c);
        color += through * c.resultColor;
        alpha += alphaThrough * c.resultAlpha;
        through *= c.resultTransparency;
        alphaThrough *= c.resultAlphaTransparency;
        if (isBlack(through) && isBlack(alphaThrough))
            break;
        c.rayMinT = distance;
        c.skipObject = object;
        c.skipTriangle = c.triangle;
    }
    c.traceResult = color * c.resultScale;
    c.traceAlpha = alpha;
}

void HostRenderer::shadeHit(RenderContext& c) {
    MaterialInterface* const material = c.object->material;
    if (!material) [[unlikely]]
        return setOpaqueBlack(c);
    callShade(*material, c);
    // Where there is a fragment, a matte writes the background that shows through it there only.
    if (c.resultFragment) [[unlikely]]
        c.resultColor += static_cast<PKFragment*>(c.resultFragment)->background;
    const Color sum =
        (c.resultColor + c.resultTransparency) + (c.resultAlpha + c.resultAlphaTransparency);
    if (!isFinite(sum)) [[unlikely]] {
        c.thread().dropSample(c.object);
        setOpaqueBlack(c);
    }
}

Color HostRenderer::shadowed(RenderContext& c, const Vector& direction, double distance,
                             Color light, bool* replacesRefraction) {
    if (!isTraceable(c.hitPoint, direction, 0.0)) [[unlikely]] {
        c.thread().dropSample(c.object);
        return Color(0);
    }
    ShadowRay ray(*this, c, direction, distance, light);
    const bool reached =
        intersector.walkShadow(c.hitPoint, direction, distance, c.object->index, c.triangle, ray);
    if (replacesRefraction)
        *replacesRefraction = ray.replacesRefraction();
    return reached ? ray.light : Color(0);
}

}  // namespace Tarnkit
