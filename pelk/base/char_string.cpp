#include "pelk/base/char_string.h"

#include <climits>
#include <cstring>
#include <functional>
#include <new>
#include <utility>

#include "pelk/base/memory.h"
#include "pelk/platform/heap.h"

namespace Tarnkit {

namespace {

int textLength(const char* text) {
    const std::size_t length = std::strlen(text);
    if (length >= INT_MAX)
        allocationFailed(length);
    return static_cast<int>(length);
}

/// Characters of `text` before its end, at most `length`.
int boundedLength(const char* text, int length) {
    return text && length > 0 ? static_cast<int>(strnlen(text, length)) : 0;
}

}  // namespace

CharStringBuf* CharStringBuf::create() {
    return new (allocate(sizeof(CharStringBuf))) CharStringBuf;
}

char* CharStringBuf::resize(int size) {
    if (size == 0) {
        freeMemory(text);
        return text = nullptr;
    }
    void* resized = platform::heap().reallocate(text, size);
    if (!resized)
        allocationFailed(size);
    return text = static_cast<char*>(resized);
}

void CharStringBuf::destroy() {
    freeMemory(text);
    freeMemory(this);
}

CharString::CharString(const char* text) {
    if (text)
        appendCounted(text, textLength(text));
}

CharString::CharString(const char* text, int length) {
    if (text && length > 0)
        appendCounted(text, boundedLength(text, length));
}

CharString::CharString(const CharString& other) : buffer(other.buffer) {
    if (buffer)
        ++buffer->refCount;
}

CharString::CharString(CharString&& other) noexcept
    : buffer(std::exchange(other.buffer, nullptr)) {}

CharString& CharString::operator=(const CharString& other) {
    return *this = CharString(other);
}

CharString& CharString::operator=(CharString&& other) noexcept {
    std::swap(buffer, other.buffer);
    return *this;
}

CharString& CharString::operator=(const char* text) {
    if (!text) {
        drop();
        return *this;
    }
    if (text == c_str())
        return *this;
    if (holds(text))
        return *this = CharString(text);  // resizing would cut the text before it is read
    const int length = textLength(text);
    reserve(length, false);
    std::memcpy(buffer->text, text, length + 1);
    return *this;
}

CharString& CharString::append(const char* text) {
    if (text)
        appendCounted(text, textLength(text));
    return *this;
}

CharString& CharString::append(const char* text, int length) {
    if (text && length > 0)
        appendCounted(text, boundedLength(text, length));
    return *this;
}

int CharString::length() const {
    return buffer ? static_cast<int>(std::strlen(buffer->text)) : 0;
}

/// Makes the buffer this string's alone (the copy of copy on write), with room for `length` bytes
/// and the terminator.
void CharString::reserve(int length, bool keepText) {
    if (buffer && buffer->refCount < 2) {
        buffer->resize(length + 1);
        return;
    }
    CharString fresh;
    fresh.buffer = CharStringBuf::create();
    fresh.buffer->resize(length + 1)[0] = 0;
    if (buffer && keepText)
        std::strncpy(fresh.buffer->text, buffer->text, length);
    std::swap(buffer, fresh.buffer);
}

void CharString::appendCounted(const char* text, int added) {
    // If `text` stands in our own buffer, resizing would free it before it is copied. A second hold
    // on the buffer for the length of the call makes reserve() take a new one instead.
    const CharString source = holds(text) ? *this : CharString();
    const int old = length();
    if (added > INT_MAX - 1 - old)
        allocationFailed(static_cast<std::size_t>(old) + added);
    reserve(old + added, true);
    std::memcpy(buffer->text + old, text, added);
    buffer->text[old + added] = 0;
}

bool CharString::holds(const char* text) const {
    // std::less compares pointers into different objects too.
    const std::less<const char*> before;
    return buffer && !before(text, buffer->text) && !before(buffer->text + length(), text);
}

void CharString::drop() {
    if (buffer && --buffer->refCount == 0)
        buffer->destroy();
    buffer = nullptr;
}

}  // namespace Tarnkit
