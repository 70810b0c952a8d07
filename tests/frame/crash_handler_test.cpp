#include "frame/crash_handler.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <barrier>
#include <string>
#include <thread>
#include <vector>

#include "frame/exception_msg.h"
#include "scoped_environment.h"
#include "temporary_directory.h"

namespace {

using namespace Tarnkit;

class CrashHandlerTest : public testing::Test {
protected:
    void SetUp() override {
        crashDumpWritten = 0;
        installCrashHandler();
        handler = installCrashHandler();
    }
    void TearDown() override { platform::setFaultTranslator(nullptr); }

    /// The text of the exception that `crash` ends in.
    template <class Crash>
    static std::string textOf(Crash crash) {
        try {
            crash();
        } catch (const ExceptionMsg& message) {
            return message.text;
        }
        return "no exception";
    }

    /// What two threads get that crash at the same moment.
    template <class Crash>
    static std::vector<std::string> crashTwice(Crash crash) {
        std::barrier start(2);
        std::vector<std::string> texts(2);
        const auto run = [&](int i) {
            installCrashHandler();
            start.arrive_and_wait();
            texts[i] = textOf([&] { crash(i); });
        };
        std::thread other(run, 1);
        run(0);
        other.join();
        return texts;
    }

    std::string announcement() const {
        return "Writing crash dump to \"" + directory.file("Pelk.dmp") + "\"\n";
    }

    TemporaryDirectory directory;
    ScopedEnvironment temporaries{"TMPDIR", directory.path.c_str()};
    platform::FaultTranslator handler = nullptr;
};

TEST_F(CrashHandlerTest, TheFirstOfTwoThreadsWritesTheDump) {
    directory.write("Pelk.dmp", std::string(1 << 20, 'x'));
    testing::internal::CaptureStdout();
    const auto texts = crashTwice([this](int i) { handler(0xc0de0 + i, {}); });
    EXPECT_EQ(testing::internal::GetCapturedStdout(), announcement());
    EXPECT_EQ(texts[0], "Unhandled exception c0de0");
    EXPECT_EQ(texts[1], "Unhandled exception c0de1");
    const std::string dump = directory.read("Pelk.dmp");
    EXPECT_NE(dump.find("memory map\n"), std::string::npos);
    EXPECT_EQ(dump.find("xxxx"), std::string::npos) << "the older file is replaced";

    std::filesystem::remove(directory.file("Pelk.dmp"));
    EXPECT_EQ(textOf([this] { handler(0xbad, {}); }), "Unhandled exception bad");
    EXPECT_EQ(directory.entryCount(), 0) << "once per process";
}

TEST_F(CrashHandlerTest, ADumpThatCannotBeWrittenIsLost) {
    // The second fits, but not with the file's name.
    for (const std::string& setting : {directory.file("missing"), "/" + std::string(252, 'd')}) {
        const ScopedEnvironment other("TMPDIR", setting.c_str());
        crashDumpWritten = 0;
        testing::internal::CaptureStdout();
        EXPECT_EQ(textOf([this] { handler(7, {}); }), "Unhandled exception 7") << setting;
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(directory.entryCount(), 0);
    }
}

#ifdef PELK_TEST_REAL_CRASHES

int* volatile nowhere = nullptr;
volatile int zero = 0;

TEST_F(CrashHandlerTest, RealCrashesBecomeExceptionsEachWithItsCode) {
    testing::internal::CaptureStdout();
    const auto texts = crashTwice([](int) { *nowhere = 1; });
    const std::string second = textOf([] { zero = 1 / zero; });
    EXPECT_EQ(testing::internal::GetCapturedStdout(), announcement());
    EXPECT_EQ(texts, std::vector<std::string>(2, "Unhandled exception b"));
    EXPECT_EQ(second, "Unhandled exception 8");
    const std::string dump = directory.read("Pelk.dmp");
    for (const char* part : {"signal 11\n", "address (nil)", "registers\n", "frame_tests"})
        EXPECT_NE(dump.find(part), std::string::npos) << part;
}

#endif

}  // namespace
