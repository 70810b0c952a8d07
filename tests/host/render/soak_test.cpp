#include <dlfcn.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "base/test_heap.h"
#include "pelk/host/render/render_job.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/host/scene/scene_reader.h"

namespace Tarnkit {
namespace {

/// Loads the materials, renders a scene with all of them, and unloads them.
void runOnce() {
    {
        HostSession session;
        session.loadModules(PELK_MODULE_DIR "/", nullptr);
        std::string error;
        const auto scene = readScene(session, PELK_SCENES "/showcase.json", {}, error);
        ASSERT_TRUE(scene) << error;
        RenderOptions options;
        options.width = 32;
        options.height = 18;
        options.samples = 1;
        options.channels = {"all"};
        options.threads = 2;
        Picture picture;
        const RenderResult result = renderScene(*scene, options, nullptr, nullptr, false, picture);
        ASSERT_TRUE(result.ok) << result.error;
    }
    ASSERT_FALSE(dlopen(PELK_MODULE_DIR "/pelk_materials.so", RTLD_NOW | RTLD_NOLOAD));
}

/// How many descriptors or threads the process has.
std::ptrdiff_t entriesOf(const char* directory) {
    return std::distance(std::filesystem::directory_iterator(directory), {});
}

// For longer by scripts/soak.
TEST(Soak, LoadingRenderingAndUnloadingHoldNoMoreFromRoundToRound) {
    using Clock = std::chrono::steady_clock;
    const char* const asked = std::getenv("PELK_SOAK_SECONDS");
    const auto end =
        Clock::now() + std::chrono::seconds(asked ? std::atoi(asked) : PELK_SOAK_SECONDS);
    platform::setDebugSink([](const char*) {});
    const TestHeap heap;
    runOnce();  // what is made once and kept is there from now on
    runOnce();
    const int blocks = heap.state.live;
    const auto descriptors = entriesOf("/proc/self/fd"), threads = entriesOf("/proc/self/task");
    const std::uint64_t bytes = platform::systemHeap().report().usedBytes;
    std::uint64_t rounds = 0;
    do {
        runOnce();
        ASSERT_EQ(heap.state.live, blocks) << "round " << rounds;
        ASSERT_EQ(entriesOf("/proc/self/fd"), descriptors) << "round " << rounds;
        ++rounds;
    } while (Clock::now() < end && !HasFatalFailure());
    EXPECT_EQ(entriesOf("/proc/self/task"), threads);
    // Of libraries in C too, as far as the places that their heap loses between blocks allow.
    EXPECT_LT(platform::systemHeap().report().usedBytes, bytes + 100'000 + 500 * rounds);
    platform::setDebugSink(nullptr);
}

}  // namespace
}  // namespace Tarnkit
