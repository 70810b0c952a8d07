#include "descriptor/nesting.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fake_host/call_log.h"
#include "fake_host/recorders.h"

namespace {

const std::string kFrame = "<coatlayer_begin>\n<coatlayer_end>\n";

using Offsets = std::vector<int>;

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
    const auto secondAfter = [&](const std::string& first) {
        a.text = first;
        return offsetsOf({{&a}, {&b}})[1];
    };
    EXPECT_EQ(secondAfter("x\n" + kFrame + "y\n" + kFrame), 4);
    EXPECT_EQ(secondAfter("<coatlayer_begin>\n" + kFrame + "<coatlayer_end>\n"), 4) << "nested";
    EXPECT_EQ(secondAfter(""), 2) << "no text at all still makes a frame";
    EXPECT_EQ(secondAfter("name <coatlayer_begin> x\n"), 3) << "a tag inside a value is a tag";
    EXPECT_EQ(secondAfter("<coatlayer_begin"), 2) << "half a tag is none";
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
    EXPECT_EQ(offsetsOf({{&a}, {&mute}, {nullptr}, {&b}}), (Offsets{1, 1, 1, 2}));
    EXPECT_EQ(offsetsOf({{&mute}, {nullptr}, {&b}}), (Offsets{0, 0, 1})) << "no text in the first";
    EXPECT_EQ(offsetsOf({{&a}, {&b, false}, {&b}}), (Offsets{1, 1, 2})) << "disabled";
    EXPECT_EQ(offsetsOf({{&a, false}, {nullptr}, {&b}}), (Offsets{1, 1, 1})) << "disabled first";
}

TEST_F(NestingTest, SharedPluginsAreWrittenOnce) {
    const std::vector<LayerPosition> positions = {{&a}, {&b}, {&a}, {&b}};
    EXPECT_EQ(offsetsOf(positions, SamePlugin::Shared), (Offsets{1, 2, 1, 2}));
    EXPECT_EQ(std::string(frames.c_str()),
              "<coatlayer_begin>\na\n<coatlayer_end>\n<coatlayer_begin>\nb\n<coatlayer_end>\n");
    EXPECT_EQ(offsetsOf(positions), (Offsets{1, 2, 3, 4})) << "not shared";
    EXPECT_EQ(offsetsOf({{&a}, {&b, false}, {&b}}, SamePlugin::Shared), (Offsets{1, 1, 1}))
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
