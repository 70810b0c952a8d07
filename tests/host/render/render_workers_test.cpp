#include "pelk/host/render/render_workers.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "pelk/base/exception_msg.h"
#include "pelk/platform/threads.h"
#include "recording_log.h"

namespace Tarnkit {
namespace {

class RenderWorkers : public testing::Test {
protected:
    ~RenderWorkers() override {
        manager.reset();
        platform::setThreadFilter(nullptr);
    }
    void run(int threads, const std::function<void(Worker&)>& work) {
        runWorkers({.manager = *manager, .threads = threads, .stop = stop, .log = &log}, work);
    }

    OwnedThreadManager manager{newThreadManager()};
    std::atomic<bool> stop{false};
    RecordingLog log;
};

TEST_F(RenderWorkers, AFailureEndsAllThreadsAndIsThrownAgain) {
    const auto failing = [](Worker& worker) {
        if (worker.getThreadIndex() == 1)
            throw std::runtime_error("worker");
        while (!worker.mustStop())
            platform::sleepFor(1);
    };
    EXPECT_THROW(run(3, failing), std::runtime_error);
}

TEST_F(RenderWorkers, RefusedThreadsAreAWarningAndNoneAtAllAnError) {
    static std::atomic<int> left;
    left = 2;
    platform::setThreadFilter([] { return left-- > 0; });
    std::atomic<int> working{0};
    run(4, [&](Worker&) {
        ++working;
        while (left >= 0)
            platform::sleepFor(1);
    });
    EXPECT_EQ(working, 2);
    EXPECT_THAT(log.texts, testing::Contains("w The system gave only 2 of 4 threads"));
    manager.reset(newThreadManager());
    EXPECT_THROW(run(4, [](Worker&) { FAIL(); }), ExceptionMsg);
}

}  // namespace
}  // namespace Tarnkit
