#pragma once

#include "pelk/base/api.h"

namespace Tarnkit {

/// The text of a CharString on the heap, shared by the strings that were copied from one another.
/// Nobody else makes or holds one. Its operations are virtual so that a string that passes from one
/// library to another is resized and freed by the code, and the heap, that made its buffer.
class PELK_API CharStringBuf {
public:
    /// A new buffer without text, which its one owner ends by `destroy`. Memory failure is an
    /// ExceptionMsg.
    static CharStringBuf* create();

    /// Makes the text exactly `size` bytes long, as much of the old one kept as fits, and returns
    /// it; 0 frees the text and returns null. Memory failure is an ExceptionMsg and changes
    /// nothing.
    virtual char* resize(int size);
    /// Frees the text and the object.
    virtual void destroy();

    char* text = nullptr;  ///< owned; terminated while a string holds the buffer
    int refCount = 1;      ///< strings that hold the buffer; not atomic

protected:
    CharStringBuf() = default;
    ~CharStringBuf() = default;
};

/// A text that copies cheaply: copies share one buffer until one of them changes (copy on write).
/// It is the string that crosses between libraries, in place of std::string, whose layout belongs
/// to a compiler's library. Bytes up to a terminating zero; the encoding is the owner's.
///
/// A string may be null, which is not the same as empty: its `c_str` is null and its `length` 0.
/// The count of sharers isn't atomic, so a string and its copies stay on one thread. Every
/// operation that changes the text may allocate; memory failure is an ExceptionMsg and leaves the
/// string as it was. The buffer always fits its text exactly, so building one by many appends costs
/// the square of its length: this is for names and messages. Nothing here is for use at a hit.
class PELK_API CharString {
public:
    /// A null string, without a buffer.
    CharString() = default;
    /// A copy of the text. Null gives a null string, an empty text an empty one. Not explicit: a
    /// literal goes wherever a string does.
    CharString(const char* text);
    /// Up to `length` characters, fewer if the text ends before. A length below 1 gives null.
    CharString(const char* text, int length);
    /// Shares the buffer; allocates nothing.
    CharString(const CharString& other);
    /// Leaves `other` null.
    CharString(CharString&& other) noexcept;
    ~CharString() { drop(); }

    /// Shares the buffer of `other` and lets go of its own; to itself it does nothing.
    CharString& operator=(const CharString& other);
    /// Exchanges the two, so `other` may keep the old text until it ends.
    CharString& operator=(CharString&& other) noexcept;
    /// Replaces the text by a copy. Null makes the string null. The text may stand in this very
    /// string, as in `s = s.c_str() + 3`.
    CharString& operator=(const char* text);

    /// Adds a copy at the end. Null adds nothing, and leaves a null string null. The text may stand
    /// in this very string.
    CharString& append(const CharString& other) { return append(other.c_str()); }
    CharString& append(const char* text);
    /// Up to `length` characters, fewer if the text ends before.
    CharString& append(const char* text, int length);

    /// Bytes before the terminator, counted anew at each call: linear. 0 for a null string.
    int length() const;
    /// The terminated text, null for a null string. Owned by the string; valid until it changes or
    /// ends, and not to be written to, for copies may share it.
    const char* c_str() const { return buffer ? buffer->text : nullptr; }

private:
    /// Makes the buffer this string's own, with room for `length` bytes and the terminator.
    void reserve(int length, bool keepText);
    /// The body of both appends that take a pointer; `length` is at most that of the text.
    void appendCounted(const char* text, int length);
    /// Whether `text` points into this string's buffer, which changing the text may free.
    bool holds(const char* text) const;
    void drop();

    CharStringBuf* buffer = nullptr;
};

}  // namespace Tarnkit
