#pragma once

#include <bit>
#include <cstddef>

#include "pelk/base/types.h"

namespace Tarnkit {

/// A hash of `length` bytes: the function of that name in Bob Jenkins, "lookup3.c", May 2006.
/// The same on every machine; needs no alignment. `seed` tells apart hashes of equal bytes.
inline u32 hashlittle(const void* key, std::size_t length, u32 seed) {
    const u8* k = static_cast<const u8*>(key);
    const auto word = [](const u8* p) {
        return p[0] | u32{p[1]} << 8 | u32{p[2]} << 16 | u32{p[3]} << 24;
    };
    // The last bytes as one word. Of less than four, the first, the middle and the last are
    // taken, which may be the same byte twice at the same place: no branch for each length.
    const auto lastWord = [&word](const u8* p, std::size_t n) {
        if (n >= 4)
            return word(p);
        return p[0] | u32{p[n / 2]} << (8 * (n / 2)) | u32{p[n - 1]} << (8 * (n - 1));
    };
    u32 a = 0xdeadbeef + static_cast<u32>(length) + seed;
    u32 b = a;
    u32 c = a;
    for (; length > 12; length -= 12, k += 12) {
        a += word(k);
        b += word(k + 4);
        c += word(k + 8);
        a -= c, a ^= std::rotl(c, 4), c += b;
        b -= a, b ^= std::rotl(a, 6), a += c;
        c -= b, c ^= std::rotl(b, 8), b += a;
        a -= c, a ^= std::rotl(c, 16), c += b;
        b -= a, b ^= std::rotl(a, 19), a += c;
        c -= b, c ^= std::rotl(b, 4), b += a;
    }
    if (length == 0)
        return c;
    a += lastWord(k, length);
    if (length > 4)
        b += lastWord(k + 4, length - 4);
    if (length > 8)
        c += lastWord(k + 8, length - 8);
    c ^= b, c -= std::rotl(b, 14);
    a ^= c, a -= std::rotl(c, 11);
    b ^= a, b -= std::rotl(a, 25);
    c ^= b, c -= std::rotl(b, 16);
    a ^= c, a -= std::rotl(c, 4);
    b ^= a, b -= std::rotl(a, 14);
    c ^= b, c -= std::rotl(b, 24);
    return c;
}

}  // namespace Tarnkit
