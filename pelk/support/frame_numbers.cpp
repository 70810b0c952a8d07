#include "pelk/support/frame_numbers.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "pelk/base/text_or.h"
#include "pelk/support/bounded_text.h"

namespace Tarnkit {

namespace {

constexpr int kLargestWidth = 12;
constexpr std::string_view kLetters = "dDiIuU";
constexpr std::string_view kWord = "<frame";

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// How a placeholder wants its number, and the characters that it takes up; 0 for none.
struct Placeholder {
    bool zeros = false;
    int width = 0;  ///< 0 is none
    bool isUnsigned = false;
    std::size_t length = 0;
};

/// Reads the flag and the width at `at`, and moves on behind them.
void readWidth(std::string_view text, std::size_t& at, Placeholder& found) {
    found.zeros = at < text.size() && text[at] == '0';
    if (found.zeros)
        ++at;
    for (; at < text.size() && isDigit(text[at]); ++at)
        found.width = std::min(found.width * 10 + (text[at] - '0'), kLargestWidth);
}

/// The placeholder at the start of a text that begins with `%`, or with kWord.
Placeholder readPlaceholder(std::string_view text) {
    Placeholder found;
    const bool percent = text[0] == '%';
    std::size_t at = percent ? 1 : kWord.size();
    readWidth(text, at, found);
    const std::string_view ends = percent ? kLetters : ">";
    if (at == text.size() || ends.find(text[at]) == ends.npos)
        return {};
    found.isUnsigned = text[at] == 'u' || text[at] == 'U';
    found.length = at + 1;
    return found;
}

/// A number in at least `places` places, filled with zeros behind its sign.
std::string fillWithZeros(bool negative, const std::string& digits, std::size_t places) {
    const std::size_t needed = digits.size() + (negative ? 1 : 0);
    std::string number(negative ? 1 : 0, '-');
    number.append(places - std::min(places, needed), '0').append(digits);
    return number;
}

/// The number without its sign.
std::string digitsOf(int frame) {
    return std::to_string(frame).substr(frame < 0 ? 1 : 0);
}

std::string formatFrame(const Placeholder& form, int frame) {
    const bool negative = frame < 0 && !form.isUnsigned;
    std::string digits =
        form.isUnsigned ? std::to_string(static_cast<unsigned>(frame)) : digitsOf(frame);
    const auto width = static_cast<std::size_t>(form.width);
    if (width > 0) {
        const std::size_t places = width - (negative ? 1 : 0);
        digits.erase(0, digits.size() - std::min(digits.size(), places));
    }
    std::string number = fillWithZeros(negative, digits, form.zeros ? width : 0);
    if (number.size() < width)
        number.insert(0, width - number.size(), ' ');
    return number;
}

/// Where the extension of a name begins; its length if it has none.
std::size_t extensionStart(std::string_view name) {
    const std::size_t at = name.find_last_of("./\\");
    return at != name.npos && at > 0 && name[at] == '.' ? at : name.size();
}

}  // namespace

CharString expandFrameNumber(const char* pattern, int frame) {
    const std::string_view text = textOrEmpty(pattern);
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view rest = text.substr(at);
        const bool mayStart = rest[0] == '%' || rest.starts_with(kWord);
        const Placeholder found = mayStart ? readPlaceholder(rest) : Placeholder();
        // A pair of percents is one piece of text, and so is a foreign `<` with its neighbour.
        const bool isPair = rest.starts_with("%%") || (rest[0] == '<' && !mayStart);
        if (found.length > 0)
            result += formatFrame(found, frame);
        else
            result += rest.substr(0, isPair ? 2 : 1);
        at += found.length > 0 ? found.length : isPair ? 2 : 1;
    }
    return result.c_str();
}

CharString convertFrameFormat(const char* pattern) {
    const std::string_view text = textOrEmpty(pattern);
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = at + 1;
        while (text[at] == '%' && end < text.size() && isDigit(text[end]))
            ++end;
        if (text[at] == '%' && end < text.size() && kLetters.find(text[end]) != kLetters.npos) {
            result.append(kWord).append(text.substr(at + 1, end - at - 1)).append(">");
            ++end;
        } else {
            result += text.substr(at, end - at);
        }
        at = end;
    }
    return result.c_str();
}

void insertFrameNumber(const char* name, int digits, int frame, char* out, int outSize,
                       bool addDot) {
    if (!out)
        return;
    const std::string_view text = textOrEmpty(name);
    std::string number;
    if (name && digits >= 1) {
        // With so many zeros in front no digit is left in `out`: more would not be seen.
        const auto limit = static_cast<std::size_t>(std::max(outSize, 0)) + kLargestWidth;
        const std::size_t places = std::min(static_cast<std::size_t>(digits), limit);
        number = fillWithZeros(frame < 0, digitsOf(frame), places);
        if (text.find('#') == text.npos)
            return insertBeforeExtension(name, number.c_str(), out, outSize, addDot);
    }
    BoundedText result(out, outSize);
    for (std::size_t i = 0; i < text.size(); ++i)
        result.append(text[i] == '#' ? std::string_view(number) : text.substr(i, 1));
}

void insertBeforeExtension(const char* name, const char* text, char* out, int outSize,
                           bool addDot) {
    if (!out)
        return;
    const std::string_view whole = textOrEmpty(name);
    const std::size_t at = extensionStart(whole);
    const std::string_view stem = whole.substr(0, at);
    BoundedText result(out, outSize);
    result.append(stem);
    if (addDot && at < whole.size() && !stem.ends_with('.'))
        result.append(".");
    result.append(textOrEmpty(text));
    result.append(whole.substr(at));
}

}  // namespace Tarnkit
