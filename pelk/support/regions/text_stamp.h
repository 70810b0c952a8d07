#pragma once

#include <string_view>

#include "pelk/base/color.h"
#include "pelk/base/types.h"
#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

class ChannelBuffer;

// The stamp that shows which computer rendered which rectangle of a picture: when a region takes
// the block of another one, its channel of kAliasHostStamp is painted in a dark colour that the
// other computer's name decides, with the name on it in white.

/// Where the name stands on the stamp. Any other number is a layout too: upper left, cut at the
/// right edge.
enum StampMode : int {
    /// Upper right, one column from the edge, cut at the left edge: with tiles in rows, the
    /// beginning of a long name gives way and not what tells computers of a farm apart.
    kStampRight = 1,
    /// Upper left, wrapped to the width.
    kStampWrapped = 3,
};

/// The layout of the stamp on a channel. Offered by channel objects (RenderChannel) that want
/// another one than kStampRight; asked for when a block is taken, by the thread that does.
class StampModeInterface : public PluginInterface {
public:
    static constexpr InterfaceID<StampModeInterface> kInterfaceID{0x77CFD9C1, "EXT_STAMP_MODE"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Of StampMode.
    virtual int getStampMode() = 0;
};

/// A text as a bitmap in the font of stamp_font.h: one byte a cell, 0 for empty and 1 for ink, row
/// by row without gaps. `width` and `height` receive its size: at least 1 and 8, the height of one
/// line; further lines begin every 10 rows.
///
/// `maxWidth`: columns that the text may take, at least 7; a glyph that goes beyond begins a new
/// line. Words aren't kept together, and an empty row may remain below where a blank stood at the
/// end of a line. A bitmap of more than one line is as wide as it may be. `text` is read byte by
/// byte, up to its zero; null is empty. A byte without a glyph takes 5 empty columns.
///
/// The caller frees the result by freeMemory. Memory failure is an ExceptionMsg.
u8* renderText(const char* text, int& width, int& height, int maxWidth);

/// The colour of a computer: one hue for each name, fully saturated, of value 0.18, linear.
Color stampColor(std::string_view name);

/// Paints the first `width * height` pixels of a channel with the stamp of a computer. They are
/// rows of `width` pixels that begin with three floats; what else a pixel has, such as an alpha,
/// stays. `mode`: of StampMode.
void stampName(ChannelBuffer& pixels, int width, int height, const char* name, int mode);

}  // namespace Tarnkit
