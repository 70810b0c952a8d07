#pragma once

#include "pelk/base/api.h"
#include "pelk/base/color.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

class Fragment;

/// A colour transformation given by the caller.
class PELK_API ColorMapper {
public:
    virtual ~ColorMapper();
    virtual void mapColor(Color& out, const Color& in) = 0;
    /// Maps a pixel in place.
    virtual void mapPixel(Color& color, Color& alpha, int flag) = 0;
    virtual void beginMapping(int flag) = 0;
    virtual void endMapping(int flag) = 0;
    /// Not 0 if the background goes through the mapper together with the colour.
    virtual int mapsBackground() = 0;
};

/// The render channels of one hit. A channel is reached by its position or by its numeric alias;
/// unknown ones are ignored. Values are Colors, Vectors, floats or ints by the channel's type.
class PELK_API Fragment {
public:
    Fragment* nextFragment = nullptr;  ///< link of the chain of a FragmentList

    virtual ~Fragment();
    virtual int getTag() = 0;
    virtual void setTag(int value) = 0;
    virtual void addFragment(Fragment* other, const Color& weights, int mode) = 0;
    virtual void multiply(const Color& weights, int flag) = 0;
    virtual void setColor(const Color& color) = 0;
    virtual void getChannel(int index, void* out) = 0;
    virtual void setChannel(int index, const void* value) = 0;
    virtual void* getChannelPtr(int index) = 0;
    virtual void getAlias(int alias, void* out) = 0;
    virtual void addAlias(int alias, const void* value) = 0;
    virtual void* getAliasPtr(int alias) = 0;
    virtual int clear(int mode) = 0;
    virtual void applyColorMapper(ColorMapper* mapper, int mode) = 0;
    virtual AColor* getSampleColor(AColor* out) = 0;
};

/// Hands fragments out and takes them back.
class PELK_API FragmentManager : public PluginBase {
public:
    virtual Fragment* newFragment() = 0;
    virtual void deleteFragment(Fragment* fragment) = 0;
};

/// A chain of fragments and the manager that they come from.
struct PELK_API FragmentList {
    FragmentManager* manager = nullptr;
    Fragment* first = nullptr;

    /// The first fragment with this tag, else a new one at the tail. `found` tells which.
    Fragment* getFragment(int tag, bool* found = nullptr);
    /// A new fragment at the head.
    Fragment* addFront(int tag);
    Fragment* head() const { return first; }
    /// Adds each fragment of `other` to the one of the same tag here.
    void merge(const FragmentList& other, float weight);
    void multiplyAll(float weight);
    void setColorAll(const Color& color);
    void mapAll(ColorMapper* mapper, int mode);
    /// Gives every fragment back.
    void deleteAll();
    /// Gives every fragment back and forgets the manager.
    void end();
};

/// Types of the values of a channel.
enum ChannelType : int {
    kChannelNone = 0,
    kChannelFloat = 1,
    kChannelColor = 2,
    kChannelFloat2 = 3,
    kChannelInt = 4,
    kChannelVector = 5,
    kChannelAColor = 6,
};

/// Flags of a channel.
enum ChannelFlags : int {
    kChannelNoFragmentData = 0x1,
    kChannelNoBuffer = 0x2,
    kChannelNoColorMapping = 0x10,
};

/// The arithmetic of one channel: on its slot in a fragment, and on its pixels.
class PELK_API RenderChannel : public PluginBase {
public:
    /// Writes the start value into `count` pixels.
    virtual void fillPixels(void* pixels, int count) = 0;
    virtual void clearData(void* data, int mode) = 0;
    virtual void setValue(void* data, const void* value) = 0;
    /// Combines slot `src` into slot `dst`. `hasData`: `dst` has been written before.
    virtual void addData(void* dst, const void* src, const Color& weights, int hasData,
                         int mode) = 0;
    virtual void multiplyData(void* data, const Color& weights, int flag) = 0;
    virtual void setColorData(void* data, const Color& color) = 0;
    virtual void mapData(void* data, Fragment* fragment, ColorMapper* mapper, int mode) = 0;
    /// Writes one finished pixel. `pixel` is null for a channel that keeps its pixels elsewhere;
    /// `front` may be null.
    virtual void storePixel(int x, int y, void* pixel, Fragment* front, Fragment* total,
                            float weight, int channelIndex) = 0;
    virtual int getType() = 0;
    virtual int getAlias() = 0;
    virtual const char* getName() = 0;
    virtual int getFlags() = 0;
    virtual Color getColorValue(const void* data) = 0;
};

}  // namespace Tarnkit
