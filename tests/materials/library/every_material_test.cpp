#include <thread>

#include "base/test_heap.h"
#include "materials/library/hit_roads.h"
#include "pelk/base/exception_msg.h"

namespace {

/// What holds for every material that the module has.
class EveryMaterial : public HitRoads {
protected:
    EveryMaterial() { base.takesNull = true; }

    /// A sampler of the material where it has one, on each thread and side, and back.
    void sampleOnAllThreads(PelkMaterial& material) {
        for (int thread = 0; thread < renderer.sequenceData.numThreads; ++thread)
            for (const int backSide : {0, 1}) {
                FakeContext context = hit(thread);
                context.backSide = backSide;
                sample(material, context);
            }
        EXPECT_EQ(base.samplersOut, 0);
    }
};

// Hosts ask for samplers when they like. Outside the life of its pool a material has none, and a
// render that follows may have more threads.
TEST_F(EveryMaterial, LosesNoSamplerAtAnyStageOfItsLife) {
    for (PelkPluginDesc* desc : kinds())
        for (const int variant : {0, 7}) {
            SCOPED_TRACE(desc->getName());
            PelkMaterial& material = addMaterial(desc->getName(), variant);
            for (const int threads : {1, 16}) {
                renderer.sequenceData.numThreads = threads;
                sampleOnAllThreads(material);
                material.renderBegin(renderer);
                sampleOnAllThreads(material);
                for (int frame = 0; frame < 2; ++frame) {
                    material.frameBegin(renderer);
                    sampleOnAllThreads(material);
                    material.frameEnd(renderer);
                    sampleOnAllThreads(material);
                }
                material.renderEnd(renderer);
            }
            sampleOnAllThreads(material);
        }
}

// Without a warm-up and with a log that is not there: the threads meet at the flags of a frame.
TEST_F(EveryMaterial, ShadesTheSameOnThreadsAtOnceAsAlone) {
    renderer.sequenceData.log = nullptr;
    constexpr int kNumThreads = 4;
    Color sums[kNumThreads + 1];
    const auto run = [&](int i) {
        FakeContext context = hit(i);
        prepare(context);
        for (int round = 0; round < 50; ++round)
            sums[i] += runHits(context);
    };
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < kNumThreads; ++i)
            threads.emplace_back(run, i);
    }
    run(kNumThreads);
    for (const Color& sum : sums)
        EXPECT_EQ(sum, sums[kNumThreads]);
}

TEST_F(EveryMaterial, KeepsNothingWhereverMemoryIsRefused) {
    const DebugRecorder quiet;
    for (PelkPluginDesc* desc : kinds()) {
        for (int granted = 0, refused = 1; refused > 0; ++granted)
            for (const bool once : {false, true}) {
                SCOPED_TRACE(desc->getName() + (", blocks: " + std::to_string(granted)));
                TearDown();
                const TestHeap heap;
                heap.refuseAfter(granted, once);
                try {
                    PelkMaterial& material = addMaterial(desc->getName(), 7);
                    startFrame(material);
                    sampleOnAllThreads(material);
                } catch (const ExceptionMsg& e) {  // by its type, though thrown in the module
                    EXPECT_TRUE(std::string(e.text).starts_with("Memory allocation failure; "));
                }
                refused = heap.state.refused;
                TearDown();
                EXPECT_EQ(heap.state.live, 0);
            }
    }
}

}  // namespace
