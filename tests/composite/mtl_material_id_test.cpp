#include "fake_host/fake_host.h"

namespace {

class MtlMaterialIDTest : public FakeHost {
protected:
    RecordingMaterial base;
    FakeTexture texture{AColor{Color(0.25f, 0.5f, 1), 0.5f}};
    PelkMaterial& mtl = make("MtlMaterialID");
};

TEST_F(MtlMaterialIDTest, StampsItsIDsOnBothRoadsButForShadows) {
    using Aliases = std::vector<std::pair<int, Color>>;
    base.results = {Color(2), Color(0.5f), Color(0.5f), Color(0.5f)};
    base.sampler.color = Color(2);
    const struct {
        const char* what;
        PluginBase* base;
        PluginBase* texture;
        u32 rayType;
        bool hasFragment;
        Aliases written;
    } cases[] = {
        {"texture", &base, &texture, kRayCamera, true, {{115, {0.25f, 0.5f, 1}}, {141, Color(7)}}},
        {"no texture", &base, nullptr, kRayGi, true, {{115, Color(0)}, {141, Color(7)}}},
        {"shadow", &base, &texture, kRayShadow | kRayCamera, true, {}},
        {"no fragment", &base, &texture, kRayCamera, false, {}},
        {"no base", nullptr, nullptr, kRayCamera, true, {{115, Color(0)}, {141, Color(7)}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        startFrame(
            mtl,
            {{"base_mtl", c.base}, {"material_id_color", c.texture}, {"material_id_number", 7}});
        RecordingFragment shaded, traced;
        FakeContext context = hit();
        context.rayType = c.rayType;
        context.resultFragment = c.hasFragment ? &shaded : nullptr;
        const Results untouched = resultsOf(context);
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), c.base ? base.results : untouched);
        EXPECT_EQ(shaded.aliases, c.written);
        EXPECT_EQ(mtl.getMaterialID(context), 7);

        BSDFSampler* sampler = mtl.getBSDF(context, 0x10);
        ASSERT_EQ(sampler != nullptr, c.base != nullptr);
        if (sampler) {
            context.resultFragment = c.hasFragment ? &traced : nullptr;
            sampler->traceBSDFForward(context, 1);
            EXPECT_EQ(context.resultColor, Color(2));
            EXPECT_EQ(traced.aliases, c.written);
            EXPECT_EQ(base.seenFlags, 0x10);
        }
        EXPECT_EQ(log.has("getTexColor"), c.texture && !c.written.empty());
        mtl.releaseBSDF(context, sampler);
    }
    startFrame(mtl, {{"base_mtl", &base}});
    endRender(mtl);
    FakeContext context = hit();
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr);
    EXPECT_EQ(base.samplersOut, 0) << "lost without an element";
}

TEST_F(MtlMaterialIDTest, DescriptorTextStandsAheadOfTheBases) {
    base.text = "lines\n";
    startFrame(mtl, {{"base_mtl", &base}, {"material_id_number", -3}});
    for (const char* section : {"MaterialDescriptor", "HierarchyDescriptor"})
        EXPECT_EQ(describe(mtl, section), "1 material_id_number -3\nlines\n");
    EXPECT_EQ(describe(mtl, "materialdescriptor"), "0 ");
    base.hiddenFaces = {EXT_RTMTL};
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"), "0 ");
}

}  // namespace
