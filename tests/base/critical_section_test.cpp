#include "pelk/base/critical_section.h"

#include <gtest/gtest.h>

#include <future>

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

struct HeldSection {
    int attempts = 0, blocking = 0;
    bool tryEnter() { return ++attempts < 0; }
    void enter() { ++blocking; }
};

TEST(CriticalSectionTest, SpinEnterBlocksAfterThreeThousandAttempts) {
    HeldSection section;
    spinEnter(section);
    EXPECT_EQ(section.attempts, 3000);
    EXPECT_EQ(section.blocking, 1);
}

}  // namespace
