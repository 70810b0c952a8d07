#include "platform/threads.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/affinity.h"
#include "platform/events.h"
#include "platform/numa.h"
#include "platform/tls.h"

using namespace Tarnkit::platform;
using Reset = Event::Reset;

TEST(EventTest, SignalIsTakenByOneWaitOrStandsUntilReset) {
    Event automatic(Reset::automatic), manual(Reset::manual);
    for (Event* event : {&automatic, &manual}) {
        EXPECT_FALSE(event->waitFor(0)) << "signalled at the start";
        event->set();
        event->set();
        EXPECT_TRUE(event->waitFor(0));
    }
    EXPECT_FALSE(automatic.waitFor(0)) << "two signals count as one";
    EXPECT_TRUE(manual.waitFor(0));
    manual.reset();
    EXPECT_FALSE(manual.waitFor(0));
}

TEST(EventTest, WakesWhoWaitsAndTimesOut) {
    Event ping(Reset::automatic), pong(Reset::automatic);
    std::jthread other([&] {
        ping.wait();
        pong.set();
    });
    ping.set();
    EXPECT_TRUE(pong.waitFor(60000));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(pong.waitFor(20));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
}

TEST(ThreadSlotTest, HoldsAValueForEachThread) {
    ThreadSlot slot = ThreadSlot::create();
    int mine = 0, theirs = 0;
    slot.set(&mine);
    std::thread([&] {
        EXPECT_EQ(slot.get(), nullptr);
        slot.set(&theirs);
        EXPECT_EQ(slot.get(), &theirs);
    }).join();
    EXPECT_EQ(slot.get(), &mine);
    slot.destroy();
    EXPECT_EQ(slot.get(), nullptr);
}

TEST(ThreadTest, RunsWithAnyStackSizeAndCanBeRefused) {
    for (const int stackSize : {0, -5, 1, 3000001}) {
        SCOPED_TRACE(stackSize);
        std::atomic<int> calls{0};
        Thread thread;
        ASSERT_TRUE(thread.start([](void* counter) { ++*static_cast<std::atomic<int>*>(counter); },
                                 &calls, stackSize));
        thread.join();
        thread.join();  // of a thread that is gone: nothing
        EXPECT_EQ(calls, 1);
    }
    Thread refused;
    setThreadFilter([] { return false; });
    EXPECT_FALSE(refused.start([](void*) {}, nullptr, 0));
    setThreadFilter(nullptr);
    EXPECT_FALSE(refused.kill(1));
}

TEST(ThreadTest, KillEndsAThreadInItsTracks) {
    struct Victim {
        std::atomic<int> rounds{0};
        ~Victim() { EXPECT_GT(rounds, 0); }
    } victim;
    Thread thread;
    ASSERT_TRUE(thread.start(
        [](void* argument) {
            for (;;) {
                ++static_cast<Victim*>(argument)->rounds;
                sleepFor(1);
            }
        },
        &victim, 0));
    while (victim.rounds == 0)
        sleepFor(1);
    ASSERT_TRUE(thread.kill(0xFFFFFFFF));
    const int rounds = victim.rounds;
    sleepFor(20);
    EXPECT_EQ(victim.rounds, rounds);
}

TEST(AffinityTest, ProcessorLists) {
    const auto expectParsed = [](const char* text, const std::vector<int>& processors) {
        ProcessorSet set, expected;
        EXPECT_TRUE(parseProcessorList(text, set)) << text;
        for (const int processor : processors)
            expected.groups[processor / 64] |= std::uint64_t{1} << processor % 64;
        EXPECT_EQ(set, expected) << text;
        EXPECT_EQ(set.count(), static_cast<int>(processors.size())) << text;
    };
    expectParsed("", {});
    expectParsed("\n", {});
    expectParsed("0-3,8,10-11\n", {0, 1, 2, 3, 8, 10, 11});
    expectParsed("63-64,130", {63, 64, 130});
    expectParsed("1022-5000", {1022, 1023});
    ProcessorSet set;
    for (const char* broken : {"4-2", "1,", "1-", "a", "1 2", "99999999999"})
        EXPECT_FALSE(parseProcessorList(broken, set)) << broken;
}

// Whatever machine this is: its nodes share nothing, and hold all that the process may use.
TEST(TopologyTest, NodesOfThisMachineCoverTheProcess) {
    const Topology& machine = systemTopology();
    int count = 0;
    if (!machine.listNodes(nullptr, &count))
        return;  // a system without a node list
    ASSERT_GE(count, 1);
    std::vector<NumaNode> nodes(count);
    int room = count - 1;
    EXPECT_FALSE(machine.listNodes(nodes.data(), &room)) << "more nodes than room";
    room = count;
    ASSERT_TRUE(machine.listNodes(nodes.data(), &room));
    ProcessorSet seen, process;
    for (const NumaNode& node : nodes) {
        EXPECT_EQ(seen.groups[node.group] & node.mask, 0u);
        seen.groups[node.group] |= node.mask;
    }
    ASSERT_TRUE(machine.processAffinity(&process));
    EXPECT_EQ(seen, process);
    EXPECT_EQ(machine.processorCount(), process.count());
}

TEST(TopologyTest, BoundThreadStaysWhereItIsPut) {
    const Topology& machine = systemTopology();
    ProcessorSet process;
    ASSERT_TRUE(machine.processAffinity(&process));
    int group = 0;
    while (process.groups[group] == 0)
        ++group;
    const std::uint64_t lowest = process.groups[group] & -process.groups[group];
    struct Looker {
        Event go{Reset::automatic};
        int processors = 0;
    } looker;
    Thread thread;
    ASSERT_TRUE(thread.start(
        [](void* argument) {
            auto* self = static_cast<Looker*>(argument);
            self->go.wait();
            self->processors = systemTopology().processorCount();  // of the calling thread
        },
        &looker, 0));
    EXPECT_TRUE(machine.bindToGroup(thread, static_cast<std::uint16_t>(group), lowest));
    EXPECT_FALSE(machine.bindToGroup(thread, 16, 1)) << "there is no such group";
    looker.go.set();
    thread.join();
    EXPECT_EQ(looker.processors, 1);
    ProcessorSet after;
    EXPECT_TRUE(machine.processAffinity(&after));
    EXPECT_EQ(after, process);
}
