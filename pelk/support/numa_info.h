#pragma once

#include "pelk/base/grow_table.h"
#include "pelk/base/types.h"
#include "pelk/platform/numa.h"

namespace Tarnkit {

// NUMA (non-uniform memory access): on machines of several sockets each processor reaches the
// memory of its own node faster than that of others. A thread that stays on one node keeps near
// what it allocated, while the system would move it about.

/// False if PELK_USE_THREAD_AFFINITY is set to a text that reads as the number 0 (as "no" does
/// too), which switches off all that looks at nodes. Reads the environment at each call.
bool affinityAllowed();

/// The nodes as the system lists them, in its order; empty if it can't. A node with processors in
/// several groups of 64 has an entry for each. Lack of memory is an ExceptionMsg.
GrowTable<platform::NumaNode> listNumaNodes(const platform::Topology& machine);

/// An entry of the table that threads are spread by.
struct NumaNodeRecord {
    u16 group;       ///< which 64 processors the mask counts: those from 64 group on
    u64 mask;        ///< the node's processors, lowest bit first; 0 for a node of memory alone
    u32 cumulative;  ///< processors of this node and of all nodes before it
};

/// The machine's nodes, and which of them the threads of a group go to. Part of each
/// WinThreadManager, whose lock keeps calls of `fill` from overlapping; after it all else is only
/// read, by any thread.
class NumaInfo {
public:
    /// Takes over what the machine in use offers, less what the environment forbids. Asks nothing
    /// of the system yet.
    NumaInfo();

    /// Reads the nodes, the first time that it is called. Lack of memory is an ExceptionMsg, and
    /// the next call then tries again.
    void fill();

    /// True if there are several nodes with processors to spread threads over. Where there is only
    /// one, binding would gain nothing and keep the system from balancing its load.
    bool isUsed() const { return usedNodes > 1; }

    /// `index` counts from 0 in the system's order, as Walk::next gives it.
    const NumaNodeRecord& getNode(int index) const { return nodes[index]; }

    /// Binds a thread to a whole node: to all of its processors and not to one of them, so that the
    /// system can still balance within the node. A refusal is passed over; the thread then runs
    /// anywhere, which costs speed alone.
    void bind(platform::Thread& thread, int node) const;

    /// Goes through the nodes as the threads of a group do: a node gets as many as it has
    /// processors before the next gets any, and behind the last node the first one follows. Two
    /// nodes of 4 processors take 10 threads as 0 0 0 0 1 1 1 1 0 0. Each run has a walk of its
    /// own. Only for a table that `isUsed`.
    class Walk {
    public:
        explicit Walk(const NumaInfo& walked) : info(walked) {}
        /// The node of the next thread.
        int next();

    private:
        const NumaInfo& info;
        int node = 0;
        u32 processor = 0;
    };

private:
    void readList();    // from one call that lists all nodes
    void readSingly();  // node by node, on systems that can't
    void append(u16 group, u64 mask, int node);
    void empty();

    // Functions of the machine that may be missing; all null if affinity is not allowed.
    decltype(platform::Topology::listNodes) listNodes = nullptr;
    decltype(platform::Topology::bindToGroup) bindToGroup = nullptr;
    decltype(platform::Topology::highestNode) highestNode = nullptr;
    decltype(platform::Topology::nodeMask) nodeMask = nullptr;
    const platform::Topology& machine;
    GrowTable<NumaNodeRecord> nodes{100};
    int usedNodes = 0;        // nodes with processors
    int lastUsedNode = -1;    // while the table is filled: the number of the last one with any
    int totalProcessors = 0;  // of all nodes; where a walk starts over
    int nodeCount = -1;       // records; -1 until `fill` has ended
};

}  // namespace Tarnkit
