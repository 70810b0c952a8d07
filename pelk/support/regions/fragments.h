#pragma once

#include <span>

#include "pelk/base/color.h"
#include "pelk/base/types.h"
#include "pelk/base/vector.h"
#include "pelk/contract/fragment.h"

namespace Tarnkit {

class PKRegionData;
struct ChannelRecord;

/// One contribution to a pixel, with all its render channels: what a camera ray meets at one
/// surface, a whole sample, or the sum of many samples.
///
/// Memory: the main values are fields; behind `channelData` lies one block of bytes with a slot for
/// each channel of the region, at ChannelRecord::fragmentOffset and of the size of its type,
/// without padding and in the byte order of the machine. A slot may therefore lie at any multiple
/// of four; it is read and written by memcpy. The RenderChannel object does the arithmetic of a
/// slot, so that a fragment needn't know what the bytes mean. A channel without a slot in the block
/// (it has kChannelNoFragmentData, no object, or is younger than the block) is passed over by every
/// operation.
///
/// Colours are linear and premultiplied. Sums are weighted: fields and slots hold value times
/// weight, and what is averaged (normal, depth) is divided by `weight` only when a pixel is stored.
///
/// Made by PKRegionData::newFragment and owned by the region. Valid until it is given back, or
/// until the region takes all back at once (resetFragments), which does not ask it. Used by the
/// thread that renders the region; no operation locks or allocates. Operations that take another
/// Fragment need a PKFragment of a region with the same channels; this is not checked.
class PKFragment : public Fragment {
public:
    int getTag() override { return tag; }
    void setTag(int value) override { tag = value; }

    /// Combines `other`, a PKFragment, into this one.
    ///
    /// Mode 0 sums samples: every value adds that of `other` times `weights`; normal, depth and
    /// weight go by the mean of the three weights. The id is that of the first fragment added, as
    /// ids can't be averaged.
    ///
    /// Any other mode composites `other` behind what is here ("over"): its colours count times
    /// the transparency so far, its alpha times the transparency of alpha, and the transparencies
    /// are multiplied. Slots go by `weights`, for which the caller passes that transparency. Mode 1
    /// also takes id, normal, depth and weight if no fragment gave them yet: `other` is what the
    /// ray sees first. Mode 2 leaves that open, for a surface that is invisible.
    ///
    /// `weights` may be a field of this fragment.
    void addFragment(Fragment* other, const Color& weights, int mode) override;
    /// Multiplies all but the id; normal, depth and weight by the mean of the weights. `flag` is
    /// handed on to the channel objects.
    void multiply(const Color& weights, int flag) override;
    /// Makes the fragment show a flat colour, of weight 1; the other main values stay.
    void setColor(const Color& color) override;
    /// Copies the slot of a channel, as many bytes as its type has. An index without a slot, -1
    /// among them, leaves `out` as it was.
    void getChannel(int index, void* out) override;
    /// Puts a value of the channel's type into its slot; the value of a channel with the alias of
    /// render id or depth goes to that field instead. An index of -1, which is what a material
    /// holds for a channel that the render lacks, is ignored like any that is out of range.
    void setChannel(int index, const void* value) override;
    /// The address of a slot, null without one. The caller may write there, so the fragment
    /// counts as written.
    void* getChannelPtr(int index) override;
    /// Copies a main value (aliases 1 to 8 and 10); any other alias leaves `out` as it was, also if
    /// a channel carries it.
    void getAlias(int alias, void* out) override;
    /// Despite its name, overwrites the main value, and sets every channel with this alias. Ignored
    /// if there is neither.
    void addAlias(int alias, const void* value) override;
    /// The address of the main value, else the slot of the last channel with this alias, else null.
    /// Of aliases above 146, which share one bucket, only the last channel of all is found.
    void* getAliasPtr(int alias) override;
    /// Mode 0 clears to nothing, to sum samples into; modes 1 and 2 to fully transparent with
    /// weight 1 and depth -kRayFar, to put surfaces behind. Channel objects are told the mode. A
    /// fragment that is clear for the mode already leaves its slots alone, which is most of the
    /// cost. Returns 0.
    int clear(int mode) override;
    /// Whether `clear(mode)` would find the slots clear. Never for modes beyond 0 to 2.
    bool isClear(int mode) const;
    /// Takes colour and slots through a colour mapper (a view transform). Premultiplied colours are
    /// mapped unmultiplied, see mapPremultiplied. Where the mapper takes in the background, colour
    /// and background are summed and mapped as one, unless mode 1 asks to keep them apart. A null
    /// mapper still reaches the channel objects, and nothing else.
    void applyColorMapper(ColorMapper* mapper, int mode) override;
    /// What the fragment looks like as one sample: colour with background, and as alpha the mean of
    /// the three plus, for each channel with a slot, the largest component of its getColorValue.
    /// Not clamped. Returns `out`.
    AColor* getSampleColor(AColor* out) override;

    /// What the fragment stands for: the caller's own number from -1 up (an object, say), or
    /// kTagTotal or kTagNeverFront, by which storeFragments chooses what a pixel shows.
    int tag = 0;
    /// Bit 0 is kFragmentHasData. Bits 1 and 2 hold `2 * mode + 2` after a clear, so that a second
    /// one is free, and 0 once anything was written into a slot.
    int state = 0;
    PKRegionData* region = nullptr;  ///< the owner; null while the fragment is not handed out
    Color color;                     ///< radiance without the background, premultiplied
    Color alpha;                     ///< coverage, 0 to 1, per component
    Color background;                ///< radiance of what lies behind all surfaces, dimmed
    Color transparency;              ///< share of the colour behind that shows through, 0 to 1
    Color alphaTransparency;         ///< the same for alpha, as a matte may hide colour alone
    int renderID = -1;               ///< id of what was hit first; -1 for nothing
    Vector normal;                   ///< shading normal in world space, times the weight
    float zDepth = 0.0f;  ///< along the camera's axis, which points backwards, times the weight
    float weight = 0.0f;  ///< share of the pixel's samples that are in here; 1 for one surface
    u8* channelData = nullptr;  ///< the slots; null if it was made before the region knew them

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

/// Bit of PKFragment::state: the fragment holds data, so its id, and along a ray its normal and
/// depth, are settled; what is added later doesn't change them.
inline constexpr int kFragmentHasData = 1;

/// Tag of the fragment that holds the whole pixel: the sum over all objects.
inline constexpr int kTagTotal = -2;
/// Tag of a fragment that never is the front of its pixel.
inline constexpr int kTagNeverFront = -3;

/// Maps a premultiplied colour: divides by the weights (alpha, or what stands for it), maps, and
/// multiplies again, since a curve must see the colour as it is and not darkened by coverage.
/// Components whose weight is no larger than 1e-6 are mapped as they are. `out` may be `color`.
void mapPremultiplied(Color& out, const Color& color, const Color& weights, ColorMapper& mapper);

}  // namespace Tarnkit
