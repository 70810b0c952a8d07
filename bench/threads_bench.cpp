// A run of the thread manager on warm workers beside the least that any pool must do: wake a
// thread by a condition variable, and be woken by it, once for each worker.

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>

#include "pelk/platform/debug_stream.h"
#include "pelk/support/thread_manager.h"

using namespace Tarnkit;

namespace {

struct EmptyJob final : ThreadJob {
    void run(int*, int*, int, int) override {}
    const char* getThreadName() override { return nullptr; }
};

/// Two threads that hand a turn to each other.
class PingPong {
public:
    PingPong() : partner([this] { answer(); }) {}
    ~PingPong() {
        pass(kEnd);
        partner.join();
    }

    void roundTrip() {
        pass(kThere);
        std::unique_lock hold(mutex);
        changed.wait(hold, [this] { return turn == kBack; });
    }

private:
    enum Turn { kBack, kThere, kEnd };

    void pass(Turn next) {
        {
            const std::lock_guard hold(mutex);
            turn = next;
        }
        changed.notify_one();
    }

    void answer() {
        for (;;) {
            {
                std::unique_lock hold(mutex);
                changed.wait(hold, [this] { return turn != kBack; });
                if (turn == kEnd)
                    return;
            }
            pass(kBack);
        }
    }

    std::mutex mutex;
    std::condition_variable changed;
    Turn turn = kBack;
    std::thread partner;  // last: it uses all above
};

/// Keeps the least time of something that is called again and again.
template <class Call>
void measure(double& least, Call call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
    least = std::min(least, time.count());
}

}  // namespace

int main() {
    constexpr int kWorkers = 2, kRounds = 20000;
    platform::setDebugSink([](const char*) {});
    ThreadManager* manager = newThreadManager();
    EmptyJob job;
    double run = 1e9, roundTrips = 1e9;
    {
        PingPong pingPong;
        for (int round = 0; round < kRounds; ++round) {
            measure(run, [&] { manager->runThreads(kWorkers, &job, nullptr, false); });
            measure(roundTrips, [&] {
                pingPong.roundTrip();
                pingPong.roundTrip();
            });
        }
    }
    deleteThreadManager(manager);
    std::printf("%-34s %7.2f us   %-26s %7.2f us   ratio %5.2f (at most 1.00)\n",
                "empty run on 2 warm workers", run, "two wake-ups and back", roundTrips,
                run / roundTrips);
    return 0;
}
