#include "pelk/materials/descriptor/nesting.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fake_host/recorders.h"

namespace {

const std::string kFrame = "<coatlayer_begin>\n<coatlayer_end>\n";

using Offsets = std::vector<int>;

// Whole texts, pass-through and hierarchy are told by the tests of the materials.
class NestingTest : public testing::Test {
protected:
    Offsets offsetsOf(const std::vector<LayerPosition>& positions,
                      SamePlugin same = SamePlugin::WrittenAgain) {
        Offsets offsets(positions.size(), -1);
        const SourceArgs args{nullptr, "name", kMaterialSection, source, data};
        writeBlocksWithOffsets(positions, same, args, blocks, offsets);
        EXPECT_STREQ(source.c_str(), "") << "is for the header, which comes later";
        return offsets;
    }

    ShaderSource source, blocks;
    OCLData data;
    RecordingMaterial a, b, mute;
};

TEST_F(NestingTest, OffsetsCountTheFramesInsideTheChildren) {
    const auto secondAfter = [&](const std::string& first) {
        a.text = first;
        return offsetsOf({{&a}, {&b}})[1];
    };
    EXPECT_EQ(secondAfter("x\n" + kFrame + "y\n" + kFrame), 4);
    EXPECT_EQ(secondAfter("<coatlayer_begin>\n" + kFrame + "<coatlayer_end>\n"), 4) << "nested";
    EXPECT_EQ(secondAfter(""), 2) << "no text at all still makes a block";
    EXPECT_EQ(secondAfter("name <coatlayer_begin> x\n"), 3) << "a tag inside a value is a tag";
    EXPECT_EQ(secondAfter("<coatlayer_begin"), 2) << "half a tag is none";
}

TEST_F(NestingTest, PositionsWithoutTextFallBackOnTheFirst) {
    mute.hiddenFaces = {RTMtlInterface::kInterfaceID};
    EXPECT_EQ(offsetsOf({{&a}, {&mute}, {nullptr}, {&b}}), (Offsets{1, 1, 1, 2}));
    EXPECT_EQ(offsetsOf({{&mute}, {nullptr}, {&b}}), (Offsets{0, 0, 1})) << "no text in the first";
    EXPECT_EQ(offsetsOf({{&a}, {&b, false}, {&b}}), (Offsets{1, 1, 2})) << "disabled";
    EXPECT_EQ(offsetsOf({{&a, false}, {nullptr}, {&b}}), (Offsets{1, 1, 1})) << "disabled first";
}

TEST_F(NestingTest, SharedPluginsTakeTheNearestEarlierOffset) {
    a.text = b.text = "x\n";
    EXPECT_EQ(offsetsOf({{&a}, {&b}, {&a}, {&b}}, SamePlugin::Shared), (Offsets{1, 2, 1, 2}));
    const std::string block = "<coatlayer_begin>\nx\n<coatlayer_end>\n";
    EXPECT_EQ(blocks.c_str(), block + block) << "written once each";
    EXPECT_EQ(offsetsOf({{&a}, {&b}, {&b, false}, {&b}}, SamePlugin::Shared), (Offsets{1, 2, 1, 1}))
        << "a disabled earlier position is shared too";
}

}  // namespace
