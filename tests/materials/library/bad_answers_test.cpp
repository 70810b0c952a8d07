#include <limits>

#include "base/test_heap.h"
#include "materials/library/hit_roads.h"
#include "pelk/base/exception_msg.h"

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

    /// Sends all kinds of rays to all materials, twice. Each must leave the context as it was and
    /// hold no sampler, of the base or of its pool, whether it ends well or by an exception.
    void runAll(const std::string& what, bool refusesMemory = false) {
        const TestHeap heap;
        if (refusesMemory)
            heap.refuseAfter(0);
        runOnce(what);
        const int requests = TestHeap::state.taken;
        runOnce(what);
        if (!refusesMemory) {
            EXPECT_EQ(TestHeap::state.taken, requests) << what << ": lost what its pool had";
        }
    }

private:
    void runOnce(const std::string& what) {
        for (PelkMaterial* material : materials)
            for (const u32 rayType : kRays)
                for (const int backSide : {0, 1}) {
                    SCOPED_TRACE(what + ", " + material->getPluginTypeName() + ", ray " +
                                 std::to_string(rayType) + (backSide ? " behind" : ""));
                    runOne(rayType, backSide, [=](auto& context) { material->shade(context); });
                    runOne(rayType, backSide, [=](auto& context) { sample(*material, context); });
                }
    }

    template <class Operation>
    void runOne(u32 rayType, int backSide, Operation operation) {
        FakeContext context = hit();
        context.rayType = rayType;
        context.backSide = backSide;
        context.traceDepth = rayType == kRayCamera ? 0 : 1;
        context.giDepth = rayType & kRayGi ? 1 : 0;
        context.directLight = texture.color.color;
        context.resultFragment = &fragment;
        const PelkContext before = context;
        try {
            operation(context);
        } catch (const ExceptionMsg&) {
        }
        expectRayAndHitAsBefore(before, context);
        EXPECT_EQ(base.samplersOut, 0) << "a sampler of the base is lost";
    }
};

TEST_F(BadAnswers, LoseNoSamplerAndChangeNoField) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const float number : {std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity,
                               -1.0f, std::numeric_limits<float>::max()}) {
        answer(number);
        runAll(std::to_string(number));
    }
    answer(0.5f);
    base.sampler.hasFace[0] = false;
    runAll("no front face");
    base.givesSampler = false;
    runAll("no sampler");
    base.givesSampler = base.sampler.hasFace[0] = true;
    base.throwsForMemory = true;
    runAll("base without memory");
    base.throwsForMemory = false;
    texture.throwsForMemory = true;
    runAll("texture without memory");
    texture.throwsForMemory = false;
    startAll();
    const DebugRecorder quiet;
    runAll("pools without memory", true);
    base.hiddenFaces = {MaterialInterface::kInterfaceID, BSDFInterface::kInterfaceID,
                        OpaqueShadeableInterface::kInterfaceID, RTMtlInterface::kInterfaceID};
    startAll();
    runAll("no interface");
}

}  // namespace
