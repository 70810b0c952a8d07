#include "descriptor/nesting.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fake_host/call_log.h"
#include "fake_host/recorders.h"

namespace {

const std::string kFrame = "<coatlayer_begin>\n<coatlayer_end>\n";

class NestingTest : public testing::Test {
protected:
    SourceArgs args(const char* kind) { return {this, "name", kind, source, data}; }

    std::vector<int> offsetsOf(std::vector<LayerPosition> positions,
                               SamePlugin same = SamePlugin::WrittenAgain) {
        std::vector<int> offsets(positions.size(), -1);
        writeFramesWithOffsets(positions, same, args(kMaterialSection), frames, offsets);
        return offsets;
    }

    ShaderSource source, frames;
    OCLData data;
    RecordingMaterial a, b, mute;

    void SetUp() override {
        a.text = "a\n";
        b.text = "b\n";
        mute.hiddenFaces = {EXT_RTMTL};
    }
};

TEST_F(NestingTest, SectionsAreComparedInFull) {
    EXPECT_TRUE(isSection("MaterialDescriptor", kMaterialSection));
    for (const char* other : {"materialdescriptor", "MaterialDescriptor2", "Material", "", "\n"})
        EXPECT_FALSE(isSection(other, kMaterialSection)) << other;
    EXPECT_FALSE(isSection(nullptr, kMaterialSection));
}

TEST_F(NestingTest, PassThroughHandsEveryArgumentOn) {
    a.textSection = "Other";
    EXPECT_EQ(passThrough(findRTMtl(&a), args(kMaterialSection)), 0);
    EXPECT_EQ(passThrough(findRTMtl(&a), args("Other")), 1);
    EXPECT_STREQ(source.c_str(), "a\n");
    EXPECT_EQ(a.seenOwner, this);
    EXPECT_EQ(a.seenName, "name");
    EXPECT_EQ(passThrough(findRTMtl(&mute), args("Other")), 0);
    EXPECT_EQ(passThrough(findRTMtl(nullptr), args("Other")), 0);
}

TEST_F(NestingTest, OffsetsCountTheFramesInsideTheChildren) {
    const struct {
        const char* what;
        std::string first;
        std::vector<int> offsets;
    } cases[] = {
        {"two nested frames", "x\n" + kFrame + "y\n" + kFrame, {1, 4}},
        {"frames in frames count alike",
         "<coatlayer_begin>\n" + kFrame + "<coatlayer_end>\n",
         {1, 4}},
        {"no text at all still makes a frame", "", {1, 2}},
        {"a tag inside a value is a tag", "name <coatlayer_begin> x\n", {1, 3}},
        {"half a tag is none", "<coatlayer_begin", {1, 2}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        a.text = c.first;
        EXPECT_EQ(offsetsOf({{&a}, {&b}}), c.offsets);
    }
}

TEST_F(NestingTest, FramesStandInOrderAndTheOutputWaits) {
    b.textSection = "none that is asked for";
    offsetsOf({{&a}, {&b}, {&a}});
    const std::string frameOfA = "<coatlayer_begin>\na\n<coatlayer_end>\n";
    EXPECT_EQ(frames.c_str(), frameOfA + kFrame + frameOfA)
        << "a child that answers 0 has an empty frame";
    EXPECT_STREQ(source.c_str(), "");
}

TEST_F(NestingTest, PositionsWithoutTextFallBackOnTheFirst) {
    const struct {
        const char* what;
        std::vector<LayerPosition> positions;
        std::vector<int> offsets;
    } cases[] = {
        {"the first describes itself", {{&a}, {&mute}, {nullptr}, {&b}}, {1, 1, 1, 2}},
        {"the first has no text", {{&mute}, {nullptr}, {&b}}, {0, 0, 1}},
        {"disabled positions aren't described", {{&a}, {&b, false}, {&b}}, {1, 1, 2}},
        {"a disabled first still holds the others", {{&a, false}, {nullptr}, {&b}}, {1, 1, 1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(offsetsOf(c.positions), c.offsets);
    }
}

TEST_F(NestingTest, SharedPluginsAreWrittenOnce) {
    const std::vector<LayerPosition> positions = {{&a}, {&b}, {&a}, {&b}};
    EXPECT_EQ(offsetsOf(positions, SamePlugin::Shared), (std::vector<int>{1, 2, 1, 2}));
    EXPECT_EQ(std::string(frames.c_str()),
              "<coatlayer_begin>\na\n<coatlayer_end>\n<coatlayer_begin>\nb\n<coatlayer_end>\n");
    EXPECT_EQ(offsetsOf(positions), (std::vector<int>{1, 2, 3, 4})) << "not shared";
    EXPECT_EQ(offsetsOf({{&a}, {&b, false}, {&b}}, SamePlugin::Shared), (std::vector<int>{1, 1, 1}))
        << "a disabled earlier position is shared too";
}

TEST_F(NestingTest, HierarchyGivesEachChildALineOfItsOwn) {
    a.text = "Num_children: 2\n";
    b.textSection = kMaterialSection;
    RTMtlInterface* const children[] = {findRTMtl(&a), nullptr, findRTMtl(&b)};
    writeChildren(children, args(kHierarchySection));
    EXPECT_STREQ(source.c_str(), "Num_children: 2\nNum_children: 2\nNum_children: 0\n");
}

}  // namespace
