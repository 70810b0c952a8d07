#include "pelk/host/picture/content_hash.h"

#include <xxhash.h>

#include <cstdio>
#include <new>

namespace Tarnkit {

struct ContentHash::State {
    State() : stream(XXH3_createState()) {
        if (!stream)
            throw std::bad_alloc();
    }
    ~State() { XXH3_freeState(stream); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    XXH3_state_t* const stream;
};

std::string ContentDigest::toText() const {
    char text[33];
    std::snprintf(text, sizeof text, "%016llx%016llx", static_cast<unsigned long long>(high),
                  static_cast<unsigned long long>(low));
    return text;
}

ContentHash::ContentHash() : state(std::make_unique<State>()) {
    restart();
}

ContentHash::~ContentHash() = default;

void ContentHash::add(const void* data, std::size_t size) {
    if (size > 0)
        XXH3_128bits_update(state->stream, data, size);
}

void ContentHash::addText(std::string_view text) {
    addNumber(text.size());
    add(text.data(), text.size());
}

void ContentHash::addNumber(std::uint64_t number) {
    unsigned char bytes[8];
    for (int i = 0; i < 8; ++i)
        bytes[i] = static_cast<unsigned char>(number >> 8 * i);
    add(bytes, sizeof bytes);
}

ContentDigest ContentHash::digest() const {
    const XXH128_hash_t hash = XXH3_128bits_digest(state->stream);
    return {hash.low64, hash.high64};
}

void ContentHash::restart() {
    XXH3_128bits_reset(state->stream);
}

}  // namespace Tarnkit
