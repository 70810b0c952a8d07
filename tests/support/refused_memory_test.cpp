#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "base/test_heap.h"
#include "pelk/base/exception_msg.h"
#include "pelk/base/memory.h"
#include "pelk/contract/channel_alias.h"
#include "pelk/support/console.h"
#include "pelk/support/directory_list.h"
#include "pelk/support/environment.h"
#include "pelk/support/frame_numbers.h"
#include "pelk/support/message_text.h"
#include "pelk/support/plugin_manager_default.h"
#include "pelk/support/regions/text_stamp.h"
#include "pelk/support/spelling.h"
#include "pelk/support/text_tools.h"
#include "pelk/support/thread_manager.h"
#include "support/plugin_modules/listed_library.h"
#include "support/regions/test_channels.h"

using namespace Tarnkit;

namespace {

void usePlugins() {
    struct Release {
        void operator()(PluginManager* manager) const {
            manager->deleteAllPlugins();
            manager->release();
        }
    };
    ListedDesc own(7, "TestOwn");
    const std::unique_ptr<PluginManager, Release> manager(newDefaultPluginManager());
    manager->registerPluginDesc(&own, nullptr);
    loadPlugins(*manager, PELK_MODULE_DIR "/", "*.so", nullptr, nullptr);
    u64 id = 1000;
    for (const char* name : {"MtlDiffuse", "TestOwn", "MtlMulti"})
        manager->setPluginID(manager->newPlugin(name, nullptr, 0), ++id);
    manager->deletePlugin(manager->getPlugin(id));
}

void useThreads() {
    struct Job final : ThreadJob {
        void run(int*, int*, int, int) override {}
        const char* getThreadName() override { return "job"; }
    } job;
    struct Release {
        void operator()(ThreadManager* manager) const { deleteThreadManager(manager); }
    };
    const std::unique_ptr<ThreadManager, Release> manager(newThreadManager());
    for (const int threads : {1, 3})
        manager->runThreads(threads, &job, nullptr, false);
    getThreadPlacement(manager.get(), 3);
}

void useTexts() {
    CharString text("$HOME/${PATH}/%04d");
    expandEnvironment(text);
    findUnsetVariable(text);
    replaceAll(text, CharString("/"), CharString(" and "));
    expandFrameNumber(convertFrameFormat("shot.%04d.<frame12>.#.exr").c_str(), 12);
    const std::string_view names[] = {"MtlDiffuse", "MtlMulti"};
    messageText(didYouMean("MtlDifuse", names) + knownNames("\x1b\n", names));
    tarnkit_cprintf(true, "%s", "");
    DirectoryList list;
    list.construct(PELK_MODULE_DIR "/*");
    list.sort();
}

void useRegions() {
    TestChannels channels;
    for (const int type : {kChannelColor, kChannelFloat, kChannelVector, kChannelAColor})
        channels.add(type, type == kChannelColor ? kAliasHostStamp : -1, "a name of some length");
    PKRegionData region, copy;
    region.setRect(0, 0, 40, 30);
    region.setChannels(channels.list);
    region.beginRendering();
    FragmentList pixel{&region, nullptr};
    for (int i = 0; i < 100; ++i)
        pixel.addFront(i);
    region.storeFragments(1, 1, pixel);
    std::vector<u8> block(static_cast<std::size_t>(region.getBuffer(nullptr, 0)));
    region.getBuffer(block.data(), static_cast<std::int64_t>(block.size()));
    copy.setBuffer(block.data(), static_cast<std::int64_t>(block.size()));
    copy.copyFrom(region);
    copy.syncChannels(channels.list);
    TestMapper mapper('m', 2.0f);
    ColorMapper* const mappers[] = {&mapper};
    std::vector<AColor> colors(40 * 30);
    region.getPixels(0, 1, {0, 0, 40, 30, 40, 30}, kPixelRGBAFloat,
                     static_cast<std::int64_t>(colors.size() * sizeof(AColor)), colors.data(), 0, 1,
                     mappers);
    int width, height;
    freeMemory(renderText("a text", width, height, 100));
}

TEST(RefusedMemory, IsToldAndLeavesNothingBehindWhereverItMeetsASupportModule) {
    const auto former = platform::setDebugSink([](const char*) {});
    // What a library makes when it is loaded has tests of its own, and stays this way.
    platform::ModuleError error;
    ASSERT_TRUE(platform::loadModule(PELK_MODULE_DIR "/pelk_materials.so", error)) << error.message;
    const struct {
        const char* what;
        void (*use)();
    } modules[] = {{"plug-ins", usePlugins},
                   {"threads", useThreads},
                   {"texts", useTexts},
                   {"regions", useRegions}};
    for (const auto& module : modules) {
        module.use();  // what is made once and kept is there from now on
        int granted = 0;
        for (int refused = 1; refused > 0; ++granted)
            for (const bool once : {false, true}) {
                SCOPED_TRACE(module.what + (", blocks: " + std::to_string(granted)));
                const TestHeap heap;
                heap.refuseAfter(granted, once);
                try {
                    module.use();
                } catch (const ExceptionMsg&) {
                } catch (const std::bad_alloc&) {
                }
                heap.refuseNothing();
                refused = heap.state.refused;
                EXPECT_EQ(heap.state.live, 0);
            }
        EXPECT_GT(granted, 5) << module.what;
    }
    platform::setDebugSink(former);
}

}  // namespace
