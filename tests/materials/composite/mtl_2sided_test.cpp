#include "fake_host/fake_host.h"

using Mtl2SidedTest = OneHit;

TEST_F(Mtl2SidedTest, SamplersAreMadeOnTheSideThatWasHitFirst) {
    RecordingMaterial front, back;
    PelkMaterial& mtl = make("Mtl2Sided");
    setParams(mtl, {{"front", &front}, {"back", &back}, {"translucency", Color(0)}});
    front.sampler.color = Color(0.25f);
    back.sampler.color = Color(0.5f);
    for (const int backSide : {0, 1}) {
        SCOPED_TRACE(backSide);
        startFrame(mtl, {{"force_1sided", true}});
        context.backSide = context.flippedSide = backSide;  // a back is turned already
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(sideOf(front.seen), (SeenSide{0, 0, backSide ? -1.0f : 1.0f}));
        EXPECT_EQ(sideOf(back.seen), (SeenSide{1, 0, backSide ? 1.0f : -1.0f}));
        EXPECT_EQ(context.resultColor, Color(backSide ? 0.5f : 0.25f));
        EXPECT_EQ(front.seenFlags, 1);
        expectRayAndHitAsBefore(before, context);

        startFrame(mtl, {{"force_1sided", false}});
        mtl.shade(context);
        EXPECT_EQ(back.seenFlags, 0);
    }
}
