#pragma once

#include <cstdint>

#include "pelk/platform/affinity.h"
#include "pelk/platform/threads.h"

namespace Tarnkit::platform {

/// Processors with memory of their own, as far as they lie in one group. A node that reaches
/// into several groups is listed once for each.
struct NumaNode {
    std::uint16_t group;  ///< which processors the mask counts, see `ProcessorSet`
    std::uint64_t mask;   ///< may be empty: memory alone, or processors that are closed to us
    int number = -1;      ///< entries of the same node share it; -1: a node of its own
};

/// What the system tells of its processors and nodes, and how threads are bound to them. A test
/// puts a made-up machine in its place.
struct Topology {
    /// `count` comes in as the room in `nodes` and goes out as the number of nodes, which a null
    /// `nodes` asks for alone. False if there is no answer or no room. May be null.
    bool (*listNodes)(NumaNode* nodes, int* count);
    /// Binds a thread to processors of any group. False if refused. May be null.
    bool (*bindToGroup)(Thread& thread, std::uint16_t group, std::uint64_t mask);

    // The older way of systems that know of no groups, both null or none.
    bool (*highestNode)(int* node);
    bool (*nodeMask)(int node, std::uint64_t* mask);

    // Never null.
    bool (*bindToProcessors)(Thread& thread, const ProcessorSet& processors);
    bool (*processAffinity)(ProcessorSet* processors);
    int (*processorCount)();
};

/// The machine in use.
PELK_API const Topology& topology();

/// The real machine.
PELK_API const Topology& systemTopology();

/// Replaces the machine, which must stay valid. Who has asked `topology` before keeps the old.
PELK_API void setTopology(const Topology& machine);

}  // namespace Tarnkit::platform
