#include "fake_host/fake_host.h"

namespace {

using MtlLayeredBRDFTest = FakeHost;

TEST_F(MtlLayeredBRDFTest, ShadesTheStackAndGivesItBack) {
    RecordingMaterial top, bottom;
    PelkMaterial& mtl = make("MtlLayeredBRDF");
    FakeContext context = hit();
    top.sampler.color = Color(0.5f, 0.25f, 1);
    bottom.sampler.color = Color(0.25f);
    top.sampler.transparency = Color(0.5f);
    bottom.sampler.transparency = Color(0.25f, 0.5f, 1);
    context.directLight = Color(1);
    const Color through(0.125f, 0.25f, 0.5f), alpha(0.875f, 0.75f, 0.5f);
    for (const bool doubleSided : {true, false}) {
        SCOPED_TRACE(doubleSided);
        startFrame(mtl, {{"brdfs", std::vector<PluginBase*>{&top, &bottom}},
                         {"double_sided", doubleSided}});
        const PelkContext before = context;
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context),
                  (Results{Color(1.75f, 1.5f, 2.25f), through, alpha, through}));
        expectRayAndHitAsBefore(before, context);
        EXPECT_EQ(top.seenFlags, doubleSided ? 0 : 1);

        mtl.releaseBSDF(context, mtl.getBSDF(context, 0x11));
        EXPECT_EQ(bottom.seenFlags, 0x11) << "a caller may ask for one side, never for two";
    }
}

}  // namespace
