#include "pelk/platform/numa.h"

#include <atomic>
#include <cstdio>
#include <string>

#include "pelk/platform/machine.h"

namespace Tarnkit::platform {

namespace {

/// A processor list from the system's files. False if there is no such file.
bool readProcessorList(const char* fileName, ProcessorSet& set) {
    std::FILE* file = std::fopen(fileName, "r");
    if (!file)
        return false;
    std::string text;
    char part[512];
    while (const std::size_t size = std::fread(part, 1, sizeof part, file))
        text.append(part, size);
    std::fclose(file);
    return parseProcessorList(text, set);
}

bool contains(const ProcessorSet& set, int number) {
    return set.groups[number / kProcessorsPerGroup] >> number % kProcessorsPerGroup & 1;
}

/// Writes nodes into the caller's array as far as it has room, and counts them all.
struct NodeList {
    NumaNode* nodes;
    int room;
    int count = 0;

    void add(std::uint16_t group, std::uint64_t mask, int node) {
        if (nodes && count < room)
            nodes[count] = {group, mask, node};
        ++count;
    }

    /// Adds an entry for each group in which the node has processors, and one in group 0 for a node
    /// without any: it has memory all the same.
    void addNode(const ProcessorSet& processors, int node) {
        const int before = count;
        for (int group = 0; group < kMaxProcessorGroups; ++group)
            if (processors.groups[group])
                add(static_cast<std::uint16_t>(group), processors.groups[group], node);
        if (count == before)
            add(0, 0, node);
    }
};

bool listNodes(NumaNode* nodes, int* count) {
    ProcessorSet online;  // the numbers of nodes, in a file of the same form
    ProcessorSet allowed;
    if (!readProcessorList("/sys/devices/system/node/online", online) || !processAffinity(allowed))
        return false;
    NodeList list{nodes, *count};
    for (int node = 0; node < kMaxProcessorGroups * kProcessorsPerGroup; ++node) {
        if (!contains(online, node))
            continue;
        char fileName[64];
        std::snprintf(fileName, sizeof fileName, "/sys/devices/system/node/node%d/cpulist", node);
        ProcessorSet processors;
        if (!readProcessorList(fileName, processors))
            return false;
        // Binding a thread to a node must not lead it to processors that were closed to the
        // process.
        for (int group = 0; group < kMaxProcessorGroups; ++group)
            processors.groups[group] &= allowed.groups[group];
        list.addNode(processors, node);
    }
    *count = list.count;
    return !nodes || list.count <= list.room;
}

bool bindToGroup(Thread& thread, std::uint16_t group, std::uint64_t mask) {
    if (group >= kMaxProcessorGroups)
        return false;
    ProcessorSet processors;
    processors.groups[group] = mask;
    return thread.setAffinity(processors);
}

bool bindToProcessors(Thread& thread, const ProcessorSet& processors) {
    return thread.setAffinity(processors);
}

bool getProcessAffinity(ProcessorSet* processors) {
    return processAffinity(*processors);
}

constexpr Topology kSystem{.listNodes = listNodes,
                           .bindToGroup = bindToGroup,
                           .highestNode = nullptr,
                           .nodeMask = nullptr,
                           .bindToProcessors = bindToProcessors,
                           .processAffinity = getProcessAffinity,
                           .processorCount = processorCount};

constinit std::atomic<const Topology*> current{&kSystem};

}  // namespace

const Topology& topology() {
    return *current.load();
}

const Topology& systemTopology() {
    return kSystem;
}

void setTopology(const Topology& machine) {
    current = &machine;
}

}  // namespace Tarnkit::platform
