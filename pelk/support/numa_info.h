#pragma once

#include "pelk/base/grow_table.h"
#include "pelk/base/types.h"
#include "pelk/platform/numa.h"

namespace Tarnkit {

/// False if PELK_USE_THREAD_AFFINITY is set to something that reads as 0, which switches off all
/// that looks at nodes.
bool affinityAllowed();

/// The nodes as the system lists them; empty if it can't.
GrowTable<platform::NumaNode> listNumaNodes(const platform::Topology& machine);

struct NumaNodeRecord {
    u16 group;
    u64 mask;
    u32 cumulative;  ///< processors of this node and of all nodes before it
};

/// The machine's nodes, and which of them the threads of a group go to. The owner keeps `fill`
/// from overlapping; after it all else is read only.
class NumaInfo {
public:
    /// Takes over what the machine in use offers, less what the environment forbids.
    NumaInfo();

    /// Reads the nodes, the first time that it is called.
    void fill();

    /// True if there are several nodes to spread threads over.
    bool isUsed() const { return usedNodes > 1; }

    const NumaNodeRecord& getNode(int index) const { return nodes[index]; }

    /// Binds a thread to a whole node.
    void bind(platform::Thread& thread, int node) const;

    /// Goes through the nodes as the threads of a group do: a node gets as many as it has
    /// processors before the next gets any, and behind the last node the first one follows.
    /// Stands on an `isUsed` table.
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
    void readList();
    void readSingly();
    void append(u16 group, u64 mask, int node);
    void empty();

    decltype(platform::Topology::listNodes) listNodes = nullptr;
    decltype(platform::Topology::bindToGroup) bindToGroup = nullptr;
    decltype(platform::Topology::highestNode) highestNode = nullptr;
    decltype(platform::Topology::nodeMask) nodeMask = nullptr;
    const platform::Topology& machine;
    GrowTable<NumaNodeRecord> nodes{100};
    int usedNodes = 0;
    int lastUsedNode = -1;  // while the table is filled
    int totalProcessors = 0;
    int nodeCount = -1;  // records; -1 until `fill` has ended
};

}  // namespace Tarnkit
