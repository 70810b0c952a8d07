#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace Tarnkit {

/// Puts a text together in a caller's buffer: what does not fit is dropped at the end, and the text
/// is terminated after every call. For the functions that take a buffer and its size.
class BoundedText {
public:
    /// `size`: bytes of `buffer`, with a size below 1 nothing is ever written. The text begins
    /// with the first `length` bytes that stand there, which must be below `size`.
    BoundedText(char* buffer_, int size, std::size_t length_ = 0)
        : buffer(buffer_), room(size > 0 ? static_cast<std::size_t>(size) : 0), length(length_) {
        terminate();
    }

    /// Adds as much of `text` as fits. It may stand behind the text inside the same buffer.
    void append(std::string_view text) {
        if (length + 1 >= room)
            return;
        const std::size_t count = text.size() < room - 1 - length ? text.size() : room - 1 - length;
        if (count > 0)
            std::memmove(buffer + length, text.data(), count);
        length += count;
        terminate();
    }

private:
    void terminate() {
        if (length < room)
            buffer[length] = 0;
    }

    char* buffer;
    std::size_t room;
    std::size_t length;
};

}  // namespace Tarnkit
