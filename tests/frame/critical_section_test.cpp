#include "frame/critical_section.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <thread>
#include <vector>

namespace {

using namespace Tarnkit;

bool othersCanEnter(CriticalSection& section) {
    const auto tryOnce = [&section] {
        const bool entered = section.tryEnter();
        if (entered)
            section.leave();
        return entered;
    };
    return std::async(std::launch::async, tryOnce).get();
}

TEST(CriticalSectionTest, IsTheOwnersUntilLeftAsOftenAsEntered) {
    CriticalSection section;
    section.enter();
    EXPECT_TRUE(section.tryEnter());
    spinEnter(section);
    section.leave();
    section.leave();
    EXPECT_FALSE(othersCanEnter(section));
    section.leave();
    EXPECT_TRUE(othersCanEnter(section));
}

/// Runs `enter` on four threads around an unguarded sum, which is off if two were in at once.
template <class Section, class Enter>
void expectExclusion(Enter enter) {
    constexpr int kRounds = 20000;
    Section section;
    int sum = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                for (int round = 0; round < kRounds; ++round) {
                    enter(section);
                    ++sum;
                    section.leave();
                }
            });
    }
    EXPECT_EQ(sum, 4 * kRounds);
}

TEST(CriticalSectionTest, EveryWayInKeepsOthersOut) {
    expectExclusion<CriticalSection>([](auto& section) { section.enter(); });
    expectExclusion<PlainCriticalSection>([](auto& section) { section.enter(); });
    expectExclusion<CriticalSection>([](auto& section) { spinEnter(section); });
}

struct CountingSection {
    int attempts = 0, blocking = 0, succeedAt = 0;
    bool tryEnter() { return ++attempts == succeedAt; }
    void enter() { ++blocking; }
};

TEST(CriticalSectionTest, SpinEnterBlocksAfterThreeThousandAttempts) {
    for (const int succeedAt : {1, 3000, 3001}) {
        CountingSection section{.succeedAt = succeedAt};
        spinEnter(section);
        EXPECT_EQ(section.attempts, std::min(succeedAt, 3000));
        EXPECT_EQ(section.blocking, succeedAt > 3000) << succeedAt;
    }
}

}  // namespace
