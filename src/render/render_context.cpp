#include "render/render_context.h"

#include "render/host_renderer.h"
#include "render/sampling.h"

namespace Tarnkit {

RenderThread& RenderContext::thread() const {
    return static_cast<RenderThread&>(*threadData);
}

void RenderContext::releaseContext() {
    thread().giveBack(this);
}

PelkContext* RenderContext::newSpawnedContext(int index, const Color& weight, u32 rayFlags,
                                              const Vector& direction) {
    RenderContext* spawned = thread().renderer.spawn(*this, rayFlags + static_cast<u32>(index));
    spawned->rayType = (rayType & kPathBits) | rayFlags;
    spawned->traceDepth = traceDepth + 1;
    spawned->giDepth = giDepth;
    spawned->rayDir = spawned->rayDir2 = direction;
    spawned->spawnWeight = weight;
    spawned->spawnFlags = rayFlags;
    spawned->rayWeight = rayWeight * weight;
    spawned->rayWeight2 = rayWeight2 * weight;
    if (rayFlags & kRayRefract)
        spawned->crossSurface(*this);
    return spawned;
}

void RenderContext::crossSurface(const RenderContext& from) {
    const bool leaves = (from.backSide != 0) != (from.flippedSide != 0);
    if (!leaves) {
        if (numVolumes < kMaxVolumes)
            volumes[numVolumes] = from.surfaceVolume;
        ++numVolumes;
    } else if (numVolumes > 0) {
        --numVolumes;
    }
}

void RenderContext::computeDirectLighting(Color& out, BSDFSampler* sampler) {
    thread().renderer.lightLoop.computeDirectLighting(out, *this, sampler);
}

PelkVolume* RenderContext::currentVolume(PelkVolume* skip) {
    for (int i = storedVolumes() - 1; i >= 0; --i) {
        if (volumes[i] && volumes[i] != skip)
            return volumes[i];
    }
    return nullptr;
}

namespace {

/// Twice the vector area of a triangle's part, seen along the triangle's normal.
double partArea(const Point& p, const Vector& a, const Vector& b, const Vector& normal) {
    const double ax = a.x - p.x, ay = a.y - p.y, az = a.z - p.z;
    const double bx = b.x - p.x, by = b.y - p.y, bz = b.z - p.z;
    return (ay * bz - az * by) * normal.x + (az * bx - ax * bz) * normal.y +
           (ax * by - ay * bx) * normal.z;
}

}  // namespace

UV surfaceUV(const PelkContext& context) {
    const RenderContext& hit = hostContext(context);
    if (!hit.object || hit.object->mesh.uvs.empty())
        return {};
    const Mesh& mesh = hit.object->mesh;
    const auto& corners = mesh.triangles[hit.triangle];
    const Vector& n = hit.object->faceNormals[hit.triangle];
    const Vector &a = mesh.positions[corners[0]], &b = mesh.positions[corners[1]],
                 &c = mesh.positions[corners[2]];
    // By areas and not by the stored weights: the point may have been moved along the surface.
    const double wa = partArea(hit.hitPoint, b, c, n), wb = partArea(hit.hitPoint, c, a, n),
                 wc = partArea(hit.hitPoint, a, b, n), sum = wa + wb + wc;
    if (!(sum > 0.0))
        return mesh.uvs[corners[0]];
    const UV &ua = mesh.uvs[corners[0]], &ub = mesh.uvs[corners[1]], &uc = mesh.uvs[corners[2]];
    return {static_cast<float>((wa * ua.u + wb * ub.u + wc * uc.u) / sum),
            static_cast<float>((wa * ua.v + wb * ub.v + wc * uc.v) / sum)};
}

}  // namespace Tarnkit
