#include "pelk/platform/threads.h"

#include <gmock/gmock.h>

#include "pelk/platform/affinity.h"
#include "pelk/platform/events.h"
#include "pelk/platform/numa.h"

using namespace Tarnkit::platform;

TEST(AffinityTest, ProcessorLists) {
    const auto expectParsed = [](const char* text, const std::vector<int>& processors) {
        ProcessorSet set, expected;
        EXPECT_TRUE(parseProcessorList(text, set)) << text;
        for (const int processor : processors)
            expected.groups[processor / 64] |= std::uint64_t{1} << processor % 64;
        EXPECT_EQ(set, expected) << text;
    };
    expectParsed("", {});
    expectParsed("0-3,8,10-11\n", {0, 1, 2, 3, 8, 10, 11});
    expectParsed("1022-5000", {1022, 1023});
    ProcessorSet set;
    for (const char* broken : {"4-2", "1,", "1-", "a", "1 2", "99999999999"})
        EXPECT_FALSE(parseProcessorList(broken, set)) << broken;
}

TEST(TopologyTest, BoundThreadStaysWhereItIsPut) {
    const Topology& machine = systemTopology();
    ProcessorSet process;
    ASSERT_TRUE(machine.processAffinity(&process));
    int group = 0;
    while (process.groups[group] == 0)
        ++group;
    const std::uint64_t lowest = process.groups[group] & -process.groups[group];
    static Event go(Event::Reset::automatic);
    static int processors;
    Thread thread;
    const auto look = [](void*) {
        go.wait();
        processors = systemTopology().processorCount();  // of the calling thread
    };
    ASSERT_TRUE(thread.start(look, nullptr, 0));
    EXPECT_TRUE(machine.bindToGroup(thread, static_cast<std::uint16_t>(group), lowest));
    EXPECT_FALSE(machine.bindToGroup(thread, 16, 1)) << "there is no such group";
    go.set();
    thread.join();
    EXPECT_EQ(processors, 1);
}
