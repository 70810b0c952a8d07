#pragma once

#include <cstdint>

namespace Tarnkit {

// What log headers say of the machine. Nothing here throws.

/// The name of the operating system, of at most 255 characters.
void getOSName(char* buffer);
/// The same text, made once.
const char* getCachedOSName();

/// The path of the running program, empty if it is unknown or does not fit.
void getModuleFilePath(char* buffer, int size);
/// Its directory with the separator at the end. False if there is none; `buffer` then holds what
/// `getModuleFilePath` gives.
bool getModuleDirectory(char* buffer, int size);

/// The name of this computer in lower case. `size` comes in as the room in `buffer` and goes out
/// as the length with its end. On failure `size` is 0 and the answer -1, otherwise that is 0.
int getComputerName(char* buffer, int* size);

/// Rounded up to a multiple of 16 MB; 0 if unknown.
int getTotalPhysicalMemoryMB();
/// Rounded up to a multiple of 4 MB; 0 if unknown.
int getTotalVirtualMemoryMB();
/// The smaller of free memory and free address space, rounded up to 16 MB; 0 if unknown.
int getFreeMemoryMB();

/// Writes "Working set: ... MB". False if that does not fit or is unknown.
bool formatWorkingSet(char* buffer, int size);
/// Physical memory that this process takes up; -1 if unknown.
std::int64_t getWorkingSetMB();

}  // namespace Tarnkit
