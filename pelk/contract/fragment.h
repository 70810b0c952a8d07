#pragma once

// Render channels (AOVs) while a pixel is sampled: the values of one hit, chains of them, and what
// does the arithmetic of a channel.

#include "pelk/base/api.h"
#include "pelk/base/color.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

class Fragment;

/// A colour transformation, such as an exposure or the encoding for a display. The caller of a
/// read-out implements and owns it. Used by one thread at a time; doesn't throw.
class PELK_API ColorMapper {
public:
    virtual ~ColorMapper();
    /// Overwrites `out` with the mapped `in`, a colour that is not premultiplied; both may be the
    /// same object. Called by fragments and channels while samples are finished.
    virtual void mapColor(Color& out, const Color& in) = 0;
    /// Maps a finished pixel in place. `color` comes premultiplied by `alpha`, which may be changed
    /// too. `flag`: 1; reserved. Called by the read-out of pixels, in rows, between the next two.
    virtual void mapPixel(Color& color, Color& alpha, int flag) = 0;
    /// A read-out of pixels begins: what depends on the picture as a whole can be set up, so that
    /// mapPixel does nothing but arithmetic. Called once for each read-out, on the thread that
    /// reads. `flag`: 1; reserved.
    virtual void beginMapping(int flag) = 0;
    /// The read-out has ended, early or not; pairs with beginMapping. `flag`: 1; reserved.
    virtual void endMapping(int flag) = 0;
    /// Not 0 if the background goes through the mapper together with the colour; 0 leaves it as it
    /// is, for backplates that are display-encoded: mapped as well they would be encoded
    /// twice.
    virtual int mapsBackground() = 0;
};

/// The render channels of one hit; also of one sample or pixel, when fragments have been summed. A
/// host gives a hit one as PelkContext::resultFragment, and materials enter in it what they want
/// seen apart from the final colour: reflections, shadows, ids. A matte puts one of its own in
/// front of its base to catch what that enters.
///
/// A channel is reached by its position, which a material gets once a frame from
/// RenderChannelInterface, or by its alias, the fixed number of a well-known one (ChannelAlias). A
/// position of -1 or beyond the end and an alias that no channel has are ignored, so that materials
/// write without asking whether a channel is there. Values are passed by pointer and have the type
/// of the channel (ChannelType); the fragment copies them. Colours are premultiplied like
/// PelkContext::resultColor.
///
/// Fragments come from a FragmentManager, which owns them, and belong to one thread at a time. No
/// operation throws.
class PELK_API Fragment {
public:
    /// Next in the chain of a FragmentList, null at its end.
    Fragment* nextFragment = nullptr;

    virtual ~Fragment();
    /// A number by which the fragments of a pixel are told apart: `pelk` uses one for each object
    /// and negative ones for the total and the surroundings. Fragments of a material have 0.
    virtual int getTag() = 0;
    /// Sets the tag. Called by FragmentList on a fragment that it adds; who changes it later
    /// changes under which tag the list finds the fragment.
    virtual void setTag(int value) = 0;
    /// Combines `other`, of the same kind and manager, into this one. `mode` 0: a weighted sum, for
    /// the samples of a pixel; every value times `weights` is added. Any other: `other` lies behind
    /// this one along the ray and shows as far as this one is transparent ("over"); 1 also takes
    /// depth, normal and id from `other` if nothing has set them yet, as the first surface does.
    /// They are never mixed there: a mean of two ids would name a third object.
    virtual void addFragment(Fragment* other, const Color& weights, int mode) = 0;
    /// Scales all channels, per channel of the colour. `flag` is handed on to the channels: 0 for a
    /// share of the samples, 1 for a hit that a material shows in part. A channel whose values
    /// aren't light may treat the two apart.
    virtual void multiply(const Color& weights, int flag) = 0;
    /// Makes the sample one plain colour: channels become what RenderChannel::setColorData says.
    virtual void setColor(const Color& color) = 0;
    /// Copies a channel's value to `out`, which has room for its type; `out` stays as it is for a
    /// channel that isn't there.
    virtual void getChannel(int index, void* out) = 0;
    /// Overwrites a channel's value.
    virtual void setChannel(int index, const void* value) = 0;
    /// The address of a channel's value, to change it in place, or null. For who adds to what
    /// stands there: getChannel and setChannel would copy twice. Valid as long as the fragment; its
    /// bytes need not be aligned.
    virtual void* getChannelPtr(int index) = 0;
    /// Copies the value with an alias to `out`, as getChannel does. A fragment may answer for its
    /// main values alone (colour, alpha, depth and the like).
    virtual void getAlias(int alias, void* out) = 0;
    /// Enters `value` in every channel with the alias. A fragment of a region overwrites, despite
    /// the name; one that catches the channels of a base adds. So a material enters a channel once
    /// a hit, after fetching what stands there if it wants to add.
    virtual void addAlias(int alias, const void* value) = 0;
    /// The address of the value with an alias, or null, as in getChannelPtr.
    virtual void* getAliasPtr(int alias) = 0;
    /// Empties all channels. `mode` 0: to nothing, for a sum; 1: to fully transparent, for a hit
    /// that shows what lies behind; 2 like 1; others are handed to RenderChannel::clearData.
    /// Returns 0.
    virtual int clear(int mode) = 0;
    /// Maps the colours, undoing the premultiplication around it. `mapper` may be null: channels
    /// are told all the same, for mappings of their own. `mode` 1 keeps the background apart from
    /// the colour; with any other it is added to it first, if the mapper wants the background at
    /// all.
    virtual void applyColorMapper(ColorMapper* mapper, int mode) = 0;
    /// Writes one colour that stands for the whole sample, for hosts that compare samples to decide
    /// where more are needed: colour and background, with the coverage and what the channels show
    /// as its alpha. Returns `out`.
    virtual AColor* getSampleColor(AColor* out) = 0;
};

/// Hands fragments out and takes them back, without the heap once enough have been made. One thread
/// uses it at a time: hosts and materials keep one for each render thread.
class PELK_API FragmentManager : public PluginBase {
public:
    /// A fragment that is clear for mode 0, with tag and link 0. The manager's; it goes back by
    /// deleteFragment. Throws an ExceptionMsg if memory runs out.
    virtual Fragment* newFragment() = 0;
    /// Takes back a fragment that this manager gave. Doesn't throw.
    virtual void deleteFragment(Fragment* fragment) = 0;
};

/// A chain of fragments, one for each tag, and the manager that they come from: a pixel while it is
/// sampled, with one fragment for each object seen in it. A plain value that owns nothing by
/// itself: whoever made the list calls deleteAll or end. One thread uses it.
struct PELK_API FragmentList {
    FragmentManager* manager = nullptr;  ///< null: nothing can be added
    Fragment* first = nullptr;

    /// The first fragment with this tag, else a new one at the tail; never null. `found`, if not
    /// null, tells which. `manager` must not be null unless the tag is there. Throws an
    /// ExceptionMsg if memory runs out.
    Fragment* getFragment(int tag, bool* found = nullptr);
    /// A new fragment at the head, even if there is one with this tag: it hides that one from
    /// getFragment until it is gone. `manager` must not be null. Throws as above.
    Fragment* addFront(int tag);
    /// The first fragment, null if the list is empty; further ones by nextFragment. The manager's,
    /// and valid until deleteAll or end.
    Fragment* head() const { return first; }
    /// Adds each fragment of `other`, times `weight`, to the one of the same tag here, which is
    /// made if need be: joins samples that were gathered apart. Throws as above.
    void merge(const FragmentList& other, float weight);
    /// Fragment::multiply with flag 0 on each.
    void multiplyAll(float weight);
    /// Fragment::setColor on each: the whole pixel becomes one plain colour. Doesn't throw.
    void setColorAll(const Color& color);
    /// Fragment::applyColorMapper on each, with the same `mapper`, which may be null, and `mode`:
    /// 1 keeps the background apart from the colour, any other adds it first if the mapper wants
    /// it. Doesn't throw.
    void mapAll(ColorMapper* mapper, int mode);
    /// Gives every fragment back; the list is empty then and can be filled anew.
    void deleteAll();
    /// Gives every fragment back and forgets the manager. Harmless on a list without one.
    void end();
};

/// Types of the values of a channel, in fragments and in pixels. Bytes are as in memory.
enum ChannelType : int {
    kChannelNone = 0,
    kChannelFloat = 1,   ///< 4 bytes
    kChannelColor = 2,   ///< Color, linear: 12 bytes
    kChannelFloat2 = 3,  ///< two floats, such as u and v: 8 bytes
    kChannelInt = 4,     ///< an id, never averaged: 4 bytes
    kChannelVector = 5,  ///< Vector: 12 bytes
    kChannelAColor = 6,  ///< AColor: 16 bytes
};

/// Flags of a channel, as RenderChannel::getFlags answers them.
enum ChannelFlags : int {
    kChannelNoFragmentData = 0x1,   ///< has no slot in fragments: shows their main values
    kChannelNoBuffer = 0x2,         ///< keeps its pixels itself, elsewhere than in the region
    kChannelNoColorMapping = 0x10,  ///< no colour: read-outs leave mappers aside
};

/// The arithmetic of one channel: on its slot in a fragment, while samples are summed, and on its
/// pixels. The host implements it, one object for each channel of a render; it outlives the regions
/// that use it.
///
/// Regions of several threads share the object, so its operations keep no state and take no lock.
/// Slots and pixels lie packed: read them by memcpy, as they need not be aligned. None throws.
class PELK_API RenderChannel : public PluginBase {
public:
    /// Writes the start value, a pixel in which nothing was hit, into `count` pixels of the
    /// channel's type that lie one behind the other. Called when a region gets its pixels.
    virtual void fillPixels(void* pixels, int count) = 0;
    /// Empties a slot; `mode` as in Fragment::clear. What it writes for a mode must always be the
    /// same: regions ask once and copy the bytes from then on, as fragments are cleared at each
    /// hit.
    virtual void clearData(void* data, int mode) = 0;
    /// Overwrites a slot with a value of the channel's type.
    virtual void setValue(void* data, const void* value) = 0;
    /// Combines slot `src` into slot `dst`; `weights` and `mode` as in Fragment::addFragment, the
    /// weights of a mode other than 0 being what `dst` lets through. `hasData`: not 0 if
    /// `dst` already has a first hit, whose id, normal and depth are kept.
    virtual void addData(void* dst, const void* src, const Color& weights, int hasData,
                         int mode) = 0;
    /// Scales a slot, as Fragment::multiply. An id stays, since a share of an id is another id.
    virtual void multiplyData(void* data, const Color& weights, int flag) = 0;
    /// The sample becomes the plain colour `color`: writes what the channel shows of that.
    virtual void setColorData(void* data, const Color& color) = 0;
    /// Maps a slot, as Fragment::applyColorMapper; `fragment` is the one that it lies in, for the
    /// transparency that undoes the premultiplication. `mapper` may be null.
    virtual void mapData(void* data, Fragment* fragment, ColorMapper* mapper, int mode) = 0;
    /// Writes one finished pixel of the region, `x` and `y` being its place in the picture. `pixel`
    /// is null for a channel that keeps its pixels elsewhere. `total`: the sum over the pixel;
    /// `front`: the object that covers most of it or lies nearest, for what can't be mixed (ids,
    /// normals), null if there is none. `weight`: that of the front, by which its sums are divided,
    /// or 0. `channelIndex`: position of this channel in the fragments.
    virtual void storePixel(int x, int y, void* pixel, Fragment* front, Fragment* total,
                            float weight, int channelIndex) = 0;
    virtual int getType() = 0;          ///< a ChannelType; fixed, as are the three below
    virtual int getAlias() = 0;         ///< a ChannelAlias or a number of the host's; -1 for none
    virtual const char* getName() = 0;  ///< the channel's; not null
    virtual int getFlags() = 0;         ///< bits of ChannelFlags
    /// What a slot shows, as a colour, for Fragment::getSampleColor; black for what is no light.
    virtual Color getColorValue(const void* data) = 0;
};

}  // namespace Tarnkit
