#pragma once

#include "pelk/base/api.h"
#include "pelk/base/char_string.h"

namespace Tarnkit {

/// One error of an ErrorChain.
struct ErrorRecord {
    const char* where = nullptr;  ///< who met the error; not copied, may be null
    char text[512] = {};          ///< always terminated
    int code = 0;
    ErrorRecord* next = nullptr;  ///< the error that led to this one
    int refCount = 1;
};

/// What went wrong and what led to it, the latest first; no record means no error. Copies share
/// their records by a count that isn't atomic, so they stay on one thread.
class PELK_API ErrorChain {
public:
    ErrorChain() = default;
    ErrorChain(const ErrorChain& other);
    ErrorChain(ErrorChain&& other) noexcept;
    ErrorChain& operator=(ErrorChain other) noexcept;
    ~ErrorChain();

    /// A chain of one record. `where` must outlive it; a null format gives an empty text; text
    /// beyond 511 characters is cut.
    static ErrorChain makeError(const char* where, int code, const char* format, ...)
        __attribute__((format(printf, 3, 4)));
    /// Puts such a record in front of this chain.
    void addError(const char* where, int code, const char* format, ...)
        __attribute__((format(printf, 4, 5)));

    bool isError() const { return head != nullptr; }
    /// The code of the record at a place, counted from 0 for the latest; 0 beyond the chain.
    int getCode(int index) const;
    /// The words for one of the codes that readers and writers of images use.
    static const char* getErrorText(int code);
    /// The words for the code of the latest record.
    const char* getFirstErrorText() const { return getErrorText(getCode(0)); }

    /// The text of the record at a place, counted as for `getCode`; empty beyond the chain.
    const char* getRecordText(int index) const;

    /// The whole chain, as in "[loader] no such file | [reader] bad header"; "No error" if empty.
    CharString getText() const;
    /// The same, cut at `size` - 1 characters and terminated. A size below 1 writes nothing.
    void getText(char* buffer, int size) const;

private:
    const ErrorRecord* recordAt(int index) const;

    ErrorRecord* head = nullptr;
};

}  // namespace Tarnkit
