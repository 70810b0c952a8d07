#include "fake_host/fake_host.h"
#include "frame/surface_properties.h"

namespace {

class SceneObject : public Plugin, public GeomObjectInterface {
public:
    explicit SceneObject(int id) : renderID(id) {}
    PluginInterface* getInterface(u64 id) override {
        return id == EXT_GEOM_OBJECT ? face : nullptr;
    }
    PluginBase* getPlugin() override { return this; }
    int getRenderID(PelkContext&) override { return renderID; }

private:
    int renderID;
    GeomObjectInterface* face = this;
};

class MtlWrapperTest : public FakeHost {
protected:
    PelkSurfaceProperties& properties() {
        FakeContext context = hit();
        context.rayType = kRayShadow;
        mtl.shade(context);
        return *context.surfaceProperties;
    }

    RecordingMaterial base;
    PelkMaterial& mtl = make("MtlWrapper", "floor");
};

TEST_F(MtlWrapperTest, OrdinaryHitsAreTheBasesWithAlphaAndGiScaled) {
    base.results = {Color(2), Color(0.25f), Color(0.5f), Color(0.25f)};
    const struct {
        const char* what;
        float contribution;
        u32 shadeFlags, rayType;
        float color, alpha, alphaTransparency;
    } cases[] = {
        {"nothing is asked for", 1, kShadeAlphaCounts, kRayCamera, 2, 0.5f, 0.25f},
        {"half", 0.5f, kShadeAlphaCounts, kRayCamera, 2, 0.25f, 0.625f},
        {"zero counts as positive", 0, kShadeAlphaCounts, kRayCamera, 2, 0, 1},
        {"half negative", -0.5f, kShadeAlphaCounts, kRayCamera, 2, 0, 0.625f},
        {"alpha does not count", -1, 0, kRayCamera, 2, 0.5f, 0.25f},
        {"GI", 1, kShadeAlphaCounts, kRayCamera | kRayGi, 0.5f, 0.5f, 0.25f},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        startFrame(mtl, {{"base_material", &base},
                         {"alpha_contribution", c.contribution},
                         {"generate_gi", 0.25f}});
        FakeContext context = hit();
        context.shadeFlags = c.shadeFlags;
        context.rayType = c.rayType;
        PelkSurfaceProperties ofBase;
        base.onShade = [&](PelkContext& inner) { inner.surfaceProperties = &ofBase; };
        mtl.shade(context);
        EXPECT_EQ(resultsOf(context), (Results{Color(c.color), Color(0.25f), Color(c.alpha),
                                               Color(c.alphaTransparency)}));
        EXPECT_NE(context.surfaceProperties, &ofBase) << "the wrapper's own are the outer ones";
    }
    startFrame(mtl, {{"base_material", static_cast<PluginBase*>(nullptr)}});
    FakeContext context = hit();
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), kOpaqueBlack);
    EXPECT_EQ(mtl.getBSDF(context, 0), nullptr);
}

TEST_F(MtlWrapperTest, PropertiesTellTheHostWhatTheFrameIs) {
    const struct {
        int matte, secondary, stands;
    } cases[] = {{0, 0, 0}, {0, 2, 0}, {1, 0, 1}, {1, 1, 3}, {1, 2, 2}, {1, 5, 3}, {1, 0, 1}};
    for (const auto& c : cases) {
        startFrame(mtl, {{"matte_surface", c.matte}, {"matte_for_secondary_rays", c.secondary}});
        EXPECT_EQ(properties().matte_surface, c.stands) << c.matte << ", " << c.secondary;
    }
    EXPECT_EQ(properties().surfaceFlags, kGenerateRenderElements | kUseIrradianceMap);
    properties().surfaceFlags |= 0x100;
    properties().giSurfaceWord = 0xABCD1234;
    endRender(mtl);
    startFrame(
        mtl,
        {{"reflection_list_is_inclusive", true}, {"use_irrad_map", false}, {"gi_surface_id", 7}});
    EXPECT_EQ(properties().surfaceFlags,
              0x100 | kReflectionListInclusive | kGenerateRenderElements);
    EXPECT_EQ(properties().giSurfaceWord, 0xABCD0007u);
    EXPECT_EQ(properties().getInterface(EXT_SURFACE_PROPERTIES)->getPlugin(), &properties());
}

TEST_F(MtlWrapperTest, ExcludeTablesHoldTheSortedIdsOfWhatHasGeometry) {
    SceneObject five(5), three(3), nine(9), alsoThree(3);
    FakeTexture stranger;
    const std::vector<PluginBase*> objects = {&five, &mtl, &three, &stranger, &nine, &alsoThree};
    const std::vector<std::string> warnings{
        "plugin floor of type MtlWrapper cannot be in the exclude list (does not have geometry)",
        "plugin cannot be in the exclude list (does not have geometry)"};
    startFrame(mtl, {{"reflection_exclude", objects}});
    const GrowTable<int>& table = properties().reflectionExclude;
    EXPECT_EQ(std::vector<int>(table.begin(), table.end()), (std::vector<int>{3, 3, 5, 9}));
    EXPECT_TRUE(properties().refractionExclude.isEmpty());
    EXPECT_EQ(renderer.log.warnings, warnings);
    renderer.sequenceData.log = nullptr;
    mtl.frameEnd(renderer);
    EXPECT_TRUE(table.isEmpty());
    startFrame(mtl);
    EXPECT_EQ(table.size(), 4) << "filled anew, and silently without a log";
}

TEST_F(MtlWrapperTest, OpaqueFlagsAndIdsAreTheBases) {
    FakeTexture texture;
    base.opaqueFlags = 3;
    base.materialID = 12;
    startFrame(mtl, {{"base_material", &base}});
    FakeContext context = hit();
    EXPECT_EQ(mtl.getMaterialID(context), 12);
    EXPECT_EQ(mtl.getOpaqueFlags(), 3);
    for (const Param& reason : {Param{"alpha_contribution", 0.5f}, Param{"matte_surface", true},
                                Param{"alpha_contribution_tex", &texture}}) {
        PelkMaterial& other = make("MtlWrapper");
        startFrame(other, {{"base_material", &base}, reason});
        EXPECT_EQ(other.getOpaqueFlags(), 0) << reason.name;
    }
}

TEST_F(MtlWrapperTest, DescriptorTextStandsAheadOfTheBases) {
    base.text = "base\n";
    base.multiMtl = findInterface<RTMtlInterface>(&mtl, EXT_RTMTL);
    startFrame(mtl, {{"base_material", &base},
                     {"generate_gi", 0.5f},
                     {"receive_gi", std::nanf("")},
                     {"matte_surface", true},
                     {"matte_for_secondary_rays", 1},
                     {"shadow_tint_color", Color(1, 0.5f, 0)}});
    const std::string lines =
        "mtl_wrapper\nmtlwrapper_generate_gi 1\nmtlwrapper_receive_gi 0\n"
        "mtlwrapper_matte_surface 3\nmtlwrapper_matte_shadow 0\n"
        "mtlwrapper_matte_shadowColor 1.000000 0.500000 0.000000\n";
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"), "1 " + lines + "base\n");
    EXPECT_EQ(describe(mtl, "HierarchyDescriptor"), "1 base\n");
    EXPECT_EQ(base.multiMtl->getMultiMtl(), base.multiMtl);
    base.hiddenFaces = {EXT_RTMTL};
    EXPECT_EQ(describe(mtl, "MaterialDescriptor"), "0 " + lines);
    EXPECT_EQ(base.multiMtl->getMultiMtl(), nullptr);
}

}  // namespace
