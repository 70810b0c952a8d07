#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "pelk/platform/debug_stream.h"
#include "pelk/platform/heap.h"

/// What a TestHeap has seen, and what it shall do.
struct TestHeapState {
    int live = 0;       ///< blocks out
    int taken = 0;      ///< blocks given in all
    int refuseAt = -1;  ///< no block is given once so many were
    bool once = false;  ///< but the first that is refused is the only one
    int refused = 0;    ///< blocks not given
    bool intact = true;
    Tarnkit::platform::HeapReport report{.freeBytes = 0, .usedBytes = 0, .blocks = 1, .status = 0};
};

/// Stands in place of the system's heap while it lives: counts, refuses, and reports what a test
/// says. One at a time. Other threads may be at work, but none when it comes and goes.
class TestHeap {
    static constexpr auto& system = Tarnkit::platform::systemHeap;

public:
    TestHeap() {
        state = {};
        Tarnkit::platform::setHeap(kHeap);
    }
    ~TestHeap() { Tarnkit::platform::setHeap(system()); }

    static void refuseAfter(int blocks, bool once = false) {
        state.refuseAt = state.taken + blocks;
        state.once = once;
    }
    static void refuseNothing() { state.refuseAt = -1; }

    static inline TestHeapState state;

private:
    template <class Take>
    static void* take(Take from) {
        if (std::atomic_ref(state.taken) == state.refuseAt) {
            add(state.refused, 1);
            if (state.once)
                refuseNothing();
            return nullptr;
        }
        void* block = from();
        add(state.live, block != nullptr);
        add(state.taken, block != nullptr);
        return block;
    }
    static void add(int& count, int number) { std::atomic_ref(count) += number; }
    static constexpr Tarnkit::platform::Heap kHeap{
        [](std::size_t size) { return take([=] { return system().allocate(size); }); },
        [](std::size_t size, std::size_t alignment) {
            return take([=] { return system().allocateAligned(size, alignment); });
        },
        [](void* old, std::size_t size) {
            void* block = take([=] { return system().reallocate(old, size); });
            add(state.live, -(block && old));
            return block;
        },
        [](void* block) {
            add(state.live, -(block != nullptr));
            system().release(block);
        },
        [] { return state.report; },
        [] { return state.intact; }};
};

/// A TestHeap in which no block is to stay when it goes. Stands ahead of what it watches.
struct LeakCheck : TestHeap {
    ~LeakCheck() { EXPECT_EQ(state.live, 0) << "blocks that were not given back"; }
};

/// Collects what goes to the debug stream while it lives.
struct DebugRecorder {
    DebugRecorder() {
        text.clear();
        Tarnkit::platform::setDebugSink([](const char* line) { text += line; });
    }
    ~DebugRecorder() { Tarnkit::platform::setDebugSink(nullptr); }

    static inline std::string text;
};
