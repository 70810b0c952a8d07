#include "pelk/platform/environment.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace Tarnkit::platform {

namespace {

std::vector<std::string> entries() {
    std::vector<std::string> all;
    // A program may have cleared the whole block.
    for (char** entry = environ; entry && *entry; ++entry)
        all.emplace_back(*entry);
    return all;
}

long read(const char* name, char* buffer, std::size_t size) {
    const char* const value = std::getenv(name);
    if (!value)
        return -1;
    const std::size_t length = std::strlen(value);
    if (length < size)
        std::memcpy(buffer, value, length + 1);
    return static_cast<long>(length);
}

void write(const char* name, const char* value) {
    setenv(name, value, 1);
}

constexpr Environment kSystemEnvironment{entries, read, write};

constinit const Environment* current = &kSystemEnvironment;

}  // namespace

const Environment& environment() {
    return *current;
}

void setEnvironment(const Environment* environment) {
    current = environment ? environment : &kSystemEnvironment;
}

}  // namespace Tarnkit::platform
