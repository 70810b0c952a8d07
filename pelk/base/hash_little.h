#pragma once

#include <bit>
#include <cstddef>

#include "pelk/base/types.h"

namespace Tarnkit {

/// A 32-bit hash of `length` bytes: the function `hashlittle` of Bob Jenkins, "lookup3.c", May
/// 2006, public domain. Every bit of the key changes each bit of the hash with a chance of about a
/// half, so any modulus serves a hash table. It is no cryptographic hash.
///
/// `key`: any bytes at any address, may be null for a `length` of 0. `seed`: starts the hash, so
/// that equal bytes hash apart under different seeds; HashTable uses 0. The hash of no bytes
/// depends on the seed alone. Part of what hosts and plug-ins agree on: the answer is the same on
/// every machine and in every version, since bytes are joined by hand in little-endian order and no
/// word is read at once. Linear in `length`; no allocation, no failure, any thread.
///
/// Values that the source's own test states, for whoever writes this anew on another machine:
///
///     hashlittle("", 0, 0)                                == 0xdeadbeef
///     hashlittle("", 0, 0xdeadbeef)                       == 0xbd5b7dde
///     hashlittle("Four score and seven years ago", 30, 0) == 0x17770551
///     hashlittle("Four score and seven years ago", 30, 1) == 0xcd628161
inline u32 hashlittle(const void* key, std::size_t length, u32 seed) {
    // Reading byte by byte costs little: compilers join the four into one load where the machine
    // allows it.
    const u8* k = static_cast<const u8*>(key);
    const auto word = [](const u8* p) {
        return p[0] | u32{p[1]} << 8 | u32{p[2]} << 16 | u32{p[3]} << 24;
    };
    // The last bytes as one word, the missing ones as 0, without the source's branch for each
    // length and without reading behind the key. Of three bytes the first, the middle and the last
    // are each put in their place; of two or one some coincide, and are put there twice to no
    // effect.
    const auto lastWord = [&word](const u8* p, std::size_t n) {
        if (n >= 4)
            return word(p);
        return p[0] | u32{p[n / 2]} << (8 * (n / 2)) | u32{p[n - 1]} << (8 * (n - 1));
    };
    // The names and constants from here on are those of the source.
    // The length is part of the start, so keys that differ by zero bytes at the end hash apart.
    u32 a = 0xdeadbeef + static_cast<u32>(length) + seed;
    u32 b = a;
    u32 c = a;
    // Above 12 and not 12 or more: the last block, also a whole one, goes to the final mixing.
    // The rounds are the macro mix() of the source, which can be run backwards: no state is lost.
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
    // Only an empty key comes here with nothing left; the source answers without the final mixing.
    if (length == 0)
        return c;
    // One to twelve bytes are left, four for each of a, b and c.
    a += lastWord(k, length);
    if (length > 4)
        b += lastWord(k + 4, length - 4);
    if (length > 8)
        c += lastWord(k + 8, length - 8);
    // final(): here every bit of a, b and c must come to bear on c, the answer.
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
