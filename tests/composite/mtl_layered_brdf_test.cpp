#include <limits>

#include "fake_host/fake_host.h"
#include "frame/exception_msg.h"
#include "platform/debug_stream.h"

namespace {

class MtlLayeredBRDFTest : public FakeHost {
protected:
    using Plugins = std::vector<PluginBase*>;

    RecordingMaterial top, bottom;
    PelkMaterial& mtl = make("MtlLayeredBRDF", "coat");
};

TEST_F(MtlLayeredBRDFTest, ShadesTheStackAndGivesItBack) {
    top.sampler.color = Color(0.5f, 0.25f, 1);
    bottom.sampler.color = Color(0.25f);
    top.sampler.transparency = Color(0.5f);
    bottom.sampler.transparency = Color(0.25f, 0.5f, 1);
    const Color through(0.125f, 0.25f, 0.5f);
    for (const bool doubleSided : {true, false}) {
        SCOPED_TRACE(doubleSided);
        startFrame(mtl, {{"brdfs", Plugins{&top, &bottom}}, {"double_sided", doubleSided}});
        FakeContext context = hit();
        context.directLight = Color(1);
        const PelkContext before = context;
        mtl.shade(context);
        const Color alpha(0.875f, 0.75f, 0.5f);
        EXPECT_EQ(resultsOf(context),
                  (Results{Color(1.75f, 1.5f, 2.25f), through, alpha, through}));
        expectRayAndHitAsBefore(before, context);
        EXPECT_EQ(top.seenFlags, doubleSided ? 0 : 1);
        EXPECT_EQ(bottom.samplersOut, 0);

        context.rayType = kRayShadow;
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), (Results{Color(0), through, alpha, through}));

        mtl.releaseBSDF(context, mtl.getBSDF(context, 0x11));
        EXPECT_EQ(bottom.seenFlags, 0x11) << "a caller may ask for one side, never for two";
    }
}

TEST_F(MtlLayeredBRDFTest, MissingPiecesHaveFixedAnswers) {
    RecordingFragment fragment;
    RecordingMaterial noBSDF;
    noBSDF.hiddenFaces = {EXT_BSDF};
    FakeContext context = hit();
    context.resultFragment = &fragment;
    mtl.releaseBSDF(context, nullptr);
    for (const u32 rayType : {kRayCamera, kRayShadow}) {
        context.rayType = rayType;
        startFrame(mtl, {{"brdfs", Plugins{}}});
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), kOpaqueBlack);
        EXPECT_EQ(log.calls, std::vector<std::string>{"clear"});

        top.givesSampler = false;
        startFrame(mtl, {{"brdfs", Plugins{nullptr, &noBSDF, &top}}});
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), kFullyTransparent) << "clear layers";
        EXPECT_FALSE(log.has("releaseBSDF"));
    }
    endRender(mtl);
    log.clear();
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), kFullyTransparent) << "outside a frame";
    EXPECT_FALSE(log.has("getBSDF"));
}

TEST_F(MtlLayeredBRDFTest, ImpossibleColoursAreRepairedAndReportedOncePerFrame) {
    top.sampler.color = Color(-1, 0.5f, std::numeric_limits<float>::infinity());
    for (const size_t frame : {1, 2}) {
        startFrame(mtl, {{"brdfs", Plugins{&top}}});
        FakeContext context = hit();
        mtl.shade(context);
        mtl.shade(context);
        EXPECT_EQ(context.resultColor, Color(0, 0.5f, 0));
        EXPECT_EQ(renderer.log.warnings.size(), frame);
    }
}

TEST_F(MtlLayeredBRDFTest, StandsWhereMemoryForItsLayersEnds) {
    platform::setDebugSink([](const char*) {});  // each refusal reports on the heap
    FakeContext context = hit();
    BSDFSampler* sampler = nullptr;
    int refusals = 0;
    for (; !sampler; ++refusals) {
        endRender(mtl);  // so that the pools have no memory yet
        startFrame(mtl, {{"brdfs", Plugins{&top, &bottom}}});
        HeapProbe heap;
        heap.refuseAfter(refusals);
        try {
            sampler = mtl.getBSDF(context, 0);
        } catch (const ExceptionMsg&) {
            EXPECT_EQ(top.samplersOut + bottom.samplersOut, 0);
        }
    }
    EXPECT_GT(refusals, 2);
    mtl.releaseBSDF(context, sampler);
    platform::setDebugSink(nullptr);
}

}  // namespace
