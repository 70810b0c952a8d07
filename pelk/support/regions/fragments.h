#pragma once

#include <span>

#include "pelk/base/color.h"
#include "pelk/base/types.h"
#include "pelk/base/vector.h"
#include "pelk/contract/fragment.h"

namespace Tarnkit {

class PKRegionData;
struct ChannelRecord;

/// One thing that contributes to a sample: fixed main values, and behind them a block of bytes
/// with a slot for every channel of the region that handed it out. Valid until it is given back
/// or the region takes all back at once. Channels without a slot in the block, or without an
/// object, are passed over.
class PKFragment : public Fragment {
public:
    int getTag() override { return tag; }
    void setTag(int value) override { tag = value; }

    /// Combines `other`, a PKFragment, into this one. Mode 0 sums weighted samples; any other puts
    /// `other` behind what is here, and mode 1 takes id, normal and depth from the first one.
    void addFragment(Fragment* other, const Color& weights, int mode) override;
    void multiply(const Color& weights, int flag) override;
    void setColor(const Color& color) override;
    /// Copies the slot of a channel, as many bytes as its type has.
    void getChannel(int index, void* out) override;
    void setChannel(int index, const void* value) override;
    void* getChannelPtr(int index) override;
    /// Copies a main value; only those have an answer.
    void getAlias(int alias, void* out) override;
    /// Despite its name, overwrites the main value, and sets every channel with this alias.
    void addAlias(int alias, const void* value) override;
    /// The address of the main value, else the slot of a channel with this alias, else null.
    void* getAliasPtr(int alias) override;
    /// Mode 0 clears to nothing, 1 and 2 to fully transparent. A fragment that is clear for the
    /// mode already leaves its channel data alone. Returns 0.
    int clear(int mode) override;
    bool isClear(int mode) const;
    /// A null mapper still reaches the channels. Mode 1 keeps colour and background apart.
    void applyColorMapper(ColorMapper* mapper, int mode) override;
    AColor* getSampleColor(AColor* out) override;

    int tag = 0;  ///< caller's mark; kTagTotal and kTagNeverFront steer the choice of the pixel
    int state =
        0;  ///< bit 0: kFragmentHasData. Bits 1 and 2: what it was cleared for, 0 once written
    PKRegionData* region = nullptr;  ///< the owner; null while the fragment is not handed out
    Color color;
    Color alpha;
    Color background;         ///< colour of what lies behind
    Color transparency;       ///< for colour
    Color alphaTransparency;  ///< for alpha
    int renderID = -1;        ///< id of what was hit
    Vector normal;
    float zDepth = 0.0f;
    float weight = 0.0f;
    u8* channelData = nullptr;  ///< null if it was made before the region knew the slots

private:
    std::span<const ChannelRecord> channels() const;
    const ChannelRecord* channelAt(int index) const;
    u8* slot(const ChannelRecord& record) const;
    int blockSize() const;
    void addChannels(const PKFragment& other, const Color& weights, int mode);
    void* fixedField(int alias);
    void clearChannels(int mode);
    void markWritten();
};

/// Bit of PKFragment::state: the fragment holds data, so its id is settled.
inline constexpr int kFragmentHasData = 1;

/// Tag of the fragment that holds the whole pixel.
inline constexpr int kTagTotal = -2;
/// Tag of a fragment that never is the front of its pixel.
inline constexpr int kTagNeverFront = -3;

/// Maps a premultiplied colour: divides by the weights, maps, and multiplies again. Channels
/// whose weight is no larger than 1e-6 are mapped as they are.
void mapPremultiplied(Color& out, const Color& color, const Color& weights, ColorMapper& mapper);

}  // namespace Tarnkit
