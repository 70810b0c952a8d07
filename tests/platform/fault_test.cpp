#include "platform/fault.h"

#include <gtest/gtest.h>
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

class FaultTest : public testing::Test {
protected:
    // A fresh process for each death: the former actions are noted once.
    void SetUp() override { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
    void TearDown() override { setFaultTranslator(nullptr); }
};

TEST_F(FaultTest, AnExhaustedStackIsAFaultOnAnyThread) {
    const auto exhaust = [] {
        setFaultTranslator(throwCode);
        try {
            recurseAgain(0);
        } catch (const Caught& caught) {
            EXPECT_EQ(caught.code, unsigned{SIGSEGV});
        }
    };
    exhaust();
    std::thread(exhaust).join();
}

TEST_F(FaultTest, WithoutTranslatorTheFormerActionStands) {
    const auto fault = [] {
        signal(SIGSEGV, [](int) { _exit(42); });
        setFaultTranslator(throwCode);
        setFaultTranslator(nullptr);
        touchNothing();
    };
    EXPECT_EXIT(fault(), testing::ExitedWithCode(42), "");
}

TEST_F(FaultTest, ATranslatorThatReturnsOrASentSignalEndsTheProcess) {
    const auto ignored = [] {
        setFaultTranslator([](unsigned, const Fault&) {});
        touchNothing();
    };
    EXPECT_EXIT(ignored(), testing::KilledBySignal(SIGSEGV), "");
    const auto sent = [] {
        setFaultTranslator(throwCode);
        raise(SIGSEGV);
    };
    EXPECT_EXIT(sent(), testing::KilledBySignal(SIGSEGV), "");
}

}  // namespace
