#include "fake_host/fake_host.h"

using MtlMaterialIDTest = OneHit;

TEST_F(MtlMaterialIDTest, StampsItsIDsOnBothRoadsButForShadows) {
    using Aliases = std::vector<std::pair<int, Color>>;
    texture.color = {{0.25f, 0.5f, 1}, 0.5f};
    PelkMaterial& mtl = make("MtlMaterialID");
    const struct {
        const char* what;
        PluginBase* texture;
        u32 rayType;
        Aliases written;
    } cases[] = {
        {"texture", &texture, kRayCamera, {{115, {0.25f, 0.5f, 1}}, {141, Color(7)}}},
        {"no texture", nullptr, kRayGi, {{115, Color(0)}, {141, Color(7)}}},
        {"shadow", &texture, kRayShadow | kRayCamera, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        setParams(mtl, {{"base_mtl", &base}, {"material_id_color", c.texture}});
        startFrame(mtl, {{"material_id_number", 7}});
        RecordingFragment shaded, traced;
        context.rayType = c.rayType;
        context.resultFragment = &shaded;
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), base.results);
        EXPECT_EQ(shaded.aliases, c.written);
        EXPECT_EQ(mtl.getMaterialID(context), 7);

        BSDFSampler* sampler = mtl.getBSDF(context, 0);
        context.resultFragment = &traced;
        sampler->traceBSDFForward(context, 1);
        EXPECT_EQ(traced.aliases, c.written);
        mtl.releaseBSDF(context, sampler);
    }
}
