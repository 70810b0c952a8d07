#include "pelk/support/message_text.h"

#include <cstddef>
#include <cstdio>

namespace Tarnkit {

namespace {

constexpr std::size_t kLongestStart = 600, kLongestEnd = 400;

/// Whether a byte is one of a character's but not its first.
bool isInsideCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

std::string shortened(std::string_view text) {
    constexpr int kMostSteps = 3;  // a character has up to 4 bytes; what is no UTF-8 has no end
    if (text.size() <= kLongestStart + kLongestEnd)
        return std::string(text);
    std::size_t start = kLongestStart, end = text.size() - kLongestEnd;
    for (int i = 0; i < kMostSteps && isInsideCharacter(text[start]); ++i)
        --start;
    for (int i = 0; i < kMostSteps && isInsideCharacter(text[end]); ++i)
        ++end;
    return std::string(text.substr(0, start)) + " [...] " + std::string(text.substr(end));
}

void addEscaped(std::string& out, unsigned code) {
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\x%02x", code);
    out += code == '\n' ? "\\n" : code == '\r' ? "\\r" : code == '\t' ? "\\t" : escape;
}

}  // namespace

std::string messageText(std::string_view text) {
    const std::string whole = shortened(text);
    std::string out;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        const unsigned byte = static_cast<unsigned char>(whole[i]);
        const unsigned next = i + 1 < whole.size() ? static_cast<unsigned char>(whole[i + 1]) : 0;
        // U+0080 to U+009F, which some terminals obey, are the two bytes C2 80 to C2 9F.
        if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
            addEscaped(out, next);
            ++i;
        } else if (byte < 0x20 || byte == 0x7F) {
            addEscaped(out, byte);
        } else {
            out += whole[i];
        }
    }
    return out;
}

}  // namespace Tarnkit
