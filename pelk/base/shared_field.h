#pragma once

namespace Tarnkit {

// Plain `int` fields that several threads read and write without a lock: "this warning was given",
// "this answer is known", the flag that asks a job to end, a job's progress counter. They stay
// `int` and no std::atomic where they are part of an interface between plug-ins and hosts, or of an
// object that must stay copyable. A field that threads share is read and written by these two
// alone; between a plain access and another thread's store there would be a data race.
//
// There is no read-modify-write here: two threads that add at once lose one. So each counter has
// one writer, and threads that race for a flag all store the same value; at worst two of them give
// the same warning. Both run at hits, for they are plain moves on x86-64, no locked instruction.
//
// Example, an answer that is computed on first demand by whichever thread comes first:
//     if (!readShared(known)) {
//         writeShared(answer, compute());  // the same on each thread
//         writeShared(known, 1);           // after the answer: whoever sees 1 sees the answer too
//     }
//     return readShared(answer);

/// The field's value, with acquire order: what the writer stored before this value is seen by the
/// reads that follow.
inline int readShared(const int& field) {
    return __atomic_load_n(&field, __ATOMIC_ACQUIRE);
}

/// Stores a value, with release order: it isn't moved before earlier stores of this thread, so a
/// flag vouches for the value that was written before it.
inline void writeShared(int& field, int value) {
    __atomic_store_n(&field, value, __ATOMIC_RELEASE);
}

}  // namespace Tarnkit
