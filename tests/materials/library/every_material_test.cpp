#include "materials/library/hit_roads.h"

namespace {

/// What holds for every material that the module has.
class EveryMaterial : public HitRoads {
protected:
    EveryMaterial() { base.takesNull = true; }

    /// A sampler of the material where it has one, on each thread and side, and back.
    void sampleOnAllThreads(PelkMaterial& material) {
        for (int thread = 0; thread < renderer.sequenceData.numThreads; ++thread) {
            FakeContext context = hit(thread);
            for (const int backSide : {0, 1}) {
                context.backSide = backSide;
                sample(material, context);
            }
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

}  // namespace
