#include "fake_host/fake_host.h"

using MtlDoubleSidedTest = OneHit;

TEST_F(MtlDoubleSidedTest, BackHitsAreTurnedOver) {
    PelkMaterial& mtl = make("MtlDoubleSided");
    startFrame(mtl, {{"base_mtl", &base}});
    for (const int backSide : {0, 1}) {
        SCOPED_TRACE(backSide);
        const SeenSide turned = {0, 1, -1};
        const SeenSide made = backSide ? turned : SeenSide{0, 0, 1};
        context.backSide = backSide;
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(sideOf(base.seen), made);

        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        EXPECT_EQ(sideOf(base.seen), made);
        BRDFSampler* face = sampler->getBRDF(kFrontSide);
        Color light(1), unshadowed(1);
        face->eval(context, {0, 0, 1}, light, unshadowed, 1, 3);
        EXPECT_EQ(base.sampler.seenSide, made);
        face->traceForward(context, 1);
        EXPECT_EQ(base.sampler.seenSide, backSide ? turned : (SeenSide{1, 1, -1}));
        expectRayAndHitAsBefore(before, context);
        mtl.releaseBSDF(context, sampler);
    }
}
