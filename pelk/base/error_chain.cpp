#include "pelk/base/error_chain.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <new>
#include <utility>

#include "pelk/base/memory.h"

namespace Tarnkit {

namespace {

ErrorRecord* newRecord(const char* where, int code, const char* format, va_list arguments) {
    auto* record = ::new (allocate(sizeof(ErrorRecord))) ErrorRecord;
    record->where = where;
    record->code = code;
    if (format)
        std::vsnprintf(record->text, sizeof record->text, format, arguments);
    return record;
}

/// Calls `write` with each piece of a chain's text in turn, so that the form of the text stands in
/// one place for both kinds of target.
template <class Write>
void writeChain(const ErrorRecord* head, Write write) {
    if (!head)
        write("No error");
    for (const ErrorRecord* record = head; record; record = record->next) {
        if (record != head)
            write(" | ");
        if (record->where) {
            write("[");
            write(record->where);
            write("] ");
        }
        write(record->text);
    }
}

}  // namespace

ErrorChain::ErrorChain(const ErrorChain& other) : head(other.head) {
    if (head)
        ++head->refCount;
}

ErrorChain::ErrorChain(ErrorChain&& other) noexcept : head(std::exchange(other.head, nullptr)) {}

ErrorChain& ErrorChain::operator=(ErrorChain other) noexcept {
    std::swap(head, other.head);
    return *this;
}

ErrorChain::~ErrorChain() {
    // In a loop: a long chain would overflow the stack if each record dropped the next.
    while (head && --head->refCount == 0)
        freeMemory(std::exchange(head, head->next));
}

ErrorChain ErrorChain::makeError(const char* where, int code, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    ErrorChain chain;
    chain.head = newRecord(where, code, format, arguments);
    va_end(arguments);
    return chain;
}

void ErrorChain::addError(const char* where, int code, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    ErrorRecord* record = newRecord(where, code, format, arguments);
    va_end(arguments);
    record->next = std::exchange(head, record);
}

int ErrorChain::getCode(int index) const {
    const ErrorRecord* record = recordAt(index);
    return record ? record->code : 0;
}

const char* ErrorChain::getErrorText(int code) {
    static constexpr const char* kTexts[] = {
        "no error",
        "cannot open file",
        "error reading file",
        "error in file format",
        "cannot allocate memory",
        "format is not supported",
        "internal error",
        "error writing file",
    };
    return code >= 0 && code < std::ssize(kTexts) ? kTexts[code] : "unknown error";
}

const char* ErrorChain::getRecordText(int index) const {
    const ErrorRecord* record = recordAt(index);
    return record ? record->text : "";
}

CharString ErrorChain::getText() const {
    CharString text;
    writeChain(head, [&text](const char* piece) { text.append(piece); });
    return text;
}

void ErrorChain::getText(char* buffer, int size) const {
    if (size < 1)
        return;
    char* const last = buffer + size - 1;
    writeChain(head, [&](const char* piece) {
        const auto length = std::min<std::ptrdiff_t>(std::strlen(piece), last - buffer);
        buffer = std::copy_n(piece, length, buffer);
    });
    *buffer = 0;
}

const ErrorRecord* ErrorChain::recordAt(int index) const {
    if (index < 0)
        return nullptr;
    const ErrorRecord* record = head;
    while (record && index-- > 0)
        record = record->next;
    return record;
}

}  // namespace Tarnkit
