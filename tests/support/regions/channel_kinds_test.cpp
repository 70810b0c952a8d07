#include "pelk/support/regions/channel_kinds.h"

#include <gmock/gmock.h>

#include <cstring>

#include "pelk/support/regions/channel_set.h"
#include "support/regions/test_channels.h"

using namespace Tarnkit;

namespace {

struct Pair {
    float x, y;
};

/// One pixel of a region with one channel of each way of averaging.
class ChannelKindsTest : public testing::Test {
protected:
    enum Index { kSpecular, kMaterialID, kUV, kDepth, kRenderID, kMine };

    ChannelKindsTest() {
        constexpr int kAsked[] = {kAliasSpecular, kAliasMaterialIDNumber, kAliasUV, kAliasZDepth,
                                  kAliasRenderID};
        channels.addAliases(kAsked);
        channels.add(newCustomChannel("mine", kChannelFloat));
        region.setRect(0, 0, 1, 1);
        region.setChannels(channels.getList());
        region.beginRendering();
    }
    PKFragment& surface(Color specular, int id, Pair uv, float distance) {
        auto& fragment = static_cast<PKFragment&>(*region.newFragment());
        fragment.addAlias(kAliasSpecular, &specular);
        fragment.addAlias(kAliasMaterialIDNumber, &id);
        fragment.setChannel(kUV, &uv);
        fragment.setChannel(kMine, &uv.x);
        fragment.zDepth = -distance;  // the camera's axis points backwards
        fragment.renderID = 10 * id;
        fragment.weight = 1.0f;
        return fragment;
    }
    template <class Value>
    Value pixel(Index channel) {
        Value value;
        std::memcpy(&value, region.getChannels()[channel].buffer->item(0), sizeof value);
        return value;
    }

    ChannelSet channels;
    PKRegionData region;
};

TEST_F(ChannelKindsTest, RadianceIsSummedAndCompositedAndMeasuresAreThoseOfTheFront) {
    PKFragment& glass = surface(Color(8, 4, 0), 2, {0.25f, 0.5f}, 2);
    glass.transparency = Color(0.5f, 0.25f, 0);
    glass.state |= kFragmentHasData;
    glass.addFragment(&surface(Color(2, 4, 8), 4, {1, 1}, 9), glass.transparency, 1);
    FragmentList list{&region};
    Fragment* const total = list.getFragment(kTagTotal);
    Fragment *const small = list.getFragment(1), *const large = list.getFragment(2);
    small->addFragment(&surface(Color(0, 4, 8), 1, {1, 1}, 100), Color(0.25f), 0);
    large->addFragment(&glass, Color(0.5f), 0);
    large->addFragment(&surface(Color(4, 4, 4), 3, {0.75f, 0.5f}, 5), Color(0.25f), 0);
    total->addFragment(small, Color(1), 0);
    total->addFragment(large, Color(1), 0);
    region.storeFragments(0, 0, list);

    EXPECT_EQ(pixel<Color>(kSpecular), Color(0 + 4.5f + 1, 1 + 2.5f + 1, 2 + 0 + 1));
    EXPECT_FLOAT_EQ(pixel<float>(kMine), 0.25f + (0.25f + 0.25f) / 2 + 0.1875f)
        << "behind the glass by its mean transparency";
    EXPECT_FLOAT_EQ(pixel<float>(kDepth), 3) << "2, 2 and 5";
    EXPECT_FLOAT_EQ(pixel<Pair>(kUV).x, 1.25f / 3);
    EXPECT_EQ(pixel<int>(kMaterialID), 2) << "an id is never a mean";
    EXPECT_EQ(pixel<int>(kRenderID), 20);
}

}  // namespace
