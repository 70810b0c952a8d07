// UTF-8 to UTF-16 and back: nothing is lost, whatever the bytes.

#include "pelk/support/utf.h"

#include "fuzz/fuzz_input.h"

using namespace Tarnkit;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const auto room = static_cast<std::size_t>(input.between(1, 255));
    const std::vector<std::uint8_t> rest = input.rest();
    const std::string text(rest.begin(), std::find(rest.begin(), rest.end(), 0));

    const std::size_t count = utf8ToUtf16(text.c_str(), nullptr, 0);
    std::vector<char16_t> units(count + 1, u'x');
    require(utf8ToUtf16(text.c_str(), units.data(), units.size()) == count,
            "counts what it writes");
    require(units[count] == 0, "terminated");
    std::string back(utf16ToUtf8(units.data(), nullptr, 0) + 1, 'x');
    utf16ToUtf8(units.data(), back.data(), back.size());
    require(back == text + '\0', "bytes come back as they were");

    std::vector<char16_t> cut(room, u'x');
    const std::size_t written = utf8ToUtf16(text.c_str(), cut.data(), room);
    require(written <= room, "no more than there is room for");
    require(
        std::equal(cut.begin(), cut.begin() + static_cast<std::ptrdiff_t>(written), units.begin()),
        "what fits is the beginning");

    // Any units at all, which need not be anybody's text.
    std::vector<char16_t> wild(rest.size() / 2 + 1, 0);
    if (!rest.empty())
        std::memcpy(wild.data(), rest.data(), rest.size() / 2 * 2);
    std::vector<char> narrow(utf16ToUtf8(wild.data(), nullptr, 0));
    require(utf16ToUtf8(wild.data(), narrow.data(), narrow.size()) == narrow.size(), "counts");
    return 0;
}
