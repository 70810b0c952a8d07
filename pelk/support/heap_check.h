#pragma once

namespace Tarnkit {

/// Looks for writes into memory after it was freed: walks the runtime's heap, and reports each free
/// block that has a byte other than 0xFA, once and with the low 32 bits of its address, by
/// debugPrint. Nothing in this library fills free blocks with that byte; it is for hosts that do
/// so. False if the heap of this system can't be walked (platform/heap_walk.h); nothing is reported
/// then. Not while another thread allocates.
bool checkHeap();

}  // namespace Tarnkit
