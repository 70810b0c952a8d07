#include <algorithm>

#include "fake_host/fake_host.h"

// What materials around another one hold to, whatever else each of them does.

namespace {

const Results kUntouched = {Color(-77), Color(-77), Color(-77), Color(-77)};

const struct {
    const char *material, *slot;
    bool isList;
    Results withoutBase;
    bool isOpaque;  // around an opaque base
} kCases[] = {
    {"Mtl2Sided", "front", false, kFullyTransparent, true},
    {"MtlBump", "base_mtl", false, kOpaqueBlack, true},
    {"MtlDoubleSided", "base_mtl", false, kOpaqueBlack, false},
    {"MtlLayeredBRDF", "brdfs", true, kFullyTransparent, false},
    {"MtlMaterialID", "base_mtl", false, kUntouched, true},
    {"MtlMulti", "mtls_list", true, kOpaqueBlack, true},
    {"MtlOverride", "base_mtl", false, kFullyTransparent, false},
    {"MtlRenderStats", "base_mtl", false, kOpaqueBlack, true},
    {"MtlSingleBRDF", "brdf", false, kOpaqueBlack, true},
    {"MtlWrapper", "base_material", false, kOpaqueBlack, true},
    {"MtlWrapperMaya", "base_material", false, kOpaqueBlack, true},
};

class AroundBase : public OneHit {
protected:
    static Param slotOf(const auto& c, PluginBase* plugin) {
        return c.isList ? Param(c.slot, std::vector{plugin}) : Param(c.slot, plugin);
    }
};

TEST_F(AroundBase, EveryMaterialAroundOthersIsTested) {
    for (PelkPluginDesc* desc : kinds()) {
        const std::string name = desc->getName();
        // Shades itself: the material that it names moves its normal and leads back to it.
        if (name == "MtlMayaRamp")
            continue;
        const PelkParameterListDesc& list = *desc->getParameterListDesc();
        bool isAround = false;
        for (int i = 0; i < list.getNumParameters(); ++i) {
            const ParameterDesc& slot = list.getParameter(i);
            const bool takesAny = slot.type == ParameterType::Plugin && slot.interfaceID == 0;
            isAround |= takesAny || PelkMaterial::Offered::contains(slot.interfaceID);
        }
        const auto isIt = [&](const auto& c) { return c.material == name; };
        EXPECT_EQ(isAround, std::ranges::any_of(kCases, isIt)) << name << " in kCases";
    }
}

TEST_F(AroundBase, SamplersAreTheBasesAndGoBackToIt) {
    base.sampler.diffuse = Color(0.25f);
    base.sampler.lightMult = Color(0.5f);
    base.sampler.evaluated = Color(2);
    base.sampler.transparency = Color(0.75f);
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.material);
        PelkMaterial& mtl = make(c.material);
        startFrame(mtl, {slotOf(c, &base)});
        const PelkContext before = context;
        BSDFSampler* sampler = mtl.getBSDF(context, 0x10);
        EXPECT_GT(base.samplersOut, 0);
        EXPECT_EQ(base.seenFlags & 0x10, 0x10);
        EXPECT_EQ(sampler->getBSDFTransparency(context), Color(0.75f));
        BRDFSampler* front = sampler->getBRDF(kFrontSide);
        Color light(4), unshadowed(4);
        EXPECT_EQ(front->eval(context, {0, 0, 1}, light, unshadowed, 1, 3), Color(2));
        EXPECT_EQ(front->getDiffuseColor(light = Color(4)), Color(1));
        EXPECT_EQ(front->getLightMult(light = Color(4)), Color(2));
        expectRayAndHitAsBefore(before, context);
        mtl.releaseBSDF(context, sampler);
        EXPECT_EQ(base.samplersOut, 0);
    }
}

TEST_F(AroundBase, OpaqueFlagsFollowTheBasesInEachFrameAndWithoutOneTheResultsAreTheMaterials) {
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.material);
        PelkMaterial& mtl = make(c.material);
        for (const int flags : {1, 2}) {
            base.opaqueFlags = flags;
            startFrame(mtl, {slotOf(c, &base)});
            EXPECT_EQ(mtl.getOpaqueFlags() & 1, c.isOpaque && flags == 1);
        }
        startFrame(mtl, {slotOf(c, nullptr)});
        FakeContext untouched = hit();
        mtl.shade(untouched);
        EXPECT_EQ(resultsOf(untouched), c.withoutBase);
    }
}

}  // namespace
