#include "pelk/support/utf.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

using namespace Tarnkit;

namespace {

using Bytes = std::string;
using Units = std::u16string;

void addPair(std::uint64_t value, Units& units) {
    units += static_cast<char16_t>((value >> 10) + 0xD7C0);
    units += static_cast<char16_t>((value & 0x3FF) + 0xDC00);
}

/// The bytes of the sequence at a place, and its value if it is valid, by lead byte and table.
bool readSequence(const Bytes& bytes, std::size_t at, std::size_t& length, std::uint64_t& value) {
    constexpr std::uint64_t kLargest[] = {127,      2047,       65535,     2097151,
                                          67108863, 2147483647, 4294967295};
    const auto lead = static_cast<std::uint8_t>(bytes[at]);
    std::size_t ones = 0;
    while (ones < 8 && lead & 0x80 >> ones)
        ++ones;
    value = lead & 0xFF >> (ones + 1);
    length = 1;
    if (ones == 0)
        return true;
    if (ones == 1)
        return false;
    for (; length < ones; ++length) {
        const auto next = at + length < bytes.size() ? static_cast<std::uint8_t>(bytes[at + length])
                                                     : std::uint8_t{0};
        if ((next & 0xC0) != 0x80)
            return false;
        value = value << 6 | (next & 0x3F);
    }
    return value > kLargest[ones - 2] && value >> 8 != 0x1000 && value < 0x110000;
}

/// The rules, one after the other.
Units slowUtf16(const Bytes& bytes) {
    Units units;
    for (std::size_t at = 0; at < bytes.size();) {
        std::size_t length, nextLength;
        std::uint64_t value, next;
        bool valid = readSequence(bytes, at, length, value);
        const std::size_t behind = at + length;
        if (valid && value >> 11 == 0x1B && behind < bytes.size() &&
            readSequence(bytes, behind, nextLength, next) && next >> 10 == 0x37)
            valid = false;
        if (valid && value < 0x10000)
            units += static_cast<char16_t>(value);
        else if (valid)
            addPair(value, units);
        for (std::size_t i = at; !valid && i < behind; ++i)
            addPair(0x100000 + static_cast<std::uint8_t>(bytes[i]), units);
        at = behind;
    }
    return units;
}

Units fastUtf16(const Bytes& bytes) {
    const std::size_t count = utf8ToUtf16(bytes.c_str(), nullptr, 0);
    Units units(count, u'\0');
    EXPECT_EQ(utf8ToUtf16(bytes.c_str(), units.data(), count), count);
    return units;
}

Bytes fromUtf16(const Units& units) {
    Bytes bytes(utf16ToUtf8(units.c_str(), nullptr, 0), '\0');
    EXPECT_EQ(utf16ToUtf8(units.c_str(), bytes.data(), bytes.size()), bytes.size());
    return bytes;
}

/// Pieces of text that are valid, nearly valid or not at all, in random order.
Bytes randomText(std::mt19937& random) {
    static std::istringstream list(
        "a plain_text_of_length \xc3\xa4 \xe2\x82\xac \xf0\x9f\x98\x80 \xed\xa0\x80 \xed\xaf\xbf "
        "\xed\xb0\x80 \xed\xbf\xbf \xf4\x80\x80\x80 \xf4\x80\x83\xbf \xf4\x80\x84\x80 \xc0\x80 "
        "\xf4\x8f\xbf\xbf \xf4\x90\x80\x80 \xe0\x9f\xbf \xf0\x8f\xbf\xbf \xf8\x88\x80\x80\x80 "
        "\xfe \xff \xe2\x82");
    static const std::vector<Bytes> pieces(std::istream_iterator<Bytes>(list), {});
    Bytes text;
    for (unsigned count = random() % 12; count > 0; --count) {
        if (random() % 3 == 0)
            text += static_cast<char>(random() % 255 + 1);
        else
            text += pieces[random() % pieces.size()];
    }
    return text;
}

}  // namespace

TEST(UtfTest, RandomBytesGoByTheRulesAndComeBack) {
    std::mt19937 random(7);
    for (int i = 0; i < 200000; ++i) {
        const Bytes bytes = randomText(random);
        const Units units = fastUtf16(bytes);
        ASSERT_EQ(units, slowUtf16(bytes)) << testing::PrintToString(bytes);
        ASSERT_EQ(fromUtf16(units), bytes) << testing::PrintToString(units);
    }
    EXPECT_EQ(fastUtf16("\xff\x41"), (Units{0xDBC0, 0xDCFF, 0x41}));
    // (0xDFFF - 0xD7C0) << 10 | 0x3FF takes five bytes.
    EXPECT_EQ(fromUtf16({0xDFFF, 0xDFFF}), "\xf8\x88\x8f\xbf\xbf");
}

TEST(UtfTest, OutputEndsAtAWholeCharacter) {
    const Bytes bytes = "sixteen ASCII by\xf0\x9f\x98\x80tes and more and more\xff";
    const Units all = fastUtf16(bytes);
    for (std::size_t size = 0; size <= all.size() + 1; ++size) {
        Units out(size + 1, u'~');
        const std::size_t count = utf8ToUtf16(bytes.c_str(), out.data(), size);
        const bool splits = size > 0 && size < all.size() && (all[size - 1] & 0xFC00) == 0xD800;
        EXPECT_EQ(count, std::min(all.size(), splits ? size - 1 : size));
        EXPECT_EQ(out.substr(0, count), all.substr(0, count));
        EXPECT_EQ(out[count], count < size ? u'\0' : u'~');
        EXPECT_EQ(out[size], size == count ? u'~' : out[size]);
    }
    char out[] = "~~~~~";
    EXPECT_EQ(utf16ToUtf8(u"a\u20ac", out, 3), 1u);
    EXPECT_STREQ(out, "a");
    EXPECT_EQ(utf16ToUtf8(u"a\u20ac", out, 4), 4u) << "no room for the end";
    EXPECT_STREQ(out, "a\xe2\x82\xac~");
}
