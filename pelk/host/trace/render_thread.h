#pragma once

#include "pelk/base/sequence.h"
#include "pelk/host/trace/render_context.h"

namespace Tarnkit {

class HostRenderer;
class PKFragment;
class SampleRecorder;

/// What one render thread owns: its contexts, and the numbers of its hits.
class RenderThread final : public ThreadData {
public:
    RenderThread(HostRenderer& renderer_, int index) : renderer(renderer_) { threadIndex = index; }

    /// A context with leftovers of its last use; back by RenderContext::releaseContext.
    RenderContext* takeContext() {
        RenderContext* context = freeContexts;
        if (context)
            freeContexts = context->nextFree;
        else
            context = contexts.take();
        return context;
    }

    void giveBack(RenderContext* context) {
        context->nextFree = freeContexts;
        freeContexts = context;
    }

    /// Keys of hits go round without ever being 0.
    int nextHitID() { return hitID = hitID == 0x7fffffff ? 1 : hitID + 1; }

    /// A surface has answered with a colour that isn't finite: the sample is to be dropped.
    void noteBadColor(const SceneObject& object) {
        sampleIsBad = true;
        badObject = &object;
    }

    HostRenderer& renderer;
    bool sampleIsBad = false;
    const SceneObject* badObject = nullptr;
    SampleRecorder* recorder = nullptr;  ///< of the camera rays, if render channels are wanted
    /// What camera hits write to otherwise, so that their sums have the same bits; may be null.
    PKFragment* plainFragment = nullptr;

private:
    Sequence<RenderContext> contexts{32};
    RenderContext* freeContexts = nullptr;
    int hitID = 0;
};

}  // namespace Tarnkit
