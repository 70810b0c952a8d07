#pragma once

#include <cstdint>
#include <vector>

#include "pelk/base/grow_table.h"
#include "pelk/base/thread_pools.h"
#include "pelk/contract/fragment.h"
#include "pelk/support/regions/channel_buffer.h"
#include "pelk/support/regions/channel_record.h"
#include "pelk/support/regions/fragments.h"
#include "pelk/support/regions/fragments_data.h"
#include "pelk/support/regions/output_region.h"
#include "pelk/support/regions/pixel_readout.h"
#include "pelk/support/regions/transfer_block.h"

namespace Tarnkit {

class RegionMask;

/// What PKRegionData::shadeRegion does with a rectangle. Of any other mode nothing changes.
enum ShadeMode : int {
    kShadeChecker = 1,  ///< pixels with an even x + y become black
    kShadeRows = 2,     ///< rows with an even y become black
    kShadeDark = 3,     ///< all three components are halved
    kShadeBlue = 4,     ///< red and green are halved, blue goes half the way to 1
    kShadeReset = 5,    ///< all channels go back to their start values there
};

/// The film of one rectangle of an image: any number of channels (AOVs), each a typed array of
/// pixels, and the fragments that collect samples until a pixel is finished.
///
/// Order of use:
///
///     region.setRect(x0, y0, x1, y1);
///     region.setChannels(channels.getList());  // beauty and alpha first: kBeautyChannel
///     region.beginRendering();
///     FragmentList pixel{&region};
///     // for each pixel: add up its samples in fragments of the list, then
///     region.storeFragments(x, y, pixel);
///     region.resetFragments();                 // and an empty list for the next pixel
///     region.getPixels(...);                   // and `clear` or `setRect` for the next tile
///
/// Fragments are handed back before `beginRendering` is called again.
///
/// Pixels lie in rows from the top without gaps: the one at (x, y) of the image has the index
/// (x - x0) + (y - y0) * width in every channel's buffer. A pixel is of the channel's type, colours
/// linear and premultiplied. Until it is stored it holds the start value of its channel.
///
/// Threads: no operation takes a lock. One region is rendered by one thread at a time; the pixels
/// of a finished one may be read by any number at once, while nobody writes. A host renders on more
/// threads by giving each a region of its own. Channel objects are shared by all of them.
///
/// Channels may be added, removed and moved at any time; slots are laid out anew by the next
/// `beginRendering`, and until then a fragment passes over channels that have no room in its block.
/// An index out of range is ignored, or answered by 0, -1 or null. Memory failure is an
/// ExceptionMsg that leaves the region usable, if need be without pixels.
class PKRegionData : public OutputRegion, public PixelBufferInterface3 {
public:
    PKRegionData();
    /// Fragments still out die with the region.
    ~PKRegionData() override;

    /// Answers the first two generations. The third is not offered by its id: who knows of it casts
    /// what the second answers.
    using Offered = InterfaceList<PixelBufferInterface, PixelBufferInterface2>;
    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }

    /// A fragment cleared by mode 0, from the region's pool: no system allocation once the first
    /// pixels are done. The region owns it. Before `beginRendering` it has no slots.
    Fragment* newFragment() override;
    /// Gives one back, with its slots. Null, a fragment of another region and one that is back
    /// already are ignored.
    void deleteFragment(Fragment* fragment) override;

    void getRect(int& x0, int& y0, int& x1, int& y1, int& width, int& height) override;
    void setRect(int x0, int y0, int x1, int y1) override;
    /// Chooses from the list what the pixel shows, and has every channel object write its pixel,
    /// from the last channel to the first. The total, the whole pixel, is the fragment with
    /// kTagTotal, else the head of the list. The front, for channels that can't be averaged, is
    /// that of the largest weight, so the object that covers most (see frontByDepth); it may be
    /// none.
    void storeFragments(int x, int y, const FragmentList& list) override;
    /// The same with the choice made: `front` may be null, `total` not.
    void storeFragments(int x, int y, Fragment* front, Fragment* total);
    /// Start values come from the channel objects, or are 0 after `detachChannels`.
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

    // The way to another computer and back, see transfer_block.h.

    /// Writes host name, rectangle and all channels into `buffer`. The bytes that it needs for a
    /// null `buffer`; else 1, or 0 with a word on the debug stream and nothing written if `size` is
    /// below that. Also 0 for a rectangle that was set larger than the pixels that there are.
    std::int64_t getBuffer(void* buffer, std::int64_t size) override;
    /// Writes the same block piece by piece, as long as `getBuffer` says, for a file that needn't
    /// stand in memory beside the pixels. False as soon as the sink says so, or where `getBuffer`
    /// answers 0.
    bool writeBuffer(const TransferSink& sink);
    /// The same for the pixels from (left, top) to (right, bottom), outside, and the first channels
    /// alone: the block of a region that has no more. Also false if that isn't all in this one.
    bool writePart(const TransferSink& sink, int left, int top, int right, int bottom,
                   int channelCount);
    /// Takes the block of a trusted writer that has channels like this region's in the same order,
    /// those without pixels the same: sets the rectangle, starts over as by `beginRendering`, and
    /// overwrites the pixels. Pixels that are large enough stay, so blocks of one size after
    /// another need no fresh memory. Of a shorter list of channels the others keep their pixels; so
    /// do all from the first on whose type is another. A block with a wrong magic number changes
    /// nothing. A channel of kAliasHostStamp that the block reaches shows the name of the block's
    /// computer afterwards, whatever it held (text_stamp.h). The block isn't kept, and the name of
    /// this computer stays.
    void setBuffer(const void* data) override;
    /// The same for `size` bytes from outside, which are checked first (checkTransferBlock). They
    /// must have exactly the channels of this region. After an error nothing has changed.
    ErrorChain setBuffer(const void* data, std::int64_t size);

    // Pixels of other regions. Rectangles are in pixels of the image, and only where both overlap
    // do pixels change. No memory is taken without a mask, so regions that share no pixels may be
    // copied to the same one by several threads at once.

    /// Merges another region into this one: channels by their index, as many as both have, where
    /// both have pixels of one size; all others stay. Copies all of the overlap, or what `mask`
    /// lets pass, in its way (MaskMode).
    void copyFrom(PKRegionData& source);
    /// Takes pixels of one channel that stand outside of a region: `width` by `height` of them, row
    /// by row, with the upper left at (`x`, `y`) of the image. Makes room if the channel has no
    /// pixels. Nothing is copied if the item sizes differ or the buffer has fewer pixels.
    void copyChannelRect(ChannelBuffer& source, int channelIndex, int x, int y, int width,
                         int height);

    // Marks in an image that is in the making, such as the tiles in work. Unlike above, (0, 0) is
    // the upper left corner of the region. Only channels of colours and vectors with pixels are
    // drawn into.

    /// Fills the part of a rectangle that the region has, `x1` and `y1` exclusive, with `colorA` in
    /// one channel and `colorB` in another. Ends at the first channel that can't be drawn into.
    void fillRect(int x0, int y0, int x1, int y1, const Color& colorA, const Color& colorB,
                  int channelA, int channelB);
    /// Draws the pixels from `x0` to `x1`, both included, of row `y`. What lies outside of the
    /// region is drawn at its edge.
    void drawRow(int x0, int y, int x1, const Color& color, int channel);
    /// Draws the pixels from `y0` to `y1`, both included, of column `x`, in the same way.
    void drawColumn(int x, int y0, int y1, const Color& color, int channel);
    /// Shades the part of a rectangle that the region has, `x1` and `y1` exclusive, in the channel
    /// of kAliasImageColor. `mode`: of ShadeMode. Nothing happens without that channel's pixels.
    void shadeRegion(int x0, int y0, int x1, int y1, int mode);

    // The channel table. Objects must outlive the region or be detached before they go.

    /// Appends a channel described by its object, without pixels until the next `beginRendering`
    /// that makes them or `allocateChannelBuffer`. Its index, or -1 for null.
    int addChannel(RenderChannel* channel);
    /// Drops all channels with their pixels, then adds those of the list in order: without nulls in
    /// it, the place in the list is the channel's index.
    void setChannels(ChannelList list);
    /// Adds, with pixels, the channels whose names the table lacks or has fewer of, from the
    /// last of the list to the first. Does nothing for a list that is not longer than the table.
    void addChannels(ChannelList list);
    /// 1 if the channels agree with the list in number, names, types and in what their flags say
    /// of pixels and mappers, else 0.
    int channelsMatch(ChannelList list) const;
    /// Moves the channels, with their pixels, to the order of the list. Returns 1 if their number
    /// differs, and nothing is moved; else 0.
    int reorderChannels(ChannelList list);
    /// For a region that outlives a render: makes the channels those of the list, and keeps the
    /// pixels of those that were there before, so that a display doesn't go blank when a channel is
    /// added. Beauty and alpha always stay. Returns 0; or 1 if the channels can't be brought to
    /// match, and then the caller starts over with `setChannels`.
    int syncChannels(ChannelList list);
    /// Copies the names, if there are as many as channels; "Unknown channel" where there is none.
    void setChannelNames(ChannelList list);
    /// Drops all channels and makes `count` blank ones: a float without name, alias and pixels. For
    /// a region that is read from elsewhere, whose channels setChannelInfo then describes.
    void setNumChannels(int count);
    /// Describes a channel that pixels are only kept or transferred in: sets type, alias (-1 for
    /// none) and name, and drops object, pixels, slot and flags.
    void setChannelInfo(int index, int type, int alias, const char* name);
    /// Drops a channel with its pixels; the indices of those behind it fall by 1.
    void removeChannel(int index);
    /// Forgets the channel objects; pixels, types and names stay. After a render, when the objects
    /// die before the picture.
    void detachChannels();
    /// The last channel with this name, -1 if there is none.
    int findChannelByName(const char* name) const;

    // Memory.

    /// Gives a channel its pixels, if it has none, filled with the start value. Frees them instead
    /// if the channel keeps its pixels elsewhere (kChannelNoBuffer).
    void allocateChannelBuffer(int index);
    /// Drops the pixels of all channels and the table of aliases.
    void freeBuffers();
    /// Makes the region ready for fragments, once the rectangle and the channels are settled: makes
    /// pixels, lays out the slots, clears one data block for each mode as a template, and builds
    /// the table of aliases. Pixels that are large enough stay, with what is in them, so tiles of
    /// one size render without fresh memory. All fragments are void afterwards.
    void beginRendering();
    /// Gives all memory but the channel table back and takes all settings to their first values.
    void reset();

    const GrowTable<ChannelRecord>& getChannels() const { return channels; }
    /// The table from alias to channels; empty until it is built. Aliases 1 to 146 have a bucket
    /// each; bucket 0 is shared by all others. A bucket lists its channels from the last to
    /// the first, those without a slot left out.
    const GrowTable<AliasNode*>& getAliasBuckets() const { return aliasBuckets; }
    /// Pixels that every channel's buffer is sized for: at least width * height while rendering.
    int getPixelCapacity() const { return pixelCapacity; }
    /// Bytes of all slots together: where the last one ends.
    int getFragmentDataSize() const { return fragmentDataSize; }
    /// Bytes of a fragment's data block: those of the slots, but at least 8.
    int getTemplateSize() const { return templateSize; }
    /// Fragments handed out and not given back.
    int getNumFragments() const { return fragmentPool.getLiveCount(); }
    /// The computer that renders this region, at most 31 characters.
    const char* getHostName() const { return hostName; }

    // Settings of the region's owner, who writes them before the render; `reset` takes them back.

    RegionMask* mask = nullptr;  ///< what copyFrom may change; not owned; null for all pixels

    // What compareFragments tests, not 0 for yes, and by how much the two may differ.
    int compareRenderID = 0;
    int compareNormal = 0;
    int compareZ = 0;
    /// sqrt(weight) * (1 - cosine between the two normals) may reach this.
    float normalThreshold = 0.1f;
    float zThreshold = 10.0f;  ///< of PKFragment::zDepth, in scene units
    /// Not 0: the front of a pixel is the fragment of the largest `zDepth / weight`, which is the
    /// nearest to the camera as its axis points backwards, else that of the largest weight.
    int frontByDepth = 0;

private:
    friend class PKFragment;

    bool isChannel(int index) const { return index >= 0 && index < channels.size(); }
    bool hasPixels(int index) const;
    std::vector<TransferChannel> transferChannels(std::int64_t count) const;
    std::int64_t transferBytes() const;
    void stamp(const TransferBlock& block);
    bool canCopy(const PKRegionData& source, int index) const;
    void copyMasked(PKRegionData& source);
    bool isDrawable(int channel) const;
    PixelRect clamped(int left, int top, int right, int bottom) const;
    template <class Visit>
    void forEachPixel(int channel, const PixelRect& rect, Visit visit);
    void fillArea(int channel, const PixelRect& rect, const Color& color);
    void resetPixels(const PixelRect& rect);
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
