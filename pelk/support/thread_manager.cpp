#include "pelk/support/thread_manager.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdlib>

#include "pelk/platform/numa.h"
#include "pelk/support/numa_info.h"
#include "pelk/support/win_thread_manager.h"

namespace Tarnkit {

namespace {

/// PELK_NUM_THREADS; 0 if it is missing or no number of threads.
int numThreadsSetting() {
    const char* setting = std::getenv("PELK_NUM_THREADS");
    const long long number = setting ? std::strtoll(setting, nullptr, 10) : 0;
    return number >= 1 && number <= INT_MAX ? static_cast<int>(number) : 0;
}

/// The processors of all nodes; 0 if nodes are unknown or not to be looked at.
int countNodeProcessors(const platform::Topology& machine) {
    int sum = 0;
    if (affinityAllowed())
        for (const platform::NumaNode& node : listNumaNodes(machine))
            sum += std::popcount(node.mask);
    return sum;
}

const int numThreads = detectNumThreads();

}  // namespace

ThreadManager* newThreadManager() {
    return ::new (allocate(sizeof(WinThreadManager))) WinThreadManager;
}

void deleteThreadManager(ThreadManager* manager) {
    if (!manager)
        return;
    auto* own = static_cast<WinThreadManager*>(manager);
    own->~WinThreadManager();
    freeMemory(own);
}

int getNumThreads() {
    return numThreads;
}

int getNumProcessThreads() {
    platform::ProcessorSet process;
    if (!platform::topology().processAffinity(&process) || process.count() == 0)
        return numThreads;
    return std::min(process.count(), numThreads);
}

int detectNumThreads() {
    if (const int setting = numThreadsSetting())
        return setting;
    const platform::Topology& machine = platform::topology();
    const int ofNodes = countNodeProcessors(machine);
    return ofNodes > 0 ? ofNodes : machine.processorCount();
}

std::vector<ThreadPlacement> getThreadPlacement(ThreadManager* manager, int groupSize) {
    return static_cast<WinThreadManager*>(manager)->getPlacement(groupSize);
}

}  // namespace Tarnkit
