#include "fake_host/fake_host.h"
#include "pelk/contract/surface_properties.h"

namespace {

class MtlWrapperTest : public OneHit {
protected:
    PelkSurfaceProperties& properties() {
        context.rayType = kRayShadow;
        mtl.shade(context);
        return *context.surfaceProperties;
    }

    PelkMaterial& mtl = make("MtlWrapper");
};

TEST_F(MtlWrapperTest, OrdinaryHitsAreTheBasesWithAlphaAndGiScaled) {
    base.results = {Color(2), Color(0.25f), Color(0.5f), Color(0.25f)};
    PelkSurfaceProperties ofBase;
    base.onShade = [&](PelkContext& inner) { inner.surfaceProperties = &ofBase; };
    const struct {
        const char* what;
        float contribution;
        u32 shadeFlags, rayType;
        float color, alpha, alphaTransparency;
    } cases[] = {
        {"half", 0.5f, kShadeAlphaCounts, kRayCamera, 2, 0.25f, 0.625f},
        {"zero counts as positive", 0, kShadeAlphaCounts, kRayCamera, 2, 0, 1},
        {"half negative", -0.5f, kShadeAlphaCounts, kRayCamera, 2, 0, 0.625f},
        {"alpha does not count", -1, 0, kRayCamera, 2, 0.5f, 0.25f},
        {"GI", 1, kShadeAlphaCounts, kRayCamera | kRayGi, 0.5f, 0.5f, 0.25f},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        setParams(mtl, {{"base_material", &base}, {"generate_gi", 0.25f}});
        startFrame(mtl, {{"alpha_contribution", c.contribution}});
        context.shadeFlags = c.shadeFlags;
        context.rayType = c.rayType;
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), (Results{Color(c.color), Color(0.25f), Color(c.alpha),
                                               Color(c.alphaTransparency)}));
        EXPECT_NE(context.surfaceProperties, &ofBase) << "the wrapper's own are the outer ones";
    }
}

TEST_F(MtlWrapperTest, PropertiesTellTheHostWhatTheFrameIs) {
    using Case = std::tuple<int, int, int>;
    for (const auto& [matte, secondary, stands] :
         {Case{0, 2, 0}, {1, 0, 1}, {1, 1, 3}, {1, 2, 2}, {1, 0, 1}}) {
        startFrame(mtl, {{"matte_surface", matte}, {"matte_for_secondary_rays", secondary}});
        EXPECT_EQ(properties().matte_surface, stands) << matte << ", " << secondary;
    }
    EXPECT_EQ(properties().surfaceFlags, kGenerateRenderElements | kUseIrradianceMap);
    endRender(mtl);
    setParams(mtl, {{"refraction_list_is_inclusive", true}, {"use_irrad_map", false}});
    startFrame(mtl, {{"gi_surface_id", 7}});
    EXPECT_EQ(properties().surfaceFlags, kRefractionListInclusive | kGenerateRenderElements);
    EXPECT_EQ(properties().giSurfaceWord, 7u);
    startFrame(mtl, {{"reflection_exclude", std::vector<PluginBase*>{&mtl, &texture}}});
    const std::string why = " cannot be in the exclude list (does not have geometry)";
    EXPECT_EQ(renderer.log.texts,
              (std::vector{"w plugin instance of type MtlWrapper" + why, "w plugin" + why}));
}

TEST_F(MtlWrapperTest, IsNotOpaqueWhereItChangesItsBase) {
    base.opaqueFlags = 1;
    for (const Param& reason : {Param{"alpha_contribution", 0.5f}, Param{"matte_surface", true},
                                Param{"alpha_contribution_tex", &texture}}) {
        PelkMaterial& other = make("MtlWrapper");
        startFrame(other, {{"base_material", &base}, reason});
        EXPECT_EQ(other.getOpaqueFlags(), 0) << reason.parameter->getName();
    }
}

}  // namespace
