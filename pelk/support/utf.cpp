#include "pelk/support/utf.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>

namespace Tarnkit {

namespace {

/// Stands for byte 0 of what is no UTF-8; the other bytes follow.
constexpr char32_t kFirstByteCode = 0x100000;
constexpr std::uint64_t kHighBits = 0x8080808080808080;

using Bytes = std::uint8_t __attribute__((vector_size(16)));
using Units = char16_t __attribute__((vector_size(32)));

/// One character: its value, and the bytes that it was read from.
struct Decoded {
    char32_t value;
    unsigned length;
};

bool isContinuation(std::uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

/// Whether a low surrogate stands here, encoded in three bytes.
bool startsLowSurrogate(const std::uint8_t* at) {
    return at[0] == 0xED && at[1] >= 0xB0 && at[1] <= 0xBF && isContinuation(at[2]);
}

/// The character that begins with a byte above 0x7F. Reads no byte behind a zero. An invalid
/// sequence gives its first byte alone: those behind it are strays and come out alike.
Decoded decode(const std::uint8_t* at) {
    const std::uint8_t lead = at[0];
    if (lead >= 0xC2 && lead < 0xE0 && isContinuation(at[1]))
        return {(lead & 0x1Fu) << 6 | (at[1] & 0x3Fu), 2};
    if ((lead & 0xF0) == 0xE0 && isContinuation(at[1]) && isContinuation(at[2])) {
        const char32_t value = (lead & 0x0Fu) << 12 | (at[1] & 0x3Fu) << 6 | (at[2] & 0x3Fu);
        const bool isSurrogate = (value & 0xF800) == 0xD800;
        if (value > 0x7FF && !(isSurrogate && startsLowSurrogate(at + 3)))
            return {value, 3};
    } else if (lead >= 0xF0 && lead < 0xF5 && isContinuation(at[1]) && isContinuation(at[2]) &&
               isContinuation(at[3])) {
        const char32_t value =
            (lead & 0x07u) << 18 | (at[1] & 0x3Fu) << 12 | (at[2] & 0x3Fu) << 6 | (at[3] & 0x3Fu);
        if (value > 0xFFFF && value < 0x110000 && value >> 8 != kFirstByteCode >> 8)
            return {value, 4};
    }
    return {kFirstByteCode + lead, 1};
}

/// How many bytes of a word that is read from memory are ASCII before the first that isn't.
int leadingAscii(std::uint64_t word) {
    const std::uint64_t others = word & kHighBits;
    return (std::endian::native == std::endian::little ? std::countr_zero(others)
                                                       : std::countl_zero(others)) /
           8;
}

/// A text on its way to UTF-16.
struct Utf16Writer {
    const std::uint8_t* at;
    const std::uint8_t* end;
    char16_t* out;
    char16_t* outEnd;
};

/// Units that the loops below may write at once, and bytes that they may read.
constexpr std::ptrdiff_t kBlock = 16;

bool hasBlock(const Utf16Writer& to) {
    return to.end - to.at >= kBlock && to.outEnd - to.out >= kBlock;
}

/// Takes ASCII in blocks. What is written behind the ASCII of a block is overwritten by what
/// follows.
void takeAscii(Utf16Writer& to) {
    while (hasBlock(to) && *to.at < 0x80) {
        std::uint64_t words[2];
        Bytes block;
        std::memcpy(&block, to.at, sizeof block);
        std::memcpy(words, to.at, sizeof words);
        const Units units = __builtin_convertvector(block, Units);
        std::memcpy(to.out, &units, sizeof units);
        const int first = leadingAscii(words[0]);
        const int count = first < 8 ? first : 8 + leadingAscii(words[1]);
        to.at += count;
        to.out += count;
        if (count < kBlock)
            return;
    }
}

/// Takes characters of two bytes, as long as they are valid: most alphabets.
void takePairs(Utf16Writer& to) {
    while (hasBlock(to) && to.at[0] >= 0xC2 && to.at[0] < 0xE0 && isContinuation(to.at[1])) {
        *to.out++ = static_cast<char16_t>((to.at[0] & 0x1F) << 6 | (to.at[1] & 0x3F));
        to.at += 2;
    }
}

/// Takes characters of three bytes, as long as they are valid and far from the surrogates.
void takeTriples(Utf16Writer& to) {
    while (hasBlock(to) && to.at[0] > 0xE0 && to.at[0] < 0xED && isContinuation(to.at[1]) &&
           isContinuation(to.at[2])) {
        *to.out++ = static_cast<char16_t>((to.at[0] & 0x0F) << 12 | (to.at[1] & 0x3F) << 6 |
                                          (to.at[2] & 0x3F));
        to.at += 3;
    }
}

/// Takes one character of any kind. False, with nothing taken, if it does not fit.
bool takeOne(Utf16Writer& to) {
    const Decoded next = *to.at < 0x80 ? Decoded{*to.at, 1} : decode(to.at);
    const bool isPair = next.value > 0xFFFF;
    if (to.outEnd - to.out < (isPair ? 2 : 1))
        return false;
    if (isPair) {
        *to.out++ = static_cast<char16_t>((next.value >> 10) + 0xD7C0);
        *to.out++ = static_cast<char16_t>((next.value & 0x3FF) + 0xDC00);
    } else {
        *to.out++ = static_cast<char16_t>(next.value);
    }
    to.at += next.length;
    return true;
}

std::size_t countUnits(const std::uint8_t* at) {
    std::size_t units = 0;
    while (*at) {
        const Decoded next = *at < 0x80 ? Decoded{*at, 1} : decode(at);
        units += next.value > 0xFFFF ? 2 : 1;
        at += next.length;
    }
    return units;
}

/// The character at the start of a UTF-16 text, of one or two units.
Decoded decode(const char16_t* at) {
    const bool isPair = at[0] >= 0xD800 && at[0] <= 0xDFFF && at[1] >= 0xDC00 && at[1] <= 0xDFFF;
    if (!isPair)
        return {at[0], 1};
    return {(char32_t{at[0]} - 0xD7C0) << 10 | (at[1] & 0x3FFu), 2};
}

/// Writes one character and returns the number of its bytes.
int encode(char32_t value, char (&bytes)[5]) {
    if (value < 0x80 || value >> 8 == kFirstByteCode >> 8) {
        bytes[0] = static_cast<char>(value);
        return 1;
    }
    const int length = value < 0x800 ? 2 : value < 0x10000 ? 3 : value < 0x200000 ? 4 : 5;
    for (int i = length - 1; i > 0; --i, value >>= 6)
        bytes[i] = static_cast<char>(0x80 | (value & 0x3F));
    // As many leading ones as there are bytes, a zero, and the bits that are left.
    bytes[0] = static_cast<char>(0xFF00u >> length | value);
    return length;
}

}  // namespace

std::size_t utf8ToUtf16(const char* src, char16_t* dst, std::size_t dstSize) {
    const auto* const text = reinterpret_cast<const std::uint8_t*>(src);
    if (!dst)
        return countUnits(text);
    Utf16Writer writer{text, text + std::strlen(src), dst, dst + dstSize};
    do {
        takeAscii(writer);
        takePairs(writer);
        takeTriples(writer);
    } while (writer.at < writer.end && takeOne(writer));
    if (writer.out < writer.outEnd)
        *writer.out = 0;
    return static_cast<std::size_t>(writer.out - dst);
}

std::size_t utf16ToUtf8(const char16_t* src, char* dst, std::size_t dstSize) {
    std::size_t written = 0;
    while (*src) {
        const Decoded next = decode(src);
        char bytes[5];
        const auto length = static_cast<std::size_t>(encode(next.value, bytes));
        if (dst && length > dstSize - written)
            break;
        if (dst)
            std::memcpy(dst + written, bytes, length);
        written += length;
        src += next.length;
    }
    if (dst && written < dstSize)
        dst[written] = 0;
    return written;
}

}  // namespace Tarnkit
