#pragma once

#include <cstdint>
#include <span>

#include "pelk/base/grow_table.h"
#include "pelk/base/thread_pools.h"
#include "pelk/contract/fragment.h"
#include "pelk/support/regions/channel_buffer.h"
#include "pelk/support/regions/fragments.h"
#include "pelk/support/regions/fragments_data.h"
#include "pelk/support/regions/pixel_readout.h"

namespace Tarnkit {

/// Says which pixels a merge of two regions may change. Given by the region's owner.
class RegionMask;

/// Channel objects, not owned; entries may be null.
using ChannelList = std::span<RenderChannel* const>;

/// Bytes of one value of a channel type; 0 for an unknown one.
constexpr int channelTypeSize(int type) {
    constexpr int kSizes[] = {0, 4, 12, 8, 4, 12, 16};
    return type >= kChannelNone && type <= kChannelAColor ? kSizes[type] : 0;
}

/// One channel of a region.
struct ChannelRecord {
    int type = kChannelFloat;
    char name[64] = "";
    int alias = -1;
    ChannelBuffer* buffer = nullptr;   ///< the pixels, owned by the region; null when none
    RenderChannel* channel = nullptr;  ///< not owned
    int fragmentOffset = 0;            ///< where the slot begins in a fragment's data block
    int fragmentSize = 0;              ///< bytes of the slot
    int flags = 0;                     ///< of ChannelFlags

    bool hasName(const char* other) const;
    /// The slot in a data block of `blockSize` bytes; null without an object, or where the block
    /// has no room for it: a channel may be younger than the block.
    u8* slotIn(u8* block, int blockSize) const {
        const bool fits = fragmentSize > 0 && fragmentOffset <= blockSize - fragmentSize;
        return channel && fits ? block + fragmentOffset : nullptr;
    }
};

/// A channel in the list of those that share a bucket of aliases.
struct AliasNode {
    int channelIndex = 0;
    AliasNode* next = nullptr;
};

/// A rectangle of an image in the making that takes finished pixels as fragments.
class OutputRegion : public FragmentManager {
public:
    virtual void getRect(int& x0, int& y0, int& x1, int& y1, int& width, int& height) = 0;
    /// `x1` and `y1` are exclusive.
    virtual void setRect(int x0, int y0, int x1, int y1) = 0;
    /// Writes the pixel at (`x`, `y`) of the image from the fragments of a list.
    virtual void storeFragments(int x, int y, const FragmentList& list) = 0;
    /// Puts the start value into all pixels, then takes all fragments back.
    virtual void clear() = 0;
    /// Takes all fragments back at once, with their data.
    virtual void resetFragments() = 0;
    /// 1 if the total fragments of two lists differ by more than is allowed, else 0.
    virtual int compareFragments(FragmentList&, int, FragmentList&, int, float) { return 0; }
    /// Writes the region into a flat block. The needed size for a null `buffer`, else 1, or 0.
    virtual std::int64_t getBuffer(void*, std::int64_t) { return 0; }
    /// Takes rectangle and pixels from a flat block.
    virtual void setBuffer(const void*) {}
};

/// The store of one rectangle of an image: any number of channels, each a typed array of pixels,
/// and the fragments that collect samples until a pixel is finished. No operation takes a lock;
/// the caller keeps calls on one region and on its fragments from overlapping.
///
/// Order of use: `setRect`, channels, `beginRendering`, fragments in and out, reading, then
/// `clear` for the next use. Fragments are handed back before `beginRendering` is called again.
///
/// Channels may be added, removed and moved at any time; slots are laid out anew by the next
/// `beginRendering`. Pixels lie in rows from the top without gaps: the one at (x, y) of the image
/// has the index (x - x0) + (y - y0) * width. Memory failure is an ExceptionMsg that leaves the
/// region usable, if need be without pixels.
class PKRegionData : public OutputRegion, public PixelBufferInterface3 {
public:
    PKRegionData();
    ~PKRegionData() override;

    /// The third generation is not offered by its id: who knows of it casts what the second
    /// answers.
    using Offered = InterfaceList<PixelBufferInterface, PixelBufferInterface2>;
    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }

    Fragment* newFragment() override;
    void deleteFragment(Fragment* fragment) override;

    void getRect(int& x0, int& y0, int& x1, int& y1, int& width, int& height) override;
    void setRect(int x0, int y0, int x1, int y1) override;
    void storeFragments(int x, int y, const FragmentList& list) override;
    /// The same with the choice made: `front` may be null, `total` not.
    void storeFragments(int x, int y, Fragment* front, Fragment* total);
    void clear() override;
    void resetFragments() override;
    int compareFragments(FragmentList& listA, int a, FragmentList& listB, int b,
                         float weight) override;

    int getWidth() override { return width; }
    int getHeight() override { return height; }
    int getPixels(int channel, int alphaChannel, const PixelRect& rect, int format,
                  std::int64_t bufferSize, void* buffer, int order, int numMappers,
                  ColorMapper* const* mappers) override;
    int getPixels(int channel, int alphaChannel, const PixelRect& rect, int format,
                  std::int64_t bufferSize, void* buffer, int order, int numMappers,
                  ColorMapper* const* mappers, int vectorMode) override;
    int getNumChannels() override { return channels.size(); }
    int getChannelInfo(int index, ChannelInfo& out) override;
    int findChannelByAlias(int alias) override;
    int getChannelFlags(int index) override;

    /// Appends a channel described by its object. Its index, or -1 for null.
    int addChannel(RenderChannel* channel);
    /// Drops all channels, then adds those of the list.
    void setChannels(ChannelList list);
    /// Adds, with pixels, the channels whose names the table lacks or has fewer of. Does nothing
    /// for a list that is not longer than the table.
    void addChannels(ChannelList list);
    /// 1 if the channels agree with the list in number, names, types and in what their flags say
    /// of pixels and mappers, else 0.
    int channelsMatch(ChannelList list) const;
    /// Moves the channels to the order of the list. Returns 1 if their number differs, else 0.
    int reorderChannels(ChannelList list);
    /// Makes the channels those of the list and keeps the pixels of those that were there before;
    /// channels 0 and 1 always stay. Returns 0, or 1 if the channels can't be brought to match.
    int syncChannels(ChannelList list);
    /// Copies the names, if there are as many as channels.
    void setChannelNames(ChannelList list);
    /// Drops all channels and makes `count` blank ones.
    void setNumChannels(int count);
    /// Makes the channel one without object and pixels.
    void setChannelInfo(int index, int type, int alias, const char* name);
    void removeChannel(int index);
    /// Forgets the channel objects; pixels and names stay.
    void detachChannels();
    /// The last channel with this name, -1 if there is none.
    int findChannelByName(const char* name) const;

    /// Gives a channel its pixels, if it has none, filled with the start value.
    void allocateChannelBuffer(int index);
    /// Drops the pixels of all channels and the table of aliases.
    void freeBuffers();
    /// Makes the region ready for fragments, once the rectangle and the channels are settled.
    /// Pixels that are large enough stay, with what is in them.
    void beginRendering();
    /// Gives all memory but the channel table back and takes all settings to their first values.
    void reset();

    const GrowTable<ChannelRecord>& getChannels() const { return channels; }
    /// The table from alias to channels; empty until it is built. Bucket 0 has those without one.
    const GrowTable<AliasNode*>& getAliasBuckets() const { return aliasBuckets; }
    int getPixelCapacity() const { return pixelCapacity; }
    int getFragmentDataSize() const { return fragmentDataSize; }
    /// Bytes of a fragment's data block.
    int getTemplateSize() const { return templateSize; }
    /// Fragments handed out and not given back.
    int getNumFragments() const { return fragmentPool.getLiveCount(); }
    /// The computer that renders this region, at most 31 characters.
    const char* getHostName() const { return hostName; }

    RegionMask* mask = nullptr;  ///< not owned

    // What compareFragments tests, and by how much the two may differ.
    int compareRenderID = 0;
    int compareNormal = 0;
    int compareZ = 0;
    float normalThreshold = 0.1f;
    float zThreshold = 10.0f;
    /// Not 0: the front of a pixel is the fragment of the largest `zDepth / weight`, else that of
    /// the largest weight.
    int frontByDepth = 0;

private:
    friend class PKFragment;

    bool isChannel(int index) const { return index >= 0 && index < channels.size(); }
    bool hasPixels(int index) const;
    std::int64_t pixelCount() const;
    int checkedPixelCount() const;

    void freeChannels();
    void describe(ChannelRecord& record, RenderChannel& channel);
    bool matches(const ChannelRecord& record, RenderChannel* channel) const;
    bool wantsChannel(ChannelList list, RenderChannel& channel) const;
    void removeStaleChannels(ChannelList list);
    void moveToOrder(ChannelList list);
    void freeBuffer(ChannelRecord& record);
    void fillBuffer(ChannelRecord& record, int count);

    void layOutSlots();
    void prepareFragmentData();
    void freeTemplates();
    void buildAliasTable();
    AliasNode* aliasBucket(int alias) const;
    const ChannelRecord* aliasRecord(const AliasNode& node, int alias) const;

    int pixelCapacity = 0;  // pixels that every channel's buffer is sized for
    GrowTable<ChannelRecord> channels{100};
    int fragmentDataSize = 0;  // where the slot of the last channel ends
    char hostName[32] = "";
    GrowTable<AliasNode*> aliasBuckets{100};
    GrowTable<AliasNode> aliasNodes{100};  // one for each channel
    PoolEntry<PKFragment> fragmentPool{1000};
    FragmentDataAllocator fragmentData;
    u8* clearTemplates[3] = {};  // a cleared data block for each mode
    int templateSize = 0;
    int x0 = 0, x1 = 0, y0 = 0, y1 = 0;
    int width = 0, height = 0;
};

}  // namespace Tarnkit
