#include <gmock/gmock.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <random>
#include <sstream>
#include <thread>

#include "host/cli/program.h"

using testing::ContainsRegex;

namespace {

/// How much of a test is done: all of it takes minutes, and is for scripts/soak.
int numberOf(const char* variable, int usual) {
    const char* const value = std::getenv(variable);
    return value ? std::atoi(value) : usual;
}

class Faults : public testing::Test {
protected:
    Faults() {
        directory.write("s.json", smallScene());
        pelk.environment["ASAN_OPTIONS"] =
            "detect_leaks=0";  // it can't where a program is followed
    }

    RunResult run(const std::vector<std::string>& words, SystemFault* fault = nullptr) {
        pelk.fault = fault;
        return pelk.run(words);
    }
    void expectDone(const std::vector<std::string>& words) {
        const RunResult result = run(words);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
    }

    /// What a file holds, without what differs from run to run; empty if it is not whole.
    std::string contentOf(const std::string& name) {
        if (name.ends_with(".exr") || name.ends_with(".png")) {
            const std::vector<float> pixels = readPicture(directory.file(name));
            return {reinterpret_cast<const char*>(pixels.data()), pixels.size() * sizeof(float)};
        }
        const std::string bytes = directory.read(name);
        unsigned headerSize = 0;
        if (bytes.size() > 16)
            std::memcpy(&headerSize, bytes.data() + 12, sizeof headerSize);
        return bytes.substr(std::min<std::size_t>(headerSize, bytes.size()));
    }

    Program pelk;
    TemporaryDirectory& directory = pelk.directory;
};

struct Scenario {
    std::vector<std::string> words, targets;
};
const Scenario kScenarios[] = {
    {{"render", "s.json", "-o", "a.exr", "-o", "a.png", "-o", "a.pkr"},
     {"a.exr", "a.png", "a.pkr"}},
    {{"render", "s.json", "-o", "a.exr", "--checkpoint-file", "a.pkc", "--resume"},
     {"a.exr", "a.pkc"}},
    {{"merge", "1.pkr", "2.pkr", "-o", "a.exr", "-o", "b.pkr"}, {"a.exr", "b.pkr"}},
};

/// One of the scenarios under one answer of the system.
class FaultsOf : public Faults, public testing::WithParamInterface<std::tuple<int, int>> {
protected:
    FaultsOf() {
        expectDone({"render", "s.json", "--tile", "1/2", "-o", "1.pkr"});
        expectDone({"render", "s.json", "--tile", "2/2", "-o", "2.pkr"});
        expectDone({"render", "s.json", "--spp", "1", "-o", "a.exr", "--checkpoint-file", "a.pkc"});
        for (const char* name : {"a.png", "a.pkr", "b.pkr"})
            directory.write(name, "older");
        for (const std::string& target : scenario.targets)
            older[target] = directory.read(target);
        expectDone(scenario.words);
        for (const std::string& target : scenario.targets)
            wanted[target] = contentOf(target);
        files = directory.entryCount();
    }

    void runUnder(SystemFault& fault) {
        for (const auto& [target, bytes] : older)
            directory.write(target, bytes);
        const RunResult result = run(scenario.words, &fault);
        for (const auto& [target, bytes] : older)
            EXPECT_TRUE(directory.read(target) == bytes || contentOf(target) == wanted[target])
                << target << " is neither the older nor the new one";
        expectAnswer(fault, result);
        expectDone(scenario.words);
        expectNewTargets();
        if (fault.answer != SystemFault::kKill) {
            EXPECT_EQ(directory.entryCount(), files) << "something is left";
        }
    }
    void expectNewTargets() {
        for (const auto& [target, content] : wanted)
            EXPECT_TRUE(contentOf(target) == content) << target;
    }

    const Scenario& scenario = kScenarios[std::get<0>(GetParam())];
    std::map<std::string, std::string> older, wanted;
    std::ptrdiff_t files = 0;

private:
    void expectAnswer(const SystemFault& fault, const RunResult& result) {
        if (fault.answer == SystemFault::kKill && fault.met) {
            EXPECT_EQ(result.exitCode, -1);
            return;
        }
        if (result.exitCode == 0 || fault.answer == SystemFault::kHalf) {
            EXPECT_EQ(result.exitCode, 0) << "the other half could have been done";
            EXPECT_EQ(result.err, "");
            return expectNewTargets();
        }
        EXPECT_TRUE(result.exitCode == 3 || result.exitCode == 5) << result.exitCode << result.err;
        std::istringstream lines(result.err);
        std::size_t count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            // A checkpoint may fail without the end of the render.
            EXPECT_THAT(line, ContainsRegex("^(pelk|warning): .*[a-z0-9]\\.(json|exr|png|pk[cr])"));
        }
        EXPECT_GT(count, 0u);
        EXPECT_LE(count, older.size()) << result.err;
    }
};

TEST_P(FaultsOf, LoseNothingAndAreTold) {
    const int answer = std::get<1>(GetParam());
    SystemFault none{answer, 1'000'000};
    if (run(scenario.words, &none).exitCode == RunResult::kCannotFollow)
        return;
    int call = 0;
    for (bool met = true; met; call += numberOf("PELK_FAULT_STRIDE", PELK_FAULT_STRIDE)) {
        SCOPED_TRACE("call " + std::to_string(call));
        SystemFault fault{answer, call, answer == ENOSPC};
        runUnder(fault);
        met = fault.met;
    }
    EXPECT_GT(call, PELK_FAULT_STRIDE) << "nothing is followed";
}

TEST_F(Faults, AKilledRenderGoesOnToTheSameBits) {
    using Clock = std::chrono::steady_clock;
    const std::vector<std::string> words{"render",   "s.json",       "--size", "48x48",
                                         "--spp",    "999",          "-o",     "a.exr",
                                         "--resume", "--checkpoint", "0.001"};
    const auto start = Clock::now();
    expectDone(words);
    const std::chrono::duration<double> whole = Clock::now() - start;
    const std::string wanted = contentOf("a.exr");
    const auto startAnew = [&] {
        EXPECT_TRUE(contentOf("a.exr") == wanted);
        std::filesystem::remove(directory.file("a.exr"));
        std::filesystem::remove(directory.file("a.exr.pkc"));
    };
    startAnew();
    std::mt19937 random(1);
    std::uniform_real_distribution<> share(0, 0.7);
    for (int kills = numberOf("PELK_KILLS", PELK_KILLS); kills > 0; --kills) {
        pelk.start(words);
        std::this_thread::sleep_for(whole * share(random));
        pelk.send(SIGKILL);
        const RunResult result = pelk.wait();
        EXPECT_EQ(result.err, "");
        if (std::filesystem::exists(directory.file("a.exr")))
            startAnew();  // killed on its last steps, or not any more
    }
    expectDone(words);
    startAnew();
}

INSTANTIATE_TEST_SUITE_P(Of, FaultsOf,
                         testing::Combine(testing::Range(0, 3),
                                          testing::Values(EIO, ENOSPC, SystemFault::kHalf,
                                                          SystemFault::kKill)));

}  // namespace
