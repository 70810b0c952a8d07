#include "support/thread_manager.h"

#include <gmock/gmock.h>
#include <sched.h>

#include <atomic>
#include <cstdarg>
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
using testing::IsEmpty;

namespace {

struct Job final : ThreadJob {
    using Body = std::function<void(int* abortFlag, int* progress, int threadIndex)>;
    explicit Job(Body jobBody) : body(std::move(jobBody)) {}
    void run(int* abortFlag, int* progress, int threadIndex, int numThreads) override {
        EXPECT_LT(threadIndex, numThreads);
        {
            const std::lock_guard hold(mutex);
            EXPECT_TRUE(indices.insert(threadIndex).second) << "index given twice";
            threads.insert(std::this_thread::get_id());
        }
        body(abortFlag, progress, threadIndex);
    }
    const char* getThreadName() override { return "a name that is longer than systems like"; }

    Body body;
    std::mutex mutex;
    std::set<int> indices;
    std::set<std::thread::id> threads;
};

struct Task final : ThreadTask {
    explicit Task(std::function<void(void*)> taskBody) : body(std::move(taskBody)) {}
    void run(void* arg) override {
        body(arg);
        done = true;
    }
    const char* getThreadName() override { return nullptr; }
    void wait() const {
        while (!done)
            platform::sleepFor(1);
    }

    std::function<void(void*)> body;
    std::atomic<bool> done{false};
};

/// Writes down its calls, and answers as it is told.
struct Progress final : ThreadProgress {
    void setProgress(int total) override {
        totals.push_back(total);
        onProgress();
    }
    int checkAbort() override { return abort; }
    int needsEventPump() override { return pumps; }
    void pumpEvents() override { ++pumped; }
    void status(int value, int time, const char* format, ...) override {
        char text[200];
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        calls.push_back(std::to_string(value) + " " + std::to_string(time) + " " + text);
    }
    void beginThreads() override { calls.push_back("begin"); }
    void endThreads() override { calls.push_back("end"); }

    int abort = 0, pumps = 0, pumped = 0;
    std::vector<int> totals;
    std::vector<std::string> calls;
    std::function<void()> onProgress = [] {};
};

/// A machine of any nodes that notes where threads are bound, instead of binding them.
class MadeUpMachine {
public:
    MadeUpMachine() {
        machine = {.listNodes = listNodes,
                   .bindToGroup = bindToGroup,
                   .highestNode = nullptr,
                   .nodeMask = nullptr,
                   .bindToProcessors = bindToProcessors,
                   .processAffinity = processAffinity,
                   .processorCount = [] { return 77; }};
        nodes.clear();
        bound.clear();
        process = {};
        onBind = [] {};
        platform::setTopology(machine);
    }
    ~MadeUpMachine() { platform::setTopology(platform::systemTopology()); }

    /// Takes away the list, as on a system that knows of nodes one by one.
    void useOlderWay() {
        machine.listNodes = nullptr;
        machine.bindToGroup = nullptr;
        machine.highestNode = [](int* node) {
            *node = static_cast<int>(nodes.size()) - 1;
            return true;
        };
        machine.nodeMask = [](int node, u64* mask) {
            *mask = nodes[node].mask;
            return nodes[node].group == 0;  // any other stands for a node that can't be read
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

/// Returns when `count` threads have come here.
void meet(std::atomic<int>& arrived, int count) {
    ++arrived;
    while (arrived < count)
        std::this_thread::yield();
}

}  // namespace

TEST_F(ThreadManagerTest, EachThreadOfAGroupRunsTheJobWithItsIndex) {
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
    ThreadManager* other = newThreadManager();
    run(1, [&](int*, int*, int) { EXPECT_EQ(other->getThreadIndex(), -1); });
    deleteThreadManager(other);
    deleteThreadManager(nullptr);
}

TEST_F(ThreadManagerTest, WarmPoolMakesNoThread) {
    Job job(doNothing);
    for (int i = 0; i < 500; ++i) {
        job.indices.clear();
        manager->runThreads(3, &job, nullptr, false);
        ASSERT_EQ(job.indices.size(), 3u);
    }
    EXPECT_LE(job.threads.size(), 3u);
}

TEST_F(ThreadManagerTest, IndexIsThatOfTheLatestGroup) {
    std::atomic<bool> release{false};
    Task blocker([&](void*) {
        while (!release)
            platform::sleepFor(1);
    });
    run(2, doNothing);
    manager->startTask(&blocker, nullptr);  // takes the first of the two
    run(1, [&](int*, int*, int) { EXPECT_EQ(manager->getThreadIndex(), 0); });
    release = true;
    blocker.wait();
}

TEST_F(ThreadManagerTest, ProgressSeesTheRunFromItsBeginToItsEnd) {
    Progress progress;
    progress.pumps = 1;
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
    EXPECT_THAT(progress.calls, ElementsAre("0 30000 Setting up 2 thread(s)\n", "begin", "end",
                                            "0 30000 Threads completed\n"));
    EXPECT_GE(progress.pumped, 3) << "in both steps of the wait and at the end";
    progress.totals.clear();
    job.indices.clear();
    manager->runThreads(1, &job, &progress, false);
    EXPECT_THAT(progress.totals, IsEmpty());
}

TEST_F(ThreadManagerTest, AbortIsPassedOnAndReturned) {
    Progress progress;
    progress.abort = -7;
    const auto untilAbort = [](int* abortFlag, int*, int) {
        while (readShared(*abortFlag) == 0)
            platform::sleepFor(1);
    };
    EXPECT_EQ(run(3, untilAbort, &progress), -7);
    EXPECT_EQ(run(2, doNothing), 0) << "the abort of the last run still stands";
}

TEST_F(ThreadManagerTest, WorkerThatBeginsAfterAnAbortSkipsTheJob) {
    MadeUpMachine machine;
    machine.nodes = {{0, 0x3}, {0, 0xC}};
    renewManager();
    Job job([](int* abortFlag, int*, int) { writeShared(*abortFlag, 3); });
    machine.onBind = [&] {  // before the second thread gets its message
        while (machine.bound.size() == 2 && readShared(job.abort) == 0)
            platform::sleepFor(1);
    };
    EXPECT_EQ(manager->runThreads(2, &job, nullptr, false), 3);
    EXPECT_THAT(job.indices, ElementsAre(0));
}

TEST_F(ThreadManagerTest, RunsMayOverlapAndNest) {
    std::atomic<int> calls{0};
    const auto manyRuns = [&] {
        for (int i = 0; i < 40; ++i)
            run(1 + i % 3, [&](int*, int*, int) { ++calls; });
    };
    std::thread first(manyRuns), second(manyRuns);
    manyRuns();
    first.join();
    second.join();
    EXPECT_EQ(calls, 3 * (14 * 1 + 13 * 2 + 13 * 3));
    run(2, [&](int*, int*, int) { run(2, [&](int*, int*, int) { ++calls; }); });
    EXPECT_EQ(calls, 3 * (14 * 1 + 13 * 2 + 13 * 3) + 4);
}

TEST_F(ThreadManagerTest, TaskRunsBesideItsStarter) {
    MadeUpMachine machine;
    machine.process.groups[0] = 0x1F;
    int argument = 0;
    std::atomic<bool> release{false};
    Task task([&](void* arg) {
        EXPECT_EQ(arg, &argument);
        EXPECT_EQ(manager->getThreadIndex(), 0);
        while (!release)
            platform::sleepFor(1);
    });
    EXPECT_EQ(manager->startTask(&task, &argument), 0);
    release = true;
    task.wait();
    EXPECT_THAT(machine.bound, ElementsAre(0x1F)) << "to the whole process";
}

TEST_F(ThreadManagerTest, LowPriorityHoldsForLaterWorkAlone) {
    const auto policyOfJobs = [this] {
        int policy = -1;
        run(1, [&](int*, int*, int) { policy = sched_getscheduler(0); });
        return policy;
    };
    EXPECT_EQ(policyOfJobs(), SCHED_OTHER);
    manager->setLowPriority(1);
    EXPECT_EQ(policyOfJobs(), SCHED_BATCH);
    manager->setLowPriority(0);
    EXPECT_EQ(policyOfJobs(), SCHED_OTHER);
}

TEST_F(ThreadManagerTest, RefusedThreadsMakeTheGroupSmaller) {
    static std::atomic<int> left;
    manager->setStackSize(1 << 20);
    platform::setThreadFilter([] { return left-- > 0; });
    const auto untilOneIsRefused = [](int*, int*, int) {
        while (left >= 0)  // who is done sooner may be given a further index
            platform::sleepFor(1);
    };
    for (const int threadsToMake : {2, 0, 0}) {
        left = threadsToMake;
        Job job(untilOneIsRefused);
        manager->runThreads(4, &job, nullptr, false);
        EXPECT_THAT(job.indices, ElementsAre(0, 1));
    }
    EXPECT_THAT(debugText, HasSubstr("Could not start more than 2 of 4 threads\n"));
    left = 0;
    Task task([](void*) { FAIL() << "there is no thread for it"; });
    std::atomic<int> arrived{0};
    run(2, [&](int* abortFlag, int* progress, int threadIndex) {
        meet(arrived, 2);  // no thread is idle
        if (threadIndex == 0)
            EXPECT_EQ(manager->startTask(&task, nullptr), -1);
        else
            untilOneIsRefused(abortFlag, progress, threadIndex);
    });
    platform::setThreadFilter(nullptr);
    Job job(doNothing);
    manager->runThreads(4, &job, nullptr, false);
    EXPECT_EQ(job.indices.size(), 4u) << "the system has recovered";
}

TEST_F(ThreadManagerTest, MemoryFailureComesBehindTheThreadsThatRun) {
    static std::atomic<bool> refuse;
    refuse = false;
    platform::Heap heap = platform::systemHeap();
    heap.allocate = [](std::size_t size) {
        return refuse ? nullptr : platform::systemHeap().allocate(size);
    };
    platform::setHeap(heap);
    MadeUpMachine machine;
    machine.nodes = {{0, 0x3}, {0, 0xC}};
    renewManager();
    machine.onBind = [] { refuse = true; };
    std::atomic<int> finished{0};
    EXPECT_THROW(run(3,
                     [&](int*, int*, int) {
                         platform::sleepFor(30);
                         ++finished;
                     }),
                 ExceptionMsg);
    EXPECT_EQ(finished, 1);
    machine.onBind = [] {};
    refuse = false;
    run(3, [&](int*, int*, int) { ++finished; });
    EXPECT_EQ(finished, 4);
    renewManager();
    platform::setHeap(platform::systemHeap());
}

TEST_F(ThreadManagerTest, GroupsAreSpreadOverTheNodes) {
    const std::vector<platform::NumaNode> twoOfFour = {{0, 0x0F}, {0, 0xF0}};
    const struct {
        const char* what;
        std::vector<platform::NumaNode> nodes;
        bool olderWay;
        u64 process;
        const char* setting;
        int numThreads;
        std::vector<u64> bound;  // groups are added to the masks
    } cases[] = {
        {"node by node, and round again",
         twoOfFour,
         false,
         0xFF,
         nullptr,
         10,
         {15, 15, 15, 15, 240, 240, 240, 240, 15, 15}},
        {"one node", {{0, 0xFF}}, false, 0xFF, nullptr, 4, {}},
        {"one node with processors", {{0, 0xFF}, {0, 0}}, false, 0xFF, nullptr, 4, {}},
        {"empty nodes are passed over",
         {{0, 0}, {0, 2}, {0, 0}, {1, 4}},
         false,
         6,
         nullptr,
         4,
         {2, 5, 2, 5}},
        {"no nodes", {}, false, 0xFF, nullptr, 3, {}},
        {"one by one, inside the process", twoOfFour, true, 0x1C, nullptr, 4, {12, 12, 16, 12}},
        {"one by one, one node", {{0, 0xFF}}, true, 0xFF, nullptr, 3, {}},
        {"one by one, unknown process", twoOfFour, true, 0, nullptr, 3, {}},
        {"one by one, one unreadable", {{0, 1}, {0, 2}, {9, 4}}, true, 7, nullptr, 3, {}},
        {"switched off", twoOfFour, false, 0xFF, "0", 3, {}},
        {"switched off by a word", twoOfFour, false, 0xFF, "off", 3, {}},
        {"switched on", twoOfFour, false, 0xFF, "-1", 1, {15}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const ScopedEnvironment setting("PELK_USE_THREAD_AFFINITY", c.setting);
        MadeUpMachine machine;
        machine.nodes = c.nodes;
        machine.process.groups[0] = c.process;
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
        const char* number;
        const char* affinity;
        bool list;
        int expected;
    } cases[] = {
        {"3", nullptr, true, 3},    {"300", "0", false, 300},
        {"0", nullptr, true, 5},    {"-4", nullptr, true, 5},
        {"many", nullptr, true, 5}, {"99999999999", nullptr, true, 5},
        {"", nullptr, true, 5},     {nullptr, "1", true, 5},
        {nullptr, "0", true, 77},   {nullptr, nullptr, false, 77},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.number ? c.number : "not set");
        const ScopedEnvironment number("PELK_NUM_THREADS", c.number);
        const ScopedEnvironment affinity("PELK_USE_THREAD_AFFINITY", c.affinity);
        MadeUpMachine machine;
        machine.nodes = {{0, 0x7}, {3, 0x8001}};
        if (!c.list)
            machine.machine.listNodes = nullptr;
        EXPECT_EQ(detectNumThreads(), c.expected);
    }
    MadeUpMachine machine;
    EXPECT_EQ(getNumProcessThreads(), getNumThreads()) << "of an unknown process";
    machine.process.groups[2] = 1;
    EXPECT_EQ(getNumProcessThreads(), 1);
    machine.process.groups[0] = ~u64{0};
    EXPECT_EQ(getNumProcessThreads(), std::min(65, getNumThreads()));
}

TEST_F(ThreadManagerTest, EndsItsThreadsRightBehindARunAndCanGoOn) {
    for (int i = 0; i < 20; ++i) {
        std::atomic<int> calls{0};
        run(2, [&](int*, int*, int) { ++calls; });
        if (i % 2)
            manager->terminateThreads(i % 4 == 1);
        else
            renewManager();
        EXPECT_EQ(calls, 2);
    }
    EXPECT_THAT(debugText, HasSubstr("[WinThreadManager] Constructor.\n"));
    EXPECT_THAT(debugText, HasSubstr("[WinThreadManager] Destructor.\n"
                                     "[WinThreadManager] Terminating 2 threads\n"));
    EXPECT_THAT(debugText, HasSubstr("[WinThreadManager] Terminating thread 1\n"));
    EXPECT_THAT(debugText, HasSubstr("[WinThreadManager] Thread is terminating\n"));
    EXPECT_THAT(debugText, HasSubstr("[WinThreadManager] All threads terminated\n"));
    EXPECT_THAT(debugText, Not(HasSubstr("did not terminate")));
}

TEST_F(ThreadManagerTest, RunsThatMeetATerminationAreNotLost) {
    std::atomic<bool> stop{false};
    std::thread terminator([&] {
        while (!stop)
            manager->terminateThreads(false);
    });
    std::atomic<int> calls{0};
    for (int i = 0; i < 200; ++i)
        run(2, [&](int*, int*, int) { ++calls; });
    stop = true;
    terminator.join();
    EXPECT_EQ(calls, 400);
}

TEST_F(ThreadManagerTest, ThreadThatOutlastsTheManagerFinishesAlone) {
    std::atomic<bool> release{false};
    Task task([&](void*) {
        while (!release)
            platform::sleepFor(1);
    });
    manager->startTask(&task, nullptr);
    renewManager();
    EXPECT_THAT(debugText, HasSubstr("[WinThreadManager] Waiting for PGL thread to finish...\n"
                                     "[WinThreadManager] Thread did not terminate for the timeout "
                                     "interval\n"));
    release = true;
    task.wait();
    const auto hasEnded = [] {
        const std::lock_guard hold(debugMutex);
        return debugText.find("Thread is terminating") != std::string::npos;
    };
    while (!hasEnded())
        platform::sleepFor(1);
}

TEST_F(ThreadManagerTest, ForcedTerminationEndsARunThatIsStuck) {
    std::atomic<bool> stuck{false};
    std::thread caller([&] {
        run(2, [&](int*, int*, int threadIndex) {
            while (threadIndex == 1) {
                stuck = true;
                platform::sleepFor(1);
            }
        });
    });
    while (!stuck)
        platform::sleepFor(1);
    manager->terminateThreads(true);
    caller.join();
    EXPECT_THAT(debugText, HasSubstr("did not terminate"));
}
