#include "render/render_workers.h"

#include <gmock/gmock.h>

#include <mutex>
#include <set>
#include <stdexcept>

#include "frame/exception_msg.h"
#include "platform/debug_stream.h"
#include "platform/threads.h"
#include "recording_log.h"

using testing::Contains;
using testing::ElementsAre;

namespace Tarnkit {
namespace {

class RenderWorkers : public testing::Test {
protected:
    RenderWorkers() {
        platform::setDebugSink([](const char*) {});
        manager.reset(newThreadManager());
    }
    ~RenderWorkers() override {
        manager.reset();
        platform::setThreadFilter(nullptr);
        platform::setDebugSink(nullptr);
    }

    WorkerGroup group(int threads) {
        return {.manager = *manager, .threads = threads, .stop = stop, .log = &log};
    }
    void note(const Worker& worker) {
        const std::lock_guard hold(mutex);
        indices.insert(worker.getThreadIndex());
    }
    void workUntilStopped(const Worker& worker) {
        note(worker);
        while (!worker.mustStop())
            platform::sleepFor(1);
    }

    OwnedThreadManager manager;
    std::atomic<bool> stop{false};
    RecordingLog log;
    std::mutex mutex;
    std::set<int> indices;
};

TEST_F(RenderWorkers, StopEndsTheRunWheneverItComes) {
    WorkerGroup followed = group(3);
    int reported = 0;
    followed.report = [&](int done) {
        reported = done;
        stop = done == 3 * 7;
    };
    runWorkers(followed, [this](Worker& worker) {
        worker.count(3);
        worker.count(4);
        workUntilStopped(worker);
    });
    EXPECT_EQ(reported, 21);
    EXPECT_THAT(indices, ElementsAre(0, 1, 2));

    runWorkers(group(1), [](Worker&) { FAIL() << "stopped before it began"; });
}

TEST_F(RenderWorkers, AFailureEndsAllThreadsAndIsThrownAgain) {
    const auto failing = [this](Worker& worker) {
        if (worker.getThreadIndex() == 1)
            throw std::runtime_error("worker");
        workUntilStopped(worker);
    };
    EXPECT_THROW(runWorkers(group(3), failing), std::runtime_error);
}

TEST_F(RenderWorkers, RefusedThreadsAreAWarningAndNoneAtAllAnError) {
    static std::atomic<int> left;
    left = 2;
    platform::setThreadFilter([] { return left-- > 0; });
    runWorkers(group(4), [this](Worker& worker) {
        note(worker);
        while (left >= 0)
            platform::sleepFor(1);
    });
    EXPECT_THAT(indices, ElementsAre(0, 1));
    EXPECT_THAT(log.texts, Contains("w The system gave only 2 of 4 threads"));
    manager.reset(newThreadManager());
    EXPECT_THROW(runWorkers(group(4), [](Worker&) { FAIL(); }), ExceptionMsg);
}

}  // namespace
}  // namespace Tarnkit
