#include "pelk/support/numa_info.h"

#include <bit>
#include <cassert>
#include <cstdlib>

namespace Tarnkit {

bool affinityAllowed() {
    const char* setting = std::getenv("PELK_USE_THREAD_AFFINITY");
    return !setting || std::strtol(setting, nullptr, 10) != 0;
}

GrowTable<platform::NumaNode> listNumaNodes(const platform::Topology& machine) {
    GrowTable<platform::NumaNode> nodes;
    int count = 0;
    if (!machine.listNodes || !machine.listNodes(nullptr, &count) || count < 1)
        return nodes;
    nodes.resize(count);
    // The machine may have changed since it was counted.
    nodes.resize(machine.listNodes(nodes.begin(), &count) ? std::min(count, nodes.size()) : 0);
    return nodes;
}

NumaInfo::NumaInfo() : machine(platform::topology()) {
    if (!affinityAllowed())
        return;
    listNodes = machine.listNodes;
    bindToGroup = machine.bindToGroup;
    highestNode = machine.highestNode;
    nodeMask = machine.nodeMask;
}

void NumaInfo::fill() {
    if (nodeCount != -1)
        return;
    empty();  // of what an attempt without memory has left
    if (listNodes && bindToGroup)
        readList();
    if (nodes.isEmpty() && highestNode && nodeMask)
        readSingly();
    nodeCount = nodes.size();
}

void NumaInfo::bind(platform::Thread& thread, int node) const {
    const NumaNodeRecord& record = nodes[node];
    if (bindToGroup) {
        bindToGroup(thread, record.group, record.mask);
    } else {
        platform::ProcessorSet processors;
        processors.groups[0] = record.mask;
        machine.bindToProcessors(thread, processors);
    }
}

void NumaInfo::readList() {
    for (const platform::NumaNode& node : listNumaNodes(machine))
        append(node.group, node.mask, node.number);
}

void NumaInfo::readSingly() {
    int highest = 0;
    platform::ProcessorSet process;
    if (!highestNode(&highest) || highest < 1 || !machine.processAffinity(&process))
        return;
    for (int node = 0; node <= highest; ++node) {
        u64 mask = 0;
        if (!nodeMask(node, &mask))
            return empty();
        append(0, mask & process.groups[0], node);
    }
    totalProcessors = std::popcount(process.groups[0]);
}

void NumaInfo::append(u16 group, u64 mask, int node) {
    const int processors = std::popcount(mask);
    // The entries of a node of more than one group follow one another.
    const bool isSameNode = node >= 0 && node == lastUsedNode;
    usedNodes += processors > 0 && !isSameNode;
    if (processors > 0)
        lastUsedNode = node;
    totalProcessors += processors;
    nodes.append({group, mask, static_cast<u32>(totalProcessors)});
}

void NumaInfo::empty() {
    nodes.clear();
    usedNodes = totalProcessors = 0;
    lastUsedNode = -1;
}

int NumaInfo::Walk::next() {
    assert(info.isUsed());
    while (processor >= info.nodes[node].cumulative && node + 1 < info.nodes.size())
        ++node;
    const int found = node;
    if (++processor >= static_cast<u32>(info.totalProcessors))
        node = processor = 0;
    return found;
}

}  // namespace Tarnkit
