#pragma once

#include "pelk/base/api.h"
#include "pelk/base/char_string.h"

namespace Tarnkit {

/// One error of an ErrorChain. Records are made and freed by the chain alone. A record may be the
/// tail of several chains, so it isn't changed once it stands.
struct ErrorRecord {
    const char* where = nullptr;  ///< who met the error, as a literal: not copied; may be null
    char text[512] = {};          ///< what went wrong; cut to fit, always terminated
    int code = 0;                 ///< the meaning is that of whoever made the record
    ErrorRecord* next = nullptr;  ///< the error that led to this one; null for the first of all
    int refCount = 1;             ///< chains and records that point here
};

/// A result that says what went wrong, and what led to it: support code returns one where a number
/// or null would not tell the user enough. The record in front is the latest: a reader says "bad
/// header", the loader that called it puts "no such picture" in front. No record means no error.
///
///     ErrorChain error = readHeader(file);
///     if (error.isError()) {
///         error.addError("loader", 2, "can't read %s", name);
///         return error;
///     }
///
/// A chain is one pointer, and copies share their records: returning and keeping one is cheap. The
/// count of sharers isn't atomic, so a chain and its copies stay on one thread. Making a record
/// allocates; if memory fails that is an ExceptionMsg and the chain stands as before. An empty
/// chain, the good case, allocates nothing.
class PELK_API ErrorChain {
public:
    /// No error.
    ErrorChain() = default;
    /// Shares the records of `other`; putting one in front of either doesn't show in the other.
    ErrorChain(const ErrorChain& other);
    /// Leaves `other` without an error.
    ErrorChain(ErrorChain&& other) noexcept;
    ErrorChain& operator=(ErrorChain other) noexcept;
    /// Frees the records that no other chain shares.
    ~ErrorChain();

    /// A chain of one record. `where`: name of the function or part that met the error, null to
    /// leave it out; it isn't copied, so it must outlive every chain with this record. `code`: any
    /// number, but 0 reads as "no error" in getErrorText. `format`: as for printf; null gives an
    /// empty text. Text beyond 511 characters is cut.
    static ErrorChain makeError(const char* where, int code, const char* format, ...)
        __attribute__((format(printf, 3, 4)));
    /// Puts such a record in front of this chain: the error that followed from those in it.
    void addError(const char* where, int code, const char* format, ...)
        __attribute__((format(printf, 4, 5)));

    /// True if there is a record, whatever its code.
    bool isError() const { return head != nullptr; }
    /// The code of the record at a place, counted from 0 for the latest; 0 before and beyond the
    /// chain. Linear in `index`.
    int getCode(int index) const;
    /// English words for one of the codes 0 to 7 that readers and writers of image files use;
    /// "unknown error" for others, as codes are otherwise their makers' own. A literal: valid for
    /// good.
    static const char* getErrorText(int code);
    /// The same for the code of the latest record; "no error" if there is none.
    const char* getFirstErrorText() const { return getErrorText(getCode(0)); }

    /// The text of the record at a place, counted as for `getCode`; empty beyond the chain, never
    /// null. Valid as long as some chain holds the record.
    const char* getRecordText(int index) const;

    /// The whole chain, as in "[loader] no such file | [reader] bad header"; "No error" if empty.
    /// A new text, which memory failure refuses by an ExceptionMsg.
    CharString getText() const;
    /// The same without allocation, cut at `size` - 1 characters and terminated. A size below 1
    /// writes nothing.
    void getText(char* buffer, int size) const;

private:
    const ErrorRecord* recordAt(int index) const;

    ErrorRecord* head = nullptr;
};

}  // namespace Tarnkit
