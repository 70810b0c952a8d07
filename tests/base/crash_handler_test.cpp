#include "pelk/base/crash_handler.h"

#include <gtest/gtest.h>

#include <barrier>
#include <string>
#include <thread>

#include "pelk/base/exception_msg.h"
#include "scoped_environment.h"
#include "temporary_directory.h"

namespace {

using namespace Tarnkit;

int* volatile nowhere = nullptr;
volatile int zero = 0;

/// The text of the exception that a crash ends in.
std::string textOf(void (*crash)()) {
    installCrashHandler();
    try {
        crash();
    } catch (const ExceptionMsg& message) {
        return message.text;
    }
    return "no exception";
}

TEST(CrashHandlerTest, TheFirstOfTwoThreadsWritesTheDump) {
    const TemporaryDirectory directory;
    const ScopedEnvironment temporaries("TMPDIR", directory.path.c_str());
    directory.write("Pelk.dmp", std::string(1 << 20, 'x'));
    crashDumpWritten = 0;
    testing::internal::CaptureStdout();
    std::string texts[2];
    std::barrier start(2);
    const auto run = [&](int i) {
        start.arrive_and_wait();
        texts[i] = textOf([] { *nowhere = 1; });
    };
    std::thread other(run, 1);
    run(0);
    other.join();
    for (const std::string& text : texts)
        EXPECT_EQ(text, "Unhandled exception b");
    const std::string dump = directory.read("Pelk.dmp");
    for (const char* part : {"signal 11\n", "registers\n", "base_tests", "memory map\n"})
        EXPECT_NE(dump.find(part), std::string::npos) << part;
    EXPECT_EQ(dump.find("xxxx"), std::string::npos) << "the older file is replaced";

    EXPECT_EQ(textOf([] { zero = 1 / zero; }), "Unhandled exception 8");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Writing crash dump to \"" + directory.file("Pelk.dmp") + "\"\n");
}

}  // namespace
