#include "pelk/base/heap_report.h"

#include "pelk/base/debug_print.h"
#include "pelk/platform/heap.h"

namespace Tarnkit {

namespace {

/// The heap's report; its sums are 0 if it has counted no block, for they mean nothing then.
platform::HeapReport readHeap() {
    platform::HeapReport report = platform::heap().report();
    if (report.blocks == 0)
        report.freeBytes = report.usedBytes = 0;
    return report;
}

}  // namespace

u64 getFreeHeapMemory() {
    debugPrint("[getFreeHeapMemory] Getting free heap memory.\n");
    const platform::HeapReport report = readHeap();
    debugPrint("[getFreeHeapMemory] heapstatus=%i\n", report.status);
    debugPrint("[getFreeHeapMemory] Number of blocks visited: %u\n", report.blocks);
    return report.freeBytes;
}

u64 getAllocatedMemory() {
    debugPrint("[getAllocatedMemory] Getting allocated memory.\n");
    const platform::HeapReport report = readHeap();
    debugPrint("[getAllocatedMemory] heapstatus=%i\n", report.status);
    debugPrint("[getAllocatedMemory] Number of blocks visited: %u\n", report.blocks);
    return report.usedBytes;
}

u64 getHeapSize() {
    const platform::HeapReport report = readHeap();
    return report.freeBytes + report.usedBytes;
}

}  // namespace Tarnkit
