#include "pelk/contract/shader_source.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "pelk/base/memory.h"
#include "pelk/base/text_or.h"
#include "pelk/contract/renderer.h"
#include "pelk/platform/c_locale.h"

namespace Tarnkit {
namespace {

/// One conversion of a printf format, from its '%' to its letter.
struct Conversion {
    char text[32] = {};
    char letter = 0;
    bool isLong = false;      ///< an integer as wide as long
    bool isLongReal = false;  ///< a long double
};

/// The arguments of printf, to be passed on by reference: some systems have a va_list that is
/// an array, and after a function has taken arguments from its copy the caller's can't be used.
struct Arguments {
    std::va_list list;
};

/// Takes the conversion at the front of `format` off it. False if there is none, or a broken one.
bool takeConversion(std::string_view& format, Conversion& out) {
    const std::size_t end = format.find_first_not_of("-+ #0123456789.hljztL", 1);
    if (end >= format.size() || end + 1 >= sizeof(out.text))
        return false;
    format.copy(out.text, end + 1);
    const std::string_view modifiers = format.substr(0, end);
    out.letter = format[end];
    out.isLong = modifiers.find_first_of("ljzt") != std::string_view::npos;
    out.isLongReal = modifiers.find('L') != std::string_view::npos;
    format.remove_prefix(end + 1);
    return true;
}

template <class Value>
void appendConverted(ShaderSource& out, const char* conversion, Value value) {
    char buffer[512];
    const int size = std::snprintf(buffer, sizeof(buffer), conversion, value);
    if (size < static_cast<int>(sizeof(buffer)))
        return out.append(size < 0 ? "" : buffer);
    // Too long for the stack: a text, or a number with hundreds of digits.
    const std::unique_ptr<char, decltype(&freeMemory)> whole(static_cast<char*>(allocate(size + 1)),
                                                             freeMemory);
    std::snprintf(whole.get(), size + 1, conversion, value);
    out.append(whole.get());
}

void appendConversion(ShaderSource& out, const Conversion& conversion, Arguments& arguments) {
    switch (conversion.letter) {
        case '%':
            return out.append("%");
        case 's': {
            const char* string = va_arg(arguments.list, const char*);
            return appendConverted(out, conversion.text, textOrEmpty(string));
        }
        case 'p':
            return appendConverted(out, conversion.text, va_arg(arguments.list, void*));
        case 'c':
        case 'd':
        case 'i':
        case 'o':
        case 'u':
        case 'x':
        case 'X':
            // The signed and the unsigned form of a width are passed alike.
            if (conversion.isLong)
                return appendConverted(out, conversion.text, va_arg(arguments.list, long));
            return appendConverted(out, conversion.text, va_arg(arguments.list, int));
        default:
            if (conversion.isLongReal)
                return appendConverted(out, conversion.text, va_arg(arguments.list, long double));
            return appendConverted(out, conversion.text, va_arg(arguments.list, double));
    }
}

static_assert(sizeof(long) == sizeof(long long), "'l' and 'll' are read alike");

}  // namespace

ShaderSource::~ShaderSource() {
    freeMemory(text);
}

void ShaderSource::append(const char* from) {
    if (from)
        append(from, std::strlen(from));
}

void ShaderSource::append(const ShaderSource& other) {
    append(other.c_str(), other.used);
}

void ShaderSource::append(const char* from, std::size_t size) {
    if (used + size + 1 > capacity) {
        const std::size_t grownCapacity = std::max(used + size + 1, capacity * 2);
        char* grown = static_cast<char*>(allocate(grownCapacity));
        std::memcpy(grown, c_str(), used);
        // Copied before the old text goes: what is appended may stand in it.
        std::memcpy(grown + used, from, size);
        freeMemory(text);
        text = grown;
        capacity = grownCapacity;
    } else {
        std::memmove(text + used, from, size);
    }
    used += size;
    text[used] = '\0';
}

/// Conversion by conversion, so that a null text never reaches the C library's own answer to it.
void ShaderSource::printf(const char* format, ...) {
    const platform::CLocaleScope cLocale;
    Arguments arguments;
    va_start(arguments.list, format);
    try {
        std::string_view rest = format;
        while (!rest.empty()) {
            const std::size_t plain = std::min(rest.find('%'), rest.size());
            append(rest.data(), plain);
            rest.remove_prefix(plain);
            Conversion conversion;
            if (!takeConversion(rest, conversion))
                break;
            appendConversion(*this, conversion, arguments);
        }
    } catch (...) {
        va_end(arguments.list);
        throw;
    }
    va_end(arguments.list);
}

void ShaderSource::oclCheckBumpTextureSupport(PelkRenderer* renderer, const char* name,
                                              const char* type, int flag) const {
    MessageLog* const log = renderer && length() == 0 ? renderer->sequenceData.log : nullptr;
    if (!log)
        return;
    log->warning("[%s] The %s map of \"%s\" can't be described; its text has a smooth surface.\n",
                 type, flag ? "normal" : "height", textOrEmpty(name));
}

}  // namespace Tarnkit
