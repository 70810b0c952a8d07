#include <thread>

#include "materials/library/hit_roads.h"

namespace {

class Threads : public HitRoads {};

// Without a warm-up and with a log that is not there: the threads meet at the flags of a frame.
TEST_F(Threads, ShadeTheSameAtOnceAsAlone) {
    renderer.sequenceData.log = nullptr;
    constexpr int kNumThreads = 4;
    Color sums[kNumThreads + 1];
    const auto run = [&](int i) {
        FakeContext context = hit(i);
        prepare(context);
        for (int round = 0; round < 50; ++round)
            sums[i] += runHits(context);
    };
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < kNumThreads; ++i)
            threads.emplace_back(run, i);
    }
    run(kNumThreads);
    for (const Color& sum : sums)
        EXPECT_EQ(sum, sums[kNumThreads]);
}

}  // namespace
