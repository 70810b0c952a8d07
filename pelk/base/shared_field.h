#pragma once

namespace Tarnkit {

// Fields that all render threads read and write without a lock, such as "the message was given".
// Threads that meet here store the same value, or give a message twice, which is harmless. The
// builtins are plain moves on the processors that count here; they keep the compiler from moving
// the store of a flag before that of the value that it vouches for.

inline int readShared(const int& field) {
    return __atomic_load_n(&field, __ATOMIC_ACQUIRE);
}

inline void writeShared(int& field, int value) {
    __atomic_store_n(&field, value, __ATOMIC_RELEASE);
}

}  // namespace Tarnkit
