#include "pelk/host/trace/render_context.h"

#include <algorithm>

#include "pelk/host/trace/host_renderer.h"
#include "pelk/host/trace/sampling.h"

namespace Tarnkit {

RenderThread& RenderContext::thread() const {
    return static_cast<RenderThread&>(*threadData);
}

bool RenderContext::isInside() const {
    return dotDouble(rayDir, triangleNormal) > 0.0f;
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
    if (surfaceProperties)
        spawned->hidden = HiddenObjects::from(*surfaceProperties, rayFlags);
    if (isIndirectDiffuse && (rayFlags & (kRayReflect | kRayRefract))) {
        const float thrown = surfaceProperties ? surfaceProperties->generate_caustics : 1.0f;
        spawned->resultScale = receiveCaustics * thrown;
    }
    return spawned;
}

void RenderContext::crossSurface(const RenderContext& from) {
    if (!from.isInside()) {
        if (numVolumes < kMaxVolumes)
            volumes[numVolumes] = from.surfaceVolume;
        ++numVolumes;
        return;
    }
    if (numVolumes > kMaxVolumes) {
        --numVolumes;  // one of those that are counted only
        return;
    }
    int left = numVolumes - 1;
    while (left >= 0 && volumes[left] != from.surfaceVolume)
        --left;
    // A surface that names no medium is one of an object that does elsewhere: the innermost ends.
    if (left < 0 && !from.surfaceVolume)
        left = numVolumes - 1;
    if (left < 0)
        return;
    std::copy(volumes + left + 1, volumes + numVolumes, volumes + left);
    --numVolumes;
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

}  // namespace Tarnkit
