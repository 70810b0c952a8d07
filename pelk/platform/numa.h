#pragma once

#include <cstdint>

#include "pelk/platform/affinity.h"
#include "pelk/platform/threads.h"

namespace Tarnkit::platform {

/// A NUMA node: processors that share a part of the machine's memory, which they reach faster than
/// the rest. Masks of processors count 64 at a time, so a node whose processors lie in several of
/// those groups has one entry for each of them.
struct NumaNode {
    std::uint16_t group;  ///< which processors the mask counts, see `ProcessorSet`
    std::uint64_t mask;   ///< may be empty: memory alone, or processors that are closed to us
    int number = -1;      ///< entries of the same node share it; -1: a node of its own
};

/// What the system tells of its processors and NUMA nodes, and how threads are bound to them. A
/// table of functions, so that a test can put a made-up machine of many nodes in its place. All may
/// be called by any thread; none throws.
struct Topology {
    /// `count` comes in as the room in `nodes` and goes out as the number of nodes, which a null
    /// `nodes` asks for alone. False if there is no answer or no room. May be null.
    bool (*listNodes)(NumaNode* nodes, int* count);
    /// Binds a thread to processors of any group. False if refused. May be null.
    bool (*bindToGroup)(Thread& thread, std::uint16_t group, std::uint64_t mask);

    // The older way, of systems that know of nodes but of no groups of processors. Either both are
    // null or neither is.
    bool (*highestNode)(int* node);
    bool (*nodeMask)(int node, std::uint64_t* mask);

    // What every system has; never null. False if the system refuses or doesn't tell.
    bool (*bindToProcessors)(Thread& thread, const ProcessorSet& processors);
    bool (*processAffinity)(ProcessorSet* processors);
    int (*processorCount)();
};

/// The machine in use: the real one unless `setTopology` has replaced it. Valid for good.
PELK_API const Topology& topology();

/// The real machine.
PELK_API const Topology& systemTopology();

/// Replaces the machine, for tests. `machine` must stay valid; whoever has asked `topology` before
/// keeps what it got.
PELK_API void setTopology(const Topology& machine);

}  // namespace Tarnkit::platform
