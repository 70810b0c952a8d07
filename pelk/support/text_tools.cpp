#include "pelk/support/text_tools.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "pelk/base/text_or.h"

namespace Tarnkit {

void replaceAll(CharString& text, const CharString& find, const CharString& replacement) {
    const std::string_view old = textOrEmpty(text.c_str()), sought = textOrEmpty(find.c_str());
    std::size_t at = 0, found = sought.empty() ? old.npos : old.find(sought);
    if (found == old.npos)
        return;
    std::string result;
    for (; found != old.npos; found = old.find(sought, at)) {
        result.append(old.substr(at, found - at)).append(textOrEmpty(replacement.c_str()));
        at = found + sought.size();
    }
    text = result.append(old.substr(at)).c_str();
}

void replaceInBuffer(char* buffer, int size, const char* find, const char* replacement) {
    const std::size_t soughtLength = std::strlen(find), newLength = std::strlen(replacement);
    if (size < 1 || soughtLength == 0)
        return;
    char* const last = buffer + size - 1;  // where the end may stand at the most
    char* at = buffer;
    while ((at = std::strstr(at, find))) {
        const char* const tail = at + soughtLength;
        const std::size_t room = last - at;
        const std::size_t inserted = std::min(newLength, room);
        const std::size_t moved = std::min(std::strlen(tail), room - inserted);
        std::memmove(at + inserted, tail, moved);
        std::memcpy(at, replacement, inserted);
        at += inserted;
        at[moved] = 0;
    }
}

}  // namespace Tarnkit
