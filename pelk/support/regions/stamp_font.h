#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <string_view>

#include "pelk/base/types.h"

namespace Tarnkit {

// The font of the text stamp, small enough to be legible on a tile and to need no file: 94 glyphs
// of 8 rows and 7 columns, one bit a cell, the last two rows for descenders.

/// A glyph: eight rows of one byte each, the top row in the highest byte. In a row bit 6 is the
/// leftmost column and bit 0 the rightmost; bit 7 is 0. A glyph of 0 is none.
using Glyph = u64;

inline constexpr int kGlyphRows = 8;
inline constexpr int kGlyphColumns = 7;
/// Columns without ink that a character without a glyph takes, the blank among them.
inline constexpr int kBlankColumns = 5;

/// The characters that have a glyph, in the order of kGlyphs.
inline constexpr std::string_view kGlyphCharacters =
    "0123456789+-."
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
    "`~!@#$%^&*()_=[{]};:'\",<>/?\\|";

// clang-format off
inline constexpr std::array<Glyph, 94> kGlyphs{
    0x3048585868300000, 0x2060202020700000, 0x3048083040780000, 0x3048100848300000,
    0x0818287808080000, 0x7840700848300000, 0x3040704848300000, 0x7808102020200000,
    0x3048304848300000, 0x3048483808300000,
    0x0010107C10100000, 0x0000007000000000, 0x0000000000200000,
    0x3048487848480000, 0x7048704848700000, 0x3048404048300000, 0x7048484848700000,
    0x7840604040780000, 0x7840604040400000, 0x3048405848380000, 0x4848784848480000,
    0x4040404040400000, 0x7010101050200000, 0x4850605048480000, 0x4040404040700000,
    0x446C545444440000, 0x446454544C440000, 0x3844444444380000, 0x7048487040400000,
    0x3844444454380400, 0x7048487050480000, 0x3840300808700000, 0x7C10101010100000,
    0x4848484848300000, 0x4444282810100000, 0x41412A2A14140000, 0x5050205050500000,
    0x4848380808700000, 0x7808102040780000,
    0x0060103050300000, 0x4040704848700000, 0x0000304040300000, 0x0808384848380000,
    0x0000304870403000, 0x1028207020200000, 0x0000384830205020, 0x4040605050500000,
    0x0040004040400000, 0x0020002020204000, 0x4040506050500000, 0x4040404040200000,
    0x0000526D49490000, 0x0000506848480000, 0x0000304848300000, 0x0000704848704040,
    0x0000304848380808, 0x0000704040400000, 0x0030403008300000, 0x4040604040200000,
    0x0000484848340000, 0x0000505020200000, 0x0000444454280000, 0x0000502020500000,
    0x0000503010106000, 0x0000701020700000,
    0x4020000000000000, 0x0000304906000000, 0x4040404000400000, 0x0038485448380000,
    0x00287C28287C2800, 0x00103C5038147810, 0x0062640813234000, 0x2050000000000000,
    0x0030483038586800, 0x107C280000000000, 0x2040404040200000, 0x4020202020400000,
    0x0000000000780000, 0x0000700070000000, 0x6040404040600000, 0x1020206020201000,
    0x6020202020600000, 0x4020203020204000, 0x0020000020400000, 0x0020000020000000,
    0x4040000000000000, 0x5050000000000000, 0x0000000000204000, 0x0010204020100000,
    0x0040201020400000, 0x0004081020400000, 0x3048101000100000, 0x0040201008040000,
    0x0040400040400000,
};
// clang-format on
static_assert(kGlyphCharacters.size() == kGlyphs.size());

/// The glyph of each byte; 0 without one.
inline constexpr std::array<Glyph, 256> kGlyphOfByte = [] {
    std::array<Glyph, 256> glyphs{};
    for (std::size_t i = 0; i < kGlyphs.size(); ++i)
        glyphs[static_cast<u8>(kGlyphCharacters[i])] = kGlyphs[i];
    return glyphs;
}();

/// Whether a cell has ink. `row`, `column`: from the upper left, 0 to 7 and 0 to 6.
constexpr bool hasInk(Glyph glyph, int row, int column) {
    return glyph >> (8 * (kGlyphRows - 1 - row) + kGlyphColumns - 1 - column) & 1;
}

/// Columns of a glyph up to the rightmost one with ink in any row; kBlankColumns without a glyph.
/// Glyphs begin at their leftmost column, so a text is proportional.
constexpr int glyphWidth(Glyph glyph) {
    if (glyph == 0)
        return kBlankColumns;
    Glyph rows = glyph | glyph >> 32;  // folded, the rows lie upon each other in the lowest byte
    rows |= rows >> 16;
    rows |= rows >> 8;
    return kGlyphColumns - std::countr_zero(static_cast<u8>(rows));
}

}  // namespace Tarnkit
