#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Tarnkit {

/// 128 bits that stand for some content: equal for equal content, and different for any other that
/// chance ever brings about. No protection against somebody who makes two contents agree.
struct ContentDigest {
    std::uint64_t low = 0, high = 0;

    auto operator<=>(const ContentDigest&) const = default;
    /// 32 hexadecimal digits.
    std::string toText() const;
};

/// The digest of a stream of bytes, added piece by piece in constant memory: XXH3 with 128 bits,
/// which runs as fast as memory does. The cut into pieces doesn't matter, so whoever adds several
/// things one after the other uses addText, which keeps them apart. For one thread.
class ContentHash {
public:
    ContentHash();
    ~ContentHash();
    ContentHash(const ContentHash&) = delete;
    ContentHash& operator=(const ContentHash&) = delete;

    void add(const void* data, std::size_t size);
    /// Adds the length and the text, so that "ab", "c" is something else than "a", "bc".
    void addText(std::string_view text);
    void addNumber(std::uint64_t number);

    /// Of all that was added so far. More may follow.
    ContentDigest digest() const;
    /// 64 bits for what needs no more, such as the check sum of a file.
    std::uint64_t checksum() const { return digest().low; }
    /// Forgets all.
    void restart();

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace Tarnkit
