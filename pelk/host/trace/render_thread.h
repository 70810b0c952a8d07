#pragma once

#include "pelk/base/sequence.h"
#include "pelk/host/trace/render_context.h"

namespace Tarnkit {

class HostRenderer;
class PKFragment;
class SampleRecorder;

/// What one render thread owns and no other touches: its free list of contexts, the counter of hit
/// ids, and what went wrong in the current sample. Lives for one render.
class RenderThread final : public ThreadData {
public:
    /// Made on the thread itself, whose note of plug-in calls it takes part in.
    RenderThread(HostRenderer& renderer_, int index) : renderer(renderer_), note(pluginCallNote()) {
        threadIndex = index;
        if (note)
            note->thread = this;
    }
    ~RenderThread() {
        if (!note)
            return;
        keepPluginCall();  // there is one if an exception has ended this
        note->thread = nullptr;
    }
    RenderThread(const RenderThread&) = delete;
    RenderThread& operator=(const RenderThread&) = delete;

    /// A context off the free list, with the fields of its last use; a new one only when the list
    /// is empty. It comes back by RenderContext::releaseContext.
    RenderContext* takeContext() {
        RenderContext* context = freeContexts;
        if (context)
            freeContexts = context->nextFree;
        else
            context = contexts.take();
        return context;
    }

    /// Takes back all contexts, also those that an exception has left with nobody.
    void takeBackContexts() {
        contexts.reset();
        freeContexts = nullptr;
    }

    void giveBack(RenderContext* context) {
        context->nextFree = freeContexts;
        freeContexts = context;
    }

    /// Hit ids wrap around, past 0, which means "no hit" to materials that remember one.
    int nextHitID() { return hitID = hitID == 0x7fffffff ? 1 : hitID + 1; }

    /// A surface has returned NaN or infinity, or spawned a ray that can't be traced: the sample is
    /// to be dropped. Called by HostRenderer for camera, secondary and shadow rays alike. Null
    /// where no surface is at fault.
    void dropSample(const SceneObject* culprit) {
        sampleDropped = true;
        if (culprit)
            badObject = culprit;
    }

    HostRenderer& renderer;
    bool sampleDropped = false;  ///< read and cleared by TileWorker at the end of each sample
    /// The last object at fault, which the render's report names; null if there is none.
    const SceneObject* badObject = nullptr;
    /// Records what camera rays hit; null if no render channels are wanted. Set by TileWorker
    /// before the first sample, and read by HostRenderer::trace.
    SampleRecorder* recorder = nullptr;
    /// Fragment that camera hits write to without a recorder: materials sum in another order where
    /// there is a fragment, and beauty must not depend on which channels are wanted. May be null.
    PKFragment* plainFragment = nullptr;

private:
    PluginCallNote* const note;  // of the thread, null without one
    Sequence<RenderContext> contexts{32};
    RenderContext* freeContexts = nullptr;
    int hitID = 0;
};

}  // namespace Tarnkit
