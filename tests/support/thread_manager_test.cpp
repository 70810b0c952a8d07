#include "pelk/support/thread_manager.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "pelk/base/shared_field.h"
#include "pelk/platform/debug_stream.h"
#include "pelk/platform/numa.h"
#include "scoped_environment.h"

using namespace Tarnkit;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

struct Job final : ThreadJob {
    using Body = std::function<void(int* abortFlag, int* progress, int threadIndex)>;
    explicit Job(Body jobBody) : body(std::move(jobBody)) {}
    void run(int* abortFlag, int* progress, int threadIndex, int numThreads) override {
        EXPECT_LT(threadIndex, numThreads);
        body(abortFlag, progress, threadIndex);
    }
    const char* getThreadName() override { return "a name that is longer than systems like"; }
    Body body;
};

/// Lasts until it is released, and notes its argument.
struct Task final : ThreadTask {
    void run(void* arg) override {
        argument = arg;
        while (!release)
            platform::sleepFor(1);
        done = true;
    }
    const char* getThreadName() override { return nullptr; }
    void finish() {
        for (release = true; !done;)
            platform::sleepFor(1);
    }
    std::atomic<bool> release{false}, done{false};
    void* argument = nullptr;
};

/// Writes down its calls, and answers as it is told.
struct Progress final : ThreadProgress {
    void setProgress(int sum) override { total = sum; }
    int checkAbort() override { return abort; }
    int needsEventPump() override { return 1; }
    void pumpEvents() override {}
    void status(int value, int time, const char* format, ...) override {
        calls += std::to_string(value) + " " + std::to_string(time) + " " + format;
    }
    void beginThreads() override { calls += "begin\n"; }
    void endThreads() override { calls += "end\n"; }

    std::atomic<int> total{0};
    int abort = 0;
    std::string calls;
};

/// A machine of any nodes that notes where threads are bound, instead of binding them.
struct MadeUpMachine {
    explicit MadeUpMachine(std::vector<platform::NumaNode> machineNodes) {
        nodes = std::move(machineNodes);
        bound.clear();
        platform::setTopology(kMachine);
    }
    ~MadeUpMachine() { platform::setTopology(platform::systemTopology()); }

    static inline std::vector<platform::NumaNode> nodes;
    static inline std::vector<u64> bound;  // groups added to the masks, from the first thread on

private:
    static bool listNodes(platform::NumaNode* list, int* count) {
        *count = static_cast<int>(nodes.size());
        if (list)
            std::copy(nodes.begin(), nodes.end(), list);
        return true;
    }
    static bool bindToGroup(platform::Thread&, u16 group, u64 mask) {
        bound.push_back(mask + group);
        return true;
    }
    static bool bindToProcessors(platform::Thread&, const platform::ProcessorSet& set) {
        bound.push_back(set.groups[0]);
        return true;
    }
    static bool processAffinity(platform::ProcessorSet* set) {
        *set = {};
        set->groups[0] = 0x1F;
        return true;
    }
    static constexpr platform::Topology kMachine{
        listNodes, bindToGroup, nullptr, nullptr, bindToProcessors, processAffinity, nullptr};
};

class ThreadManagerTest : public testing::Test {
protected:
    ThreadManagerTest() {
        debugText.clear();
        platform::setDebugSink([](const char* text) {
            const std::lock_guard hold(debugMutex);
            debugText += text;
        });
        manager = newThreadManager();
    }
    ~ThreadManagerTest() override {
        deleteThreadManager(manager);
        platform::setDebugSink(nullptr);
        platform::setThreadFilter(nullptr);
    }

    void renewManager() {
        deleteThreadManager(manager);
        manager = newThreadManager();
    }

    int run(int numThreads, Job::Body body, ThreadProgress* progress = nullptr) {
        Job job(std::move(body));
        return manager->runThreads(numThreads, &job, progress, true);
    }

    static inline std::mutex debugMutex;
    static inline std::string debugText;
    ThreadManager* manager;
};

/// Returns when `count` threads have come here.
void meet(std::atomic<int>& arrived, int count) {
    ++arrived;
    while (arrived < count)
        std::this_thread::yield();
}

}  // namespace

TEST_F(ThreadManagerTest, ThreadsRunTheJobAtOnceEachWithItsIndex) {
    const auto runAll = [&](int count, int expected) {
        SCOPED_TRACE(count);
        std::atomic<int> arrived{0}, sum{0};
        run(count, [&](int*, int*, int threadIndex) {
            EXPECT_EQ(manager->getThreadIndex(), threadIndex);
            sum += threadIndex;
            meet(arrived, expected);
        });
        EXPECT_EQ(sum, expected * (expected - 1) / 2) << "of 0 and up";
        EXPECT_EQ(manager->getThreadIndex(), -1) << "the caller is no worker";
    };
    runAll(0, getNumThreads());
    runAll(5, 5);
    platform::setThreadFilter([] { return false; });
    for (int i = 0; i < 100; ++i)
        runAll(2 + i % 4, 2 + i % 4);  // by the threads that there are
}

TEST_F(ThreadManagerTest, TaskRunsBesideAGroupOnAnyProcessor) {
    MadeUpMachine machine({});
    Task task;
    EXPECT_EQ(manager->startTask(&task, &machine), 0);  // takes the first thread of the pool
    run(1, [&](int*, int*, int) {
        EXPECT_EQ(manager->getThreadIndex(), 0) << "not its place in the pool";
    });
    task.finish();
    EXPECT_EQ(task.argument, &machine);
    EXPECT_THAT(machine.bound, ElementsAre(0x1F));
}

TEST_F(ThreadManagerTest, ProgressSeesTheRunFromItsBeginToItsEnd) {
    Progress progress;
    Job job([&](int*, int* counter, int threadIndex) {
        writeShared(*counter, threadIndex == 0 ? 5 : 10);
        writeShared(job.baseProgress, 100);
        while (threadIndex == 1 && progress.total != 115)
            platform::sleepFor(1);
    });
    job.abort = 5;  // of an earlier run
    EXPECT_EQ(manager->runThreads(2, &job, &progress, true), 0);
    EXPECT_EQ(progress.calls,
              "0 30000 Setting up %i thread(s)\nbegin\nend\n0 30000 Threads completed\n");

    progress.abort = -7;
    const auto untilAbort = [](int* abortFlag, int*, int) {
        while (readShared(*abortFlag) == 0)
            platform::sleepFor(1);
    };
    EXPECT_EQ(run(3, untilAbort, &progress), -7);
}

TEST_F(ThreadManagerTest, RunsMayOverlapNestAndMeetATermination) {
    std::atomic<int> calls{0};
    std::atomic<bool> stop{false};
    const auto manyRuns = [&] {
        for (int i = 0; i < 40; ++i)
            run(1 + i % 3, [&](int*, int*, int) { ++calls; });
    };
    std::thread terminator([&] {
        while (!stop)
            manager->terminateThreads(false);
    });
    std::thread other(manyRuns);
    manyRuns();
    other.join();
    run(2, [&](int*, int*, int) { run(2, [&](int*, int*, int) { ++calls; }); });
    stop = true;
    terminator.join();
    EXPECT_EQ(calls, 2 * (14 * 1 + 13 * 2 + 13 * 3) + 4);
}

TEST_F(ThreadManagerTest, GroupsAreSpreadOverTheNodes) {
    using Nodes = std::vector<platform::NumaNode>;
    const Nodes twoOfTwo = {{0, 3}, {0, 12}};
    const struct {
        const char* what;
        Nodes nodes;
        const char* setting;
        int numThreads;
        std::vector<u64> bound;  // groups are added to the masks
    } cases[] = {
        {"node by node, and again", twoOfTwo, "-1", 5, {3, 3, 12, 12, 3}},
        {"one with processors", {{0, 0xFF}, {0, 0}}, nullptr, 4, {}},
        {"empty ones", {{0, 0}, {0, 2}, {0, 0}, {1, 4}}, nullptr, 4, {2, 5, 2, 5}},
        {"switched off", twoOfTwo, "0", 3, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const ScopedEnvironment setting("PELK_USE_THREAD_AFFINITY", c.setting);
        MadeUpMachine machine(c.nodes);
        renewManager();
        for (int repeat = 0; repeat < 2; ++repeat) {
            machine.bound.clear();
            run(c.numThreads, [](int*, int*, int) {});
            EXPECT_EQ(machine.bound, c.bound) << "in run " << repeat;
        }
        EXPECT_EQ(getThreadPlacement(manager, c.numThreads).size(), c.bound.size());
        renewManager();
    }
}

TEST_F(ThreadManagerTest, ThreadThatOutlastsTheManagerFinishesAlone) {
    Task task;
    manager->startTask(&task, nullptr);
    renewManager();
    EXPECT_THAT(debugText, HasSubstr("did not terminate for the timeout interval\n"));
    task.finish();
    platform::sleepFor(50);  // it ends, and must not touch the manager
}

TEST_F(ThreadManagerTest, ForcedTerminationEndsARunThatIsStuck) {
    std::atomic<int> arrived{0};
    std::thread caller([&] {
        run(2, [&](int*, int*, int threadIndex) {
            meet(arrived, 3);
            while (threadIndex == 1)
                platform::sleepFor(1);
        });
    });
    meet(arrived, 3);
    manager->terminateThreads(true);
    caller.join();
    EXPECT_THAT(debugText, HasSubstr("did not terminate"));
}
