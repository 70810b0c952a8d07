#include "support/thread_manager.h"

#include <gmock/gmock.h>
#include <sched.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "frame/exception_msg.h"
#include "frame/shared_field.h"
#include "platform/debug_stream.h"
#include "platform/heap.h"
#include "platform/numa.h"
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
        noteIndex(threadIndex);
        body(abortFlag, progress, threadIndex);
    }
    const char* getThreadName() override { return "a name that is longer than systems like"; }

    void noteIndex(int threadIndex) {
        const std::lock_guard hold(mutex);
        EXPECT_TRUE(indices.insert(threadIndex).second) << "index given twice";
    }

    Body body;
    std::mutex mutex;
    std::set<int> indices;
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
    void setProgress(int total) override {
        totals.push_back(total);
        onProgress();
    }
    int checkAbort() override { return abort; }
    int needsEventPump() override { return 1; }
    void pumpEvents() override { ++pumped; }
    void status(int value, int time, const char* format, ...) override {
        calls += std::to_string(value) + " " + std::to_string(time) + " " + format;
    }
    void beginThreads() override { calls += "begin\n"; }
    void endThreads() override { calls += "end\n"; }

    int abort = 0, pumped = 0;
    std::vector<int> totals;
    std::string calls;
    std::function<void()> onProgress = [] {};
};

/// A machine of any nodes that notes where threads are bound, instead of binding them.
class MadeUpMachine {
public:
    explicit MadeUpMachine(std::vector<platform::NumaNode> machineNodes, u64 firstGroup = 0) {
        nodes = std::move(machineNodes);
        bound.clear();
        process = {};
        process.groups[0] = firstGroup;
        onBind = [] {};
        machine = {listNodes,        bindToGroup,     nullptr,          nullptr,
                   bindToProcessors, processAffinity, [] { return 77; }};
        platform::setTopology(machine);
    }
    ~MadeUpMachine() { platform::setTopology(platform::systemTopology()); }

    /// Takes away the list, as on a system that knows of nodes one by one.
    void useOlderWay() {
        machine.listNodes = nullptr;
        machine.bindToGroup = nullptr;
        machine.highestNode = [](int* node) { return *node = int(nodes.size()) - 1, true; };
        // A group other than 0 stands for a node that can't be read.
        machine.nodeMask = [](int node, u64* mask) {
            return *mask = nodes[node].mask, nodes[node].group == 0;
        };
    }

    static inline platform::Topology machine;
    static inline std::vector<platform::NumaNode> nodes;
    static inline platform::ProcessorSet process;
    static inline std::vector<u64> bound;  // the masks, from the first thread on
    static inline std::function<void()> onBind;

private:
    static bool listNodes(platform::NumaNode* list, int* count) {
        const int room = std::exchange(*count, static_cast<int>(nodes.size()));
        if (list && room >= *count)
            std::copy(nodes.begin(), nodes.end(), list);
        return !list || room >= *count;
    }
    static bool bindToGroup(platform::Thread&, u16 group, u64 mask) {
        bound.push_back(mask + group);
        onBind();
        return true;
    }
    static bool bindToProcessors(platform::Thread&, const platform::ProcessorSet& set) {
        bound.push_back(set.groups[0]);
        return true;
    }
    static bool processAffinity(platform::ProcessorSet* set) {
        *set = process;
        return process.count() > 0;
    }
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
        platform::setHeap(platform::systemHeap());
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

void doNothing(int*, int*, int) {}

void untilAbort(int* abortFlag, int*, int) {
    while (readShared(*abortFlag) == 0)
        platform::sleepFor(1);
}

/// Returns when `count` threads have come here.
void meet(std::atomic<int>& arrived, int count) {
    ++arrived;
    while (arrived < count)
        std::this_thread::yield();
}

}  // namespace

TEST_F(ThreadManagerTest, ThreadsRunTheJobWithTheirIndicesBesideATask) {
    for (const int count : {1, 5, 2, 0}) {
        SCOPED_TRACE(count);
        const int expected = count ? count : getNumThreads();
        std::atomic<int> arrived{0};
        Job job([&](int*, int*, int threadIndex) {
            EXPECT_EQ(manager->getThreadIndex(), threadIndex);
            meet(arrived, expected);  // all at the same time
        });
        EXPECT_EQ(manager->runThreads(count, &job, nullptr, false), 0);
        EXPECT_EQ(static_cast<int>(job.indices.size()), expected);
        EXPECT_EQ(*job.indices.rbegin(), expected - 1);
        EXPECT_EQ(manager->getThreadIndex(), -1) << "the caller is no worker";
    }
    MadeUpMachine machine({}, 0x1F);
    ThreadManager* other = newThreadManager();
    Task task;
    EXPECT_EQ(manager->startTask(&task, &machine), 0);  // takes the first thread of the pool
    run(1, [&](int*, int*, int) {
        EXPECT_EQ(manager->getThreadIndex(), 0) << "not its place in the pool";
        EXPECT_EQ(other->getThreadIndex(), -1);
    });
    task.finish();
    EXPECT_EQ(task.argument, &machine);
    EXPECT_THAT(machine.bound, ElementsAre(0x1F)) << "a task may run anywhere";
    deleteThreadManager(other);
}

TEST_F(ThreadManagerTest, WarmPoolMakesNoThread) {
    std::atomic<int> arrived{0};
    run(3, [&](int*, int*, int) { meet(arrived, 3); });
    static std::atomic<int> made;
    made = 0;
    platform::setThreadFilter([] { return ++made > 0; });
    for (int i = 0; i < 500; ++i)
        run(3, doNothing);
    EXPECT_EQ(made, 0);
}

TEST_F(ThreadManagerTest, ProgressSeesTheRunFromItsBeginToItsEnd) {
    Progress progress;
    std::atomic<bool> stop{false};
    bool otherGroupRan = false;
    progress.onProgress = [&] {
        if (otherGroupRan) {
            stop = true;
        } else if (progress.totals.back() == 115) {
            progress.totals = {115};
            // The thread that is done goes to another group. It still counts in ours.
            run(1, [](int*, int* counter, int) { writeShared(*counter, 1000000); });
            otherGroupRan = true;
        }
    };
    Job job([&](int*, int* counter, int threadIndex) {
        writeShared(*counter, threadIndex == 0 ? 5 : 10);
        writeShared(job.baseProgress, 100);
        while (threadIndex == 1 && !stop)
            platform::sleepFor(1);
    });
    manager->runThreads(2, &job, &progress, true);
    EXPECT_THAT(progress.totals, ElementsAre(115, 115));
    EXPECT_EQ(progress.calls,
              "0 30000 Setting up %i thread(s)\nbegin\nend\n0 30000 Threads completed\n");
    EXPECT_GE(progress.pumped, 3) << "in both steps of the wait and at the end";

    progress.abort = -7;
    EXPECT_EQ(run(3, untilAbort, &progress), -7);
    EXPECT_EQ(run(2, doNothing), 0) << "the abort of the last run still stands";
}

TEST_F(ThreadManagerTest, WorkerThatBeginsAfterAnAbortSkipsTheJob) {
    MadeUpMachine machine({{0, 0x3}, {0, 0xC}});
    renewManager();
    Job job([](int* abortFlag, int*, int) { writeShared(*abortFlag, 3); });
    machine.onBind = [&] {  // before the second thread gets its message
        while (machine.bound.size() == 2 && readShared(job.abort) == 0)
            platform::sleepFor(1);
    };
    EXPECT_EQ(manager->runThreads(2, &job, nullptr, false), 3);
    EXPECT_THAT(job.indices, ElementsAre(0));
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

TEST_F(ThreadManagerTest, LowPriorityHoldsForLaterWorkAlone) {
    for (const int low : {0, 1, 0}) {
        manager->setLowPriority(low);
        run(1, [low](int*, int*, int) {
            EXPECT_EQ(sched_getscheduler(0), low ? SCHED_BATCH : SCHED_OTHER);
        });
    }
}

TEST_F(ThreadManagerTest, RefusedThreadsMakeTheGroupSmaller) {
    static std::atomic<int> left;
    manager->setStackSize(1 << 20);
    platform::setThreadFilter([] { return left-- > 0; });
    for (const int threadsToMake : {2, 0, 0}) {
        left = threadsToMake;
        Task task;
        Job job([&](int*, int*, int threadIndex) {
            while (left >= 0)  // who is done sooner may be given a further index
                platform::sleepFor(1);
            if (threadIndex == 0) {
                EXPECT_EQ(manager->startTask(&task, nullptr), -1) << "no thread is idle";
            }
            while (threadIndex == 1 && left >= -1)
                platform::sleepFor(1);
        });
        manager->runThreads(4, &job, nullptr, false);
        EXPECT_THAT(job.indices, ElementsAre(0, 1));
        EXPECT_EQ(task.argument, nullptr);
    }
    EXPECT_THAT(debugText, HasSubstr("Could not start more than 2 of 4 threads\n"));
}

TEST_F(ThreadManagerTest, MemoryFailureComesBehindTheThreadsThatRun) {
    static std::atomic<bool> refuse;  // a heap is not exchanged while threads use it
    refuse = false;
    static platform::Heap heap = platform::systemHeap();
    heap.allocate = [](std::size_t size) {
        return refuse ? nullptr : platform::systemHeap().allocate(size);
    };
    platform::setHeap(heap);
    MadeUpMachine machine({{0, 0x3}, {0, 0xC}});
    renewManager();
    machine.onBind = [] { refuse = true; };
    std::atomic<int> finished{0};
    const auto finishLate = [&](int*, int*, int) { platform::sleepFor(30), ++finished; };
    EXPECT_THROW(run(3, finishLate), ExceptionMsg);
    EXPECT_EQ(finished, 1);
    machine.onBind = [] {};
    refuse = false;
    run(3, finishLate);
    EXPECT_EQ(finished, 4);
}

TEST_F(ThreadManagerTest, GroupsAreSpreadOverTheNodes) {
    using Nodes = std::vector<platform::NumaNode>;
    const Nodes twoOfFour = {{0, 0x0F}, {0, 0xF0}};
    const std::vector<u64> tenOnTwo = {15, 15, 15, 15, 240, 240, 240, 240, 15, 15};
    const struct {
        const char* what;
        Nodes nodes;
        u64 process;  // 0: unknown
        bool olderWay;
        const char* setting;
        int numThreads;
        std::vector<u64> bound;  // groups are added to the masks
    } cases[] = {
        {"node by node, and round again", twoOfFour, 0xFF, false, nullptr, 10, tenOnTwo},
        {"one with processors", {{0, 0xFF}, {0, 0}}, 0xFF, false, nullptr, 4, {}},
        {"empty ones", {{0, 0}, {0, 2}, {0, 0}, {1, 4}}, 6, false, nullptr, 4, {2, 5, 2, 5}},
        {"one by one", twoOfFour, 0x1C, true, nullptr, 4, {12, 12, 16, 12}},
        {"one by one, unknown process", twoOfFour, 0, true, nullptr, 3, {}},
        {"one by one, unreadable", {{0, 1}, {0, 2}, {9, 4}}, 7, true, nullptr, 3, {}},
        {"switched off", twoOfFour, 0xFF, false, "0", 3, {}},
        {"switched on", twoOfFour, 0xFF, false, "-1", 1, {15}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const ScopedEnvironment setting("PELK_USE_THREAD_AFFINITY", c.setting);
        MadeUpMachine machine(c.nodes, c.process);
        if (c.olderWay)
            machine.useOlderWay();
        renewManager();
        for (int repeat = 0; repeat < 2; ++repeat) {
            machine.bound.clear();
            run(c.numThreads, doNothing);
            EXPECT_EQ(machine.bound, c.bound) << "in run " << repeat;
        }
        std::vector<u64> told;
        for (const ThreadPlacement& thread : getThreadPlacement(manager, c.numThreads)) {
            EXPECT_EQ(thread.threadIndex, static_cast<int>(told.size()));
            told.push_back(thread.mask + thread.group);
        }
        EXPECT_EQ(told, c.bound) << "as told to the user";
        renewManager();
    }
}

TEST_F(ThreadManagerTest, DefaultThreadCount) {
    const struct {
        const char *number, *affinity;
        bool list;
        int expected;
    } cases[] = {
        {"3", nullptr, true, 3},           {"300", "0", false, 300}, {"-4", nullptr, true, 5},
        {"99999999999", nullptr, true, 5}, {nullptr, "0", true, 77}, {nullptr, nullptr, false, 77},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.number ? c.number : "not set");
        const ScopedEnvironment number("PELK_NUM_THREADS", c.number);
        const ScopedEnvironment affinity("PELK_USE_THREAD_AFFINITY", c.affinity);
        MadeUpMachine machine({{0, 0x7}, {3, 0x8001}});
        if (!c.list)
            machine.machine.listNodes = nullptr;
        EXPECT_EQ(detectNumThreads(), c.expected);
    }
    MadeUpMachine machine({});
    EXPECT_EQ(getNumProcessThreads(), getNumThreads()) << "of an unknown process";
    machine.process.groups[2] = 1;
    EXPECT_EQ(getNumProcessThreads(), 1);
    machine.process.groups[0] = ~u64{0};
    EXPECT_EQ(getNumProcessThreads(), std::min(65, getNumThreads()));
}

TEST_F(ThreadManagerTest, EndsItsThreadsRightBehindARunAndCanGoOn) {
    for (int i = 0; i < 20; ++i) {
        std::atomic<int> calls{0};
        run(2, [&](int*, int*, int) { meet(calls, 2); });
        i % 2 ? manager->terminateThreads(i % 4 == 1) : renewManager();
        EXPECT_EQ(calls, 2);
    }
    for (const char* line :
         {"Constructor.", "Destructor.", "Terminating 2 threads", "Terminating thread 1",
          "Thread is terminating", "All threads terminated"})
        EXPECT_THAT(debugText, HasSubstr("[WinThreadManager] " + std::string(line) + "\n"));
    EXPECT_THAT(debugText, Not(HasSubstr("did not terminate")));
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
