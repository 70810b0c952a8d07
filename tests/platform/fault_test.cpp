#include "pelk/platform/fault.h"

#include <gtest/gtest.h>
#include <setjmp.h>
#include <signal.h>
#include <unistd.h>

#include <thread>

namespace {

using namespace Tarnkit::platform;

struct Caught {
    unsigned code;
};

void throwCode(unsigned code, const Fault&) {
    throw Caught{code};
}

int* volatile nowhere = nullptr;

void touchNothing() {
    *nowhere = 1;
}

int recurse(int depth);
// Volatile: of a function that it sees through, the compiler knows that it throws nothing.
int (*volatile recurseAgain)(int) = recurse;

int recurse(int depth) {
    volatile char space[4096];
    space[0] = static_cast<char>(depth);
    return recurseAgain(depth + 1) + space[0];
}

TEST(FaultTest, AnExhaustedStackIsAFaultOnAnyThread) {
    const auto exhaust = [] {
        setFaultTranslator(throwCode);
        try {
            recurseAgain(0);
        } catch (const Caught& caught) {
            EXPECT_EQ(caught.code, unsigned{SIGSEGV});
        }
        setFaultTranslator(nullptr);
    };
    exhaust();
    std::thread(exhaust).join();
}

TEST(FaultTest, WhatIsNotTranslatedGoesToTheFormerAction) {
    // A fresh process for each death: the former actions are noted once.
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto faultBehind = [](FaultTranslator last) {
        signal(SIGSEGV, [](int) { _exit(42); });
        setFaultTranslator(throwCode);
        setFaultTranslator(last);
        touchNothing();
    };
    EXPECT_EXIT(faultBehind(nullptr), testing::ExitedWithCode(42), "");
    const auto returning = [](unsigned, const Fault&) {};
    EXPECT_EXIT(faultBehind(returning), testing::ExitedWithCode(42), "");
}

TEST(FaultTest, OtherHandlersAndTheTranslatorEachKeepTheirFaults) {
    static sigjmp_buf back;
    static struct sigaction below;
    const auto faultWithoutTranslator = [] {
        std::thread([] {
            if (sigsetjmp(back, 1) == 0)
                touchNothing();
        }).join();
    };
    signal(SIGSEGV, [](int) { siglongjmp(back, 1); });
    setFaultTranslator(throwCode);
    faultWithoutTranslator();
    EXPECT_THROW(touchNothing(), Caught) << "taken away by the other thread";

    // One that was put up later, and hands on what it gets: to us, who come first again.
    struct sigaction later {};
    later.sa_flags = SA_SIGINFO | SA_ONSTACK;
    later.sa_sigaction = [](int n, siginfo_t* record, void* c) {
        below.sa_sigaction(n, record, c);
    };
    sigaction(SIGSEGV, &later, &below);
    setFaultTranslator(throwCode);
    faultWithoutTranslator();
    EXPECT_THROW(touchNothing(), Caught) << "not put up anew";
}

#if defined(__x86_64__)
TEST(FaultTest, ACallOfNoFunctionIsCaughtByItsCaller) {
    setFaultTranslator(throwCode);
    void (*volatile function)() = nullptr;
    EXPECT_THROW(function(), Caught);
}
#endif

}  // namespace
