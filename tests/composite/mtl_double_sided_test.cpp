#include "fake_host/fake_host.h"

namespace {

using MtlDoubleSidedTest = FakeHost;

TEST_F(MtlDoubleSidedTest, BackHitsAreTurnedOver) {
    const struct {
        int backSide;
        SeenSide made, traced;
    } cases[] = {
        {0, {0, 0, 1}, {1, 1, -1}},
        {1, {0, 1, -1}, {0, 1, -1}},
    };
    RecordingMaterial base;
    PelkMaterial& mtl = make("MtlDoubleSided");
    startFrame(mtl, {{"base_mtl", &base}});
    for (const auto& c : cases) {
        SCOPED_TRACE(c.backSide);
        FakeContext context = hit();
        context.backSide = c.backSide;
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(sideOf(base.seen), c.made);
        EXPECT_EQ(resultsOf(context), base.results);

        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        EXPECT_EQ(sideOf(base.seen), c.made);
        BRDFSampler* face = sampler->getBRDF(kFrontSide);
        Color light(1), unshadowed(1);
        face->eval(context, {0, 0, 1}, light, unshadowed, 1, 3);
        EXPECT_EQ(base.sampler.seenSide, c.made);
        face->traceForward(context, 1);
        EXPECT_EQ(base.sampler.seenSide, c.traced);
        EXPECT_EQ(face->getDiffuseNormal(context), context.normal) << "the plain sampler's";
        expectRayAndHitAsBefore(before, context);
        mtl.releaseBSDF(context, sampler);
    }
}

}  // namespace
