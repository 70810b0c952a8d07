#pragma once

#include <cstdint>

namespace Tarnkit {

// What log headers say of the machine. These are reports, so nothing here throws or fails loudly:
// what the system does not tell is a fixed text, 0 or -1. Any thread may call, without a lock.

/// The name of the operating system, of at most 255 characters, in a buffer of 256. The form is
/// that of systems which have a version with major and minor number; others get a generic text.
void getOSName(char* buffer);
/// The same text, made once, at the first call; valid while the program runs.
const char* getCachedOSName();

/// The path of the running program; empty if it is unknown or does not fit into `size` bytes. A
/// `size` below 1 leaves the buffer alone.
void getModuleFilePath(char* buffer, int size);
/// Its directory with the separator at the end. False if there is none; `buffer` then holds what
/// `getModuleFilePath` gives.
bool getModuleDirectory(char* buffer, int size);

/// The name of this computer in lower case. `size` comes in as the room in `buffer` and goes out
/// as the length with its end. On failure `size` is 0 and the answer -1, otherwise that is 0.
int getComputerName(char* buffer, int* size);

// Whole megabytes of 2^20 bytes, limited to what an int holds.

/// Memory of the machine, rounded up to a multiple of 16 MB, as the system reports a little less
/// than was built in: part of it belongs to the firmware. 0 if unknown.
int getTotalPhysicalMemoryMB();
/// Address space of this process, rounded up to a multiple of 4 MB; 0 if unknown.
int getTotalVirtualMemoryMB();
/// What this process could still get: the smaller of free memory and free address space, rounded up
/// to 16 MB; 0 if unknown. Memory that only caches files counts as free.
int getFreeMemoryMB();

/// Writes "Working set: ... MB", the working set being the physical memory that this process takes
/// up. False if that does not fit into `size` bytes or is unknown.
bool formatWorkingSet(char* buffer, int size);
/// The same number, rounded down; -1 if unknown.
std::int64_t getWorkingSetMB();

}  // namespace Tarnkit
