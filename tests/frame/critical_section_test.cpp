#include "frame/critical_section.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>
#include <vector>

namespace {

using namespace Tarnkit;

bool othersCanEnter(CriticalSection& section) {
    return std::async(std::launch::async,
                      [&section] {
                          const bool entered = section.tryEnter();
                          if (entered)
                              section.leave();
                          return entered;
                      })
        .get();
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
    const struct {
        int succeedAt, attempts, blocking;
    } cases[] = {{1, 1, 0}, {1500, 1500, 0}, {1501, 1501, 0}, {3000, 3000, 0}, {0, 3000, 1}};
    for (const auto& c : cases) {
        CountingSection section{.succeedAt = c.succeedAt};
        spinEnter(section);
        EXPECT_EQ(section.attempts, c.attempts);
        EXPECT_EQ(section.blocking, c.blocking) << c.succeedAt;
    }
}

}  // namespace
