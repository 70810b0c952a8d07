#include "fake_host/fake_host.h"

namespace {

class MtlDoubleSidedTest : public FakeHost {
protected:
    RecordingMaterial base;
    PelkMaterial& mtl = make("MtlDoubleSided");
};

TEST_F(MtlDoubleSidedTest, BackHitsAreTurnedOver) {
    const struct {
        int backSide;
        SeenSide made, traced;
    } cases[] = {
        {0, {0, 0, 1}, {1, 1, -1}},
        {1, {0, 1, -1}, {0, 1, -1}},
    };
    base.sampler.evaluated = Color(3);
    startFrame(mtl, {{"base_mtl", &base}});
    for (const auto& c : cases) {
        SCOPED_TRACE(c.backSide);
        FakeContext context = hit();
        context.backSide = c.backSide;
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(base.seenSide, c.made);
        EXPECT_EQ(resultsOf(context), base.results);

        BSDFSampler* sampler = mtl.getBSDF(context, 0x10);
        EXPECT_EQ(base.seenSide, c.made);
        EXPECT_EQ(base.seenFlags, 0x10);
        BRDFSampler* face = sampler->getBRDF(kFrontSide);
        Color light(1), unshadowed(1);
        EXPECT_EQ(face->eval(context, {0, 0, 1}, light, unshadowed, 1, 3), Color(3));
        EXPECT_EQ(base.sampler.seenSide, c.made);
        face->traceForward(context, 1);
        EXPECT_EQ(base.sampler.seenSide, c.traced);
        EXPECT_EQ(face->getDiffuseNormal(context), context.normal) << "the plain sampler's";
        expectRayAndHitAsBefore(before, context);
        mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MtlDoubleSidedTest, MissingPiecesHaveFixedAnswers) {
    FakeContext context = hit();
    context.backSide = 1;
    base.givesSampler = false;
    startFrame(mtl, {{"base_mtl", &base}});
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr);
    EXPECT_EQ(context.backSide, 1);
    mtl.releaseBSDF(context, nullptr);
    EXPECT_FALSE(log.has("releaseBSDF"));

    startFrame(mtl, {{"base_mtl", static_cast<PluginBase*>(nullptr)}});
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), kOpaqueBlack);
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr);
}

}  // namespace
