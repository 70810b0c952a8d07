#include <thread>

#include "library/hit_roads.h"

namespace {

class Threads : public HitRoads {};

// Without a warm-up and with a log that is not there: the threads meet at the flags of a frame.
TEST_F(Threads, ShadeTheSameAtOnceAsAlone) {
    renderer.sequenceData.log = nullptr;
    constexpr int kNumThreads = 4;
    Color sums[kNumThreads];
    const auto run = [&](int i) {
        FakeContext context = hit(i);
        prepare(context);
        for (int round = 0; round < 50; ++round)
            sums[i] += runHits(context);
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < kNumThreads; ++i)
        threads.emplace_back(run, i);
    for (std::thread& thread : threads)
        thread.join();
    const Color first = sums[0];
    sums[0] = Color(0);
    run(0);
    EXPECT_EQ(sums[0], first) << "alone";
    for (const Color& sum : sums)
        EXPECT_EQ(sum, first);
}

}  // namespace
