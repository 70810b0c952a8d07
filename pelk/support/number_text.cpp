#include "pelk/support/number_text.h"

#include <algorithm>
#include <clocale>
#include <cstring>
#include <string_view>

#include "pelk/base/text_or.h"
#include "pelk/support/bounded_format.h"

namespace Tarnkit {

namespace {

/// The digits of a number, at the right of a buffer that takes 64 of them.
class Digits {
public:
    Digits(std::uint64_t value, unsigned base) {
        do
            *--begin = "0123456789ABCDEF"[value % base];
        while (value /= base);
    }
    std::string_view get() const { return {begin, static_cast<std::size_t>(end() - begin)}; }

private:
    const char* end() const { return digits + sizeof digits; }

    char digits[64];
    char* begin = digits + sizeof digits;
};

std::uint64_t magnitude(std::int64_t value) {
    // As unsigned, since the smallest number has no positive counterpart.
    const auto bits = static_cast<std::uint64_t>(value);
    return value < 0 ? 0 - bits : bits;
}

/// Writes a text and its end, and returns the place of the end.
char* put(std::string_view text, char* buffer) {
    char* const end = std::copy(text.begin(), text.end(), buffer);
    *end = 0;
    return end;
}

}  // namespace

std::int64_t parseInt64(const char* text) {
    text = textOrEmpty(text);
    text += std::strspn(text, " \t\n\v\f\r");
    bool negative = *text == '-';
    text += negative ? 1 : 0;
    if (*text == '+') {
        negative = false;
        ++text;
    }
    std::uint64_t value = 0;  // unsigned numbers wrap without a fault
    for (; *text >= '0' && *text <= '9'; ++text)
        value = value * 10 + static_cast<std::uint64_t>(*text - '0');
    if (*text)
        return 0;
    return static_cast<std::int64_t>(negative ? 0 - value : value);
}

int parseInt(const char* text) {
    return static_cast<int>(parseInt64(text));
}

void int64ToText(std::int64_t value, char* buffer, int base, int size) {
    if (size < 1)
        return;
    buffer[0] = 0;
    if (base < 2 || base > 16 || size == 1)
        return;
    const Digits all(magnitude(value), static_cast<unsigned>(base));
    const bool hasSign = value < 0 && base == 10;
    const std::size_t room = static_cast<std::size_t>(size) - 1 - (hasSign ? 1 : 0);
    std::string_view digits = all.get();
    digits.remove_prefix(digits.size() - std::min(digits.size(), room));
    put(digits, put(hasSign ? "-" : "", buffer));
}

void intToText(int value, char* buffer, int base, int size) {
    int64ToText(value, buffer, base, size);
}

void toDecimalText(std::int64_t value, char* buffer) {
    put(Digits(magnitude(value), 10).get(), put(value < 0 ? "-" : "", buffer));
}

void toUnsignedDecimalText(std::uint64_t value, char* buffer) {
    put(Digits(value, 10).get(), buffer);
}

void toGroupedText(std::int64_t value, char* buffer) {
    const Digits all(magnitude(value), 10);
    buffer = put(value < 0 ? "-" : "", buffer);
    for (std::string_view rest = all.get(); !rest.empty();) {
        const std::size_t group = (rest.size() - 1) % 3 + 1;  // the first one may be short
        buffer = put(rest.substr(0, group), buffer);
        rest.remove_prefix(group);
        buffer = put(rest.empty() ? "" : ",", buffer);
    }
}

void localizeDecimal(const char* src, char* dst) {
    const std::size_t before = std::strcspn(src, ".,");
    dst = put({src, before}, dst);
    if (src[before])
        put(src + before + 1, put(std::localeconv()->decimal_point, dst));
}

int versionText(unsigned version, char* buffer, int size) {
    return boundedFormat(buffer, size, "%x.%02x.%02x", version >> 16 & 0xFF, version >> 8 & 0xFF,
                         version & 0xFF);
}

}  // namespace Tarnkit
