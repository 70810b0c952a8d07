#include <limits>

#include "frame/exception_msg.h"
#include "library/hit_roads.h"

namespace {

constexpr u32 kRays[] = {kRayCamera, kRayShadow, kRayCamera | kRayReflect, kRayCamera | kRayRefract,
                         kRayCamera | kRayGi};

/// All materials around plug-ins that answer what they should not.
class BadAnswers : public HitRoads {
protected:
    BadAnswers() {
        base.takesNull = true;  // whether a null goes back is told by each material's own tests
    }

    /// Everything that a hit asks others for is this number.
    void answer(float number) {
        const Color color(number, -number, number);
        base.results = {color, color, color, color};
        base.sampler.color = base.sampler.transparency = base.sampler.diffuse = color;
        base.sampler.lightMult = base.sampler.evaluated = color;
        base.sampler.diffuseNormal = {number, number, number};
        texture.color = {color, number};
        texture.number = number;
        texture.integer =
            number > 0 ? std::numeric_limits<int>::max() : std::numeric_limits<int>::min();
        renderer.gi.light = renderer.tracedColor = renderer.tracedAlpha = color;
        renderer.environmentColor = color;
    }

    /// Sends all kinds of rays to all materials. Each must leave the context as it was and hold
    /// no sampler of the base, whether it ends well or by an exception.
    void runAll(const char* what) {
        for (PelkMaterial* material : materials) {
            for (const u32 rayType : kRays) {
                for (const int backSide : {0, 1}) {
                    SCOPED_TRACE(testing::Message()
                                 << what << ", " << material->getPluginTypeName() << ", ray "
                                 << rayType << (backSide ? " behind" : ""));
                    runOne(*material, rayType, backSide, &BadAnswers::shadeOnce);
                    runOne(*material, rayType, backSide, &BadAnswers::sampleOnce);
                }
            }
        }
    }

private:
    void runOne(PelkMaterial& material, u32 rayType, int backSide,
                void (BadAnswers::*road)(PelkMaterial&, FakeContext&)) {
        FakeContext context = hit();
        context.rayType = rayType;
        context.backSide = backSide;
        context.traceDepth = rayType == kRayCamera ? 0 : 1;
        context.giDepth = rayType & kRayGi ? 1 : 0;
        context.directLight = texture.color.color;
        context.resultFragment = &fragment;
        const PelkContext before = context;
        try {
            (this->*road)(material, context);
        } catch (const ExceptionMsg&) {
        }
        expectRayAndHitAsBefore(before, context);
        EXPECT_EQ(base.samplersOut, 0) << "a sampler of the base is lost";
    }

    void shadeOnce(PelkMaterial& material, FakeContext& context) { material.shade(context); }

    void sampleOnce(PelkMaterial& material, FakeContext& context) {
        BSDFSampler* const sampler = material.getBSDF(context, 0);
        if (sampler) {
            for (const BSDFSide side : {kFrontSide, kBackSide}) {
                Color light(1), unshadowed(1);
                if (BRDFSampler* const face = sampler->getBRDF(side))
                    face->eval(context, {0, 0, 1}, light, unshadowed, 2.0f, kEvalDiffuse);
            }
            sampler->traceBSDFForward(context, 1);
            sampler->getBSDFTransparency(context);
        }
        material.releaseBSDF(context, sampler);
    }
};

TEST_F(BadAnswers, LoseNoSamplerAndChangeNoField) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const float number : {std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity,
                               -1.0f, std::numeric_limits<float>::max()}) {
        answer(number);
        runAll(std::to_string(number).c_str());
    }
    answer(0.5f);
    base.sampler.hasFace[0] = false;
    runAll("no front face");
    base.sampler.hasFace[1] = false;
    runAll("no face");
    base.givesSampler = false;
    runAll("no sampler");
    base.throwsForMemory = true;
    runAll("base without memory");
    base.throwsForMemory = false;
    base.givesSampler = true;
    base.sampler.hasFace[0] = base.sampler.hasFace[1] = true;
    texture.throwsForMemory = true;
    runAll("texture without memory");
    texture.throwsForMemory = false;
    base.hiddenFaces = {EXT_MATERIAL, EXT_BSDF, EXT_OPAQUE_SHADEABLE, EXT_RTMTL};
    startAll();
    runAll("no interface");
}

TEST_F(BadAnswers, ExceptionsLoseNoPooledSampler) {
    // From here on the pools must do with the elements that they have.
    for (PelkMaterial* material : materials) {
        FakeContext context = hit();
        material->releaseBSDF(context, material->getBSDF(context, 0));
    }
    HeapProbe heap;
    heap.refuseAfter(0);
    for (PelkMaterial* material : materials) {
        SCOPED_TRACE(material->getPluginTypeName());
        for (int i = 0; i < 1000; ++i) {
            base.throwsForMemory = i % 2;
            texture.throwsForMemory = !base.throwsForMemory;
            FakeContext context = hit();
            try {
                material->releaseBSDF(context, material->getBSDF(context, 0));
            } catch (const ExceptionMsg&) {
            }
        }
        base.throwsForMemory = texture.throwsForMemory = false;
        FakeContext context = hit();
        EXPECT_NO_THROW(material->releaseBSDF(context, material->getBSDF(context, 0)));
    }
}

}  // namespace
