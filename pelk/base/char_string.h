#pragma once

#include "pelk/base/api.h"

namespace Tarnkit {

/// A text on the heap, shared by the strings that were copied from one another.
class PELK_API CharStringBuf {
public:
    /// A new buffer without text.
    static CharStringBuf* create();

    /// Makes the text exactly `size` bytes long, as much of the old one kept as fits, and returns
    /// it; 0 frees the text and returns null. Memory failure is an ExceptionMsg and changes
    /// nothing.
    virtual char* resize(int size);
    /// Frees the text and the object.
    virtual void destroy();

    char* text = nullptr;
    int refCount = 1;

protected:
    CharStringBuf() = default;
    ~CharStringBuf() = default;
};

/// A text that copies cheaply: copies share one buffer until one of them changes. A string may
/// be null, which is not the same as empty. The count of sharers isn't atomic, so a string and
/// its copies stay on one thread.
class PELK_API CharString {
public:
    CharString() = default;
    /// Null gives a null string, an empty text an empty one.
    CharString(const char* text);
    /// Up to `length` characters, fewer if the text ends before. A length below 1 gives null.
    CharString(const char* text, int length);
    CharString(const CharString& other);
    CharString(CharString&& other) noexcept;
    ~CharString() { drop(); }

    CharString& operator=(const CharString& other);
    CharString& operator=(CharString&& other) noexcept;
    /// Null clears. The text may stand in this very string.
    CharString& operator=(const char* text);

    /// Null adds nothing. The text may stand in this very string.
    CharString& append(const CharString& other) { return append(other.c_str()); }
    CharString& append(const char* text);
    CharString& append(const char* text, int length);

    /// Characters before the terminator, counted anew at each call; 0 for a null string.
    int length() const;
    /// The terminated text, null for a null string. Valid until the string changes.
    const char* c_str() const { return buffer ? buffer->text : nullptr; }

private:
    void reserve(int length, bool keepText);
    void appendCounted(const char* text, int length);
    bool holds(const char* text) const;
    void drop();

    CharStringBuf* buffer = nullptr;
};

}  // namespace Tarnkit
