#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "frame/exception_msg.h"
#include "frame/test_heap.h"
#include "recording_log.h"
#include "support/plugin_manager_default.h"
#include "support/plugin_modules/listed_library.h"
#include "support/streams.h"
#include "temporary_directory.h"

using namespace Tarnkit;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Texts = std::vector<std::string>;

namespace {

/// A host that notes what it gets, and whether the manager knew the name at that moment.
class RecordingHost final : public PelkPluginHost {
public:
    Texts texts;
    PluginManager* manager = nullptr;

    void addPluginDesc(PluginDesc* desc) override { note("add ", desc); }
    void removePluginDesc(PluginDesc* desc) override { note("remove ", desc); }
    void addParameter(PluginDesc*, const ParameterDesc&) override {}

private:
    void note(std::string text, PluginDesc* desc) {
        const bool known = manager->getPluginDesc(desc->getName()) == desc;
        texts.push_back(text + desc->getName() + (known ? ", known" : ", unknown"));
    }
};

/// Shows what an enumeration gives, as text, and stops after `limit` of them.
struct DescLister final : EnumPluginDescCallback {
    explicit DescLister(size_t most = 1000) : limit(most) {}
    int process(PluginDesc* desc) override {
        texts.push_back(desc->getName());
        return texts.size() < limit;
    }
    Texts texts;
    size_t limit;
};

class PluginManagerTest : public testing::Test, public LibraryRefusedCallback {
protected:
    PluginManagerTest() {
        host.manager = manager;
        manager->setRefusedCallback(this);
    }
    ~PluginManagerTest() override {
        manager->deleteAllPlugins();
        manager->release();
    }
    void refused(const char* path, const char* reason) override {
        refusals.push_back(std::filesystem::path(path).filename().string() + ": " + reason);
    }

    /// Puts a copy of one of the libraries made for these tests into the directory.
    std::string install(const std::string& library, const std::string& name) {
        std::filesystem::copy_file(TEST_PLUGIN_MODULES + library + ".so", directory.file(name));
        return directory.file(name);
    }
    PluginLibDesc* load(const std::string& mask) {
        return manager->loadLibrary(directory.file(mask).c_str(), &host, &log);
    }
    static bool isMapped(const std::string& path) {
        std::ifstream maps("/proc/self/maps");
        return std::string(std::istreambuf_iterator<char>(maps), {}).find(path) != path.npos;
    }
    Texts descs(int limit = 1000) {
        DescLister lister(limit);
        manager->enumPluginDescs(&lister);
        return lister.texts;
    }

    TemporaryDirectory directory;
    RecordingLog log;
    RecordingHost host;
    Texts refusals;
    DefaultPluginManager* manager = newDefaultPluginManager();
    ListedDesc own{7, "Own"};
};

TEST_F(PluginManagerTest, LibraryIsLoadedUsedAndLetGo) {
    const std::string path = install("two_plugins", "a.so");
    PluginLibDesc* library = load("?.so");
    ASSERT_TRUE(library);
    EXPECT_THAT(log.texts, ElementsAre("d loadLibrary(" + directory.file("?.so") + ")",
                                       "d Loading plugin \"" + path + "\"",
                                       "d Found plugin \"TestTint\"", "d Found plugin \"TestGlow\"",
                                       "d Plugin library \"" + path + "\" loaded",
                                       "i 1 plugin(s) loaded successfully", "finish"));
    EXPECT_THAT(host.texts, ElementsAre("add TestTint, unknown", "add TestGlow, unknown"));

    Plugin* glow = manager->newPlugin("TestGlow", &host, 0);
    ASSERT_TRUE(glow);
    EXPECT_EQ(glow->getPluginDesc(), manager->getPluginDesc(102));
    char name[512] = "untouched";
    EXPECT_TRUE(manager->getPluginFileName(glow, name, 0));
    EXPECT_STREQ(name, "untouched");
    EXPECT_TRUE(manager->getPluginFileName(glow, name, 5));
    EXPECT_EQ(name, path.substr(0, 4));
    EXPECT_TRUE(manager->getLibraryProc("a.so", "getLibDesc"));
    EXPECT_FALSE(manager->getLibraryProc("a.so", "getNothing"));
    EXPECT_FALSE(manager->getLibraryProc("", "getLibDesc")) << "the host's own has no module";
    EXPECT_FALSE(manager->getLibraryProc("a.so", nullptr));
    manager->deletePlugin(glow);

    host.texts.clear();
    EXPECT_TRUE(manager->unloadLibrary(library, &host));
    EXPECT_THAT(host.texts, ElementsAre("remove TestTint, unknown", "remove TestGlow, unknown"));
    EXPECT_FALSE(isMapped(path));
    EXPECT_FALSE(manager->unloadLibrary(library, &host)) << "it is gone";
    EXPECT_FALSE(manager->getPluginDesc("TestTint"));
    EXPECT_EQ(manager->enumLibraries(nullptr), 1);
}

TEST_F(PluginManagerTest, RefusedLibraryIsReportedAndTheNextOneLoaded) {
    directory.write("text.so", "not a library");
    std::filesystem::create_directory(directory.file("text.so.dir"));
    install("two_plugins", "z.so");
    const auto expectRefused = [&](std::string name, const std::string& error,
                                   const std::string& reason, bool stays) {
        SCOPED_TRACE(name);
        if (name != "text")
            install(name, name + ".so");
        const std::string path = directory.file(name += ".so");
        EXPECT_FALSE(load(name));
        ASSERT_EQ(log.texts.size(), 5u);
        EXPECT_THAT(log.texts[2], StartsWith("e Error " + error + " \"" + path + "\""));
        EXPECT_EQ(log.texts[3], "i 0 plugin(s) loaded successfully");
        EXPECT_THAT(refusals, ElementsAre(StartsWith(name + ": " + reason)));
        EXPECT_EQ(isMapped(path), stays);
        EXPECT_EQ(manager->enumLibraries(nullptr), 1);
        log.texts.clear();
        refusals.clear();
    };
    const std::string description = "getting library description";
    expectRefused("text", "loading plugin library", "LoadLibrary failed (", false);
    expectRefused("no_entry", description, "no function getLibDesc", true);
    expectRefused("borrowed_entry", description, "no function getLibDesc", true);
    expectRefused("null_description", description, "getLibDesc gives no", false);
    EXPECT_TRUE(load("*.so*")) << "the last one is good";
    EXPECT_EQ(refusals.size(), 5u) << "a directory is refused like a file";
    EXPECT_EQ(log.texts.end()[-2], "i 1 plugin(s) loaded successfully");
}

TEST_F(PluginManagerTest, EachIdBelongsToOneDescriptorOfTheLibraries) {
    install("two_plugins", "a.so");
    install("two_plugins", "b.so");
    install("same_ids", "c.so");
    PluginLibDesc* a = load("a.so");
    PluginDesc* tint = manager->getPluginDesc("TestTint");
    host.texts.clear();
    log.texts.clear();
    load("b.so");
    PluginLibDesc* c = load("c.so");
    std::erase_if(log.texts, [](const std::string& text) { return text[0] != 'w'; });
    EXPECT_THAT(log.texts, ElementsAre("w Duplicate plugin IDs: TestTint and TestTint",
                                       "w Duplicate plugin IDs: TestGlow and TestGlow",
                                       "w Duplicate plugin IDs: TestSecond and TestFirst",
                                       "w Duplicate plugin IDs: TestFirst and TestSecond"));
    EXPECT_THAT(host.texts, ElementsAre("add TestAlone, unknown"));
    EXPECT_EQ(manager->getPluginDesc(101), tint);
    EXPECT_THAT(descs(), ElementsAre("TestFirst", "TestAlone", "TestSecond", "TestTint", "TestGlow",
                                     "TestTint", "TestGlow"));
    DescLister four(4);
    EXPECT_EQ(manager->enumPluginDescs(&four), 4) << "the one that stopped it counts";

    host.texts.clear();
    EXPECT_TRUE(manager->unloadLibrary(a, &host));  // c takes its place, before b
    EXPECT_THAT(descs(1), ElementsAre("TestTint"));
    EXPECT_TRUE(manager->unloadLibrary(c, &host));
    EXPECT_EQ(host.texts.size(), 5u) << "refused descriptors are told to leave like the others";
    EXPECT_TRUE(manager->unloadAllLibraries(&host));
    EXPECT_THAT(descs(), IsEmpty());
}

TEST_F(PluginManagerTest, ListsAreCutAndJoinedByTheRules) {
    const std::string dir(1021, 'd');
    // The masks that were tried.
    const auto tried = [&](const std::string& dirs, const std::string& masks) {
        log.texts.clear();
        EXPECT_TRUE(loadPlugins(*manager, dirs.c_str(), masks.c_str(), &host, &log));
        EXPECT_EQ(log.texts.back(), "i Finished loading plugins.");
        Texts found;
        for (const std::string& text : log.texts)
            if (text.starts_with("i Loading plugins from \""))
                found.push_back(text.substr(24, text.size() - 25));
        return found;
    };
    EXPECT_EQ(tried("a;bc;d", "x"), (Texts{"bcx", "dx"})) << "one character counts at the end";
    EXPECT_EQ(tried("/p/;/q/", "*.a;*.b"), (Texts{"/p/*.a", "/p/*.b", "/q/*.a", "/q/*.b"}));
    EXPECT_EQ(tried(";;aa;;bb;", "mm;"), (Texts{"aamm", "bbmm"})) << "empty ends";
    EXPECT_EQ(tried("a/\\b\\//", "/m"), Texts{"a\\b/m"}) << "the last of a run stays";
    EXPECT_EQ(tried(" \t\\\\host//share\\", "m"), Texts{"\\\\host/share\\m"}) << "a network prefix";
    EXPECT_EQ(tried("\\/host/", "m"), Texts{"/host/m"}) << "a mixed one is a run";
    EXPECT_EQ(tried(dir, "mm"), Texts{dir + "mm"}) << "a path of 1023 characters";
    EXPECT_EQ(tried(dir, "mmm"), Texts()) << "a longer one is refused";
    EXPECT_EQ(tried(std::string(51199, ';') + "abc", "m"), Texts{"am"}) << "reading ends there";
    EXPECT_TRUE(loadPlugins(*manager, nullptr, nullptr, nullptr, nullptr));
}

TEST_F(PluginManagerTest, LibraryThatThrowsSpoilsTheResultButNotTheOthers) {
    install("throwing", "a.so");
    install("two_plugins", "b.so");
    const std::string dirs = directory.file("");
    EXPECT_FALSE(loadPlugins(*manager, dirs.c_str(), "a.so;b.so", &host, &log));
    EXPECT_TRUE(manager->getPluginDesc("TestTint"));
    EXPECT_THAT(log.texts, testing::Contains("e Fatal error loading plugins."));
    EXPECT_THAT(refusals, ElementsAre("a.so: no licence"));
    // Its record has no description: the walks pass over it, and it can't be let go.
    EXPECT_EQ(manager->enumLibraries(nullptr), 3);
    EXPECT_THAT(descs(), ElementsAre("TestTint", "TestGlow"));
    EXPECT_FALSE(manager->unloadAllLibraries(&host));
    EXPECT_EQ(manager->enumLibraries(nullptr), 2);
}

TEST_F(PluginManagerTest, MasksWithoutAUsablePathAreRefused) {
    EXPECT_FALSE(manager->loadLibrary(nullptr, &host, &log));
    EXPECT_THAT(log.texts, IsEmpty());
    EXPECT_FALSE(load("missing*.so"));
    EXPECT_EQ(log.texts.size(), 1u) << "nothing found: nothing more is said";
    log.texts.clear();
    for (const std::string& mask :
         {std::string(), "/" + std::string(511, 'x'), directory.file("")}) {
        EXPECT_FALSE(manager->loadLibrary(mask.c_str(), &host, &log));
        EXPECT_THAT(log.texts.back(), StartsWith("e Plugin mask \"" + mask + "\""));
    }
    // The mask fits 511 characters, the path of what it finds doesn't.
    const std::filesystem::path wide = directory.path / std::string(240, 'd');
    const std::filesystem::path deep = wide / std::string(500 - wide.string().size(), 'e');
    std::filesystem::create_directories(deep);
    std::ofstream(deep / "a_long_name.so");
    EXPECT_FALSE(manager->loadLibrary((deep / "*.so").c_str(), &host, &log));
    EXPECT_THAT(refusals, ElementsAre("a_long_name.so: the path is too long"));
}

TEST_F(PluginManagerTest, OwnDescriptorsEnterByNameBeforeTheyRegister) {
    ListedDesc second{8, "Second"}, third{9, "Own"};
    EXPECT_EQ(manager->registerPluginDesc(&own, &host), 1);
    manager->registerPluginDesc(&second, &host);
    manager->registerPluginDesc(&third, &host);
    EXPECT_EQ(manager->getPluginDesc("Own"), &own) << "the first of a name";
    EXPECT_FALSE(manager->getPluginDesc(static_cast<const char*>(nullptr)));
    manager->registerPluginDesc(&second, &host);
    EXPECT_THAT(host.texts, ElementsAre("add Own, known", "add Second, known", "add Own, unknown",
                                        "remove Second, unknown", "add Second, known"));
    for (int time : {1, 2})  // the second time it is no longer there
        EXPECT_EQ(manager->unregisterPluginDesc(&own, &host), 1) << time;
    EXPECT_THAT(descs(), ElementsAre("Second", "Own")) << "the last one took its place";
    host.texts.clear();
    EXPECT_EQ(manager->unregisterAllPluginDescs(&host), 1);
    EXPECT_THAT(host.texts, ElementsAre("remove Own, unknown", "remove Second, unknown"));

    SystemLibDesc library(*manager);
    library.add(&own, nullptr);
    library.add(&second, nullptr);
    DescLister all, two(2);
    EXPECT_EQ(library.enumPluginDescs(&all), 2);
    EXPECT_EQ(library.enumPluginDescs(&two), 1) << "the one that stopped it doesn't count";
}

TEST_F(PluginManagerTest, InstancesAreNumbered) {
    constexpr u64 kUpper = 1ull << 63;
    manager->registerPluginDesc(&own, nullptr);
    const auto number = [&](u64 asked) {
        Plugin* plugin = manager->newPlugin(7, &host, asked);
        return plugin ? plugin->getInstanceID() : 0;
    };
    EXPECT_EQ(number(0), 1u);
    EXPECT_EQ(number(100), 100u) << "a number of its own";
    EXPECT_EQ(number(0), 101u) << "goes on behind it";
    EXPECT_EQ(number(50), 50u) << "a lower one";
    EXPECT_EQ(number(0), 102u) << "is not set back";
    EXPECT_EQ(number(50), 0u) << "in use";
    EXPECT_EQ(number(kUpper), kUpper) << "the upper half counts as negative";
    EXPECT_EQ(manager->newPlugin("Own", nullptr, 0)->getInstanceID(), 103u) << "next stands";
    manager->setNextPluginID(99);
    EXPECT_FALSE(manager->newPlugin("Stranger", nullptr, 0));
    EXPECT_FALSE(manager->newPlugin(8, nullptr, 0));  // draws 104, as 100 to 103 are in use
    EXPECT_EQ(number(0), 105u) << "a number drawn in vain is not given back";
    manager->deletePlugin(manager->getPlugin(105));
    EXPECT_EQ(number(0), 106u) << "nor that of the dead";

    struct Lister final : EnumPluginCallback {
        int process(Plugin* plugin) override {
            ids.push_back(plugin->getInstanceID());
            return ids.size() < limit;
        }
        std::vector<u64> ids;
        size_t limit = 1000;
    } all, two;
    two.limit = 2;
    EXPECT_EQ(manager->enumPlugins(&all), 8);
    EXPECT_THAT(all.ids, ElementsAre(1, 50, 100, 101, 102, 103, 106, kUpper));
    EXPECT_EQ(manager->enumPlugins(&two), 8) << "all count";
    EXPECT_EQ(two.ids.size(), 2u);
}

TEST_F(PluginManagerTest, InstancesAreFoundMovedAndDeleted) {
    manager->registerPluginDesc(&own, nullptr);
    Plugin* first = manager->newPlugin(7, nullptr, 0);
    Plugin* second = manager->newPlugin(7, nullptr, 0);
    char name[] = "xxxx";
    EXPECT_TRUE(manager->getPluginFileName(first, name, sizeof name));
    EXPECT_STREQ(name, "") << "the host's own have no file";
    for (Plugin* plugin : {first, second}) {
        manager->setPluginID(plugin, 9);
        EXPECT_EQ(manager->getPlugin(9), plugin);
    }
    EXPECT_EQ(manager->enumPlugins(nullptr), 1);
    EXPECT_EQ(own.alive, 2) << "the displaced one is only not found any more";
    own.deletePlugin(first);

    struct Deleter final : EnumPluginCallback {
        PluginManager* manager = nullptr;
        int process(Plugin* plugin) override {
            manager->deletePlugin(plugin);
            return 1;
        }
    } deleter;
    deleter.manager = manager;
    manager->newPlugin(7, nullptr, 10);
    manager->enumPlugins(&deleter);
    EXPECT_EQ(own.alive, 0);
    manager->newPlugin(7, nullptr, 0);
    manager->deleteAllPlugins();
    EXPECT_EQ(own.alive, 0);
    EXPECT_EQ(manager->newPlugin(7, nullptr, 0)->getInstanceID(), 1u);
}

TEST_F(PluginManagerTest, InstanceThatCannotBeEnteredIsGivenBack) {
    manager->registerPluginDesc(&own, nullptr);
    const TestHeap heap;
    TestHeap::refuseAfter(0);
    EXPECT_THROW(manager->newPlugin(7, nullptr, 0), ExceptionMsg);
    EXPECT_EQ(own.alive, 0);
    EXPECT_EQ(manager->enumPlugins(nullptr), 0);
}

TEST_F(PluginManagerTest, StateIsALabelAndTheLastNumber) {
    struct Stream final : OutputStream, InputStream {
        std::string bytes;
        int write(const void* data, u32 size, u32& written) override {
            bytes.append(static_cast<const char*>(data), written = size);
            return 1;
        }
        int read(void* data, u32 size, u32& read) override {
            read = static_cast<u32>(bytes.copy(static_cast<char*>(data), size));
            bytes.erase(0, read);
            return read == size;
        }
    } stream;
    const std::string saved("\0\1\0\0\x08\x07\x06\x05\x04\x03\x02\x01", 12);
    manager->setNextPluginID(0x0102030405060708);
    EXPECT_EQ(manager->saveState(stream), 1);
    EXPECT_EQ(stream.bytes, saved);

    manager->registerPluginDesc(&own, nullptr);
    u64 next = 5;
    manager->setNextPluginID(next);
    for (const std::string& bad : {std::string(), "\1" + saved.substr(1), saved.substr(0, 11)}) {
        stream.bytes = bad;
        EXPECT_EQ(manager->loadState(stream), 0);
        EXPECT_EQ(manager->newPlugin(7, nullptr, 0)->getInstanceID(), ++next) << bad.size();
    }
    stream.bytes = saved;
    EXPECT_EQ(manager->loadState(stream), 1);
    EXPECT_EQ(manager->newPlugin(7, nullptr, 0)->getInstanceID(), 0x0102030405060709u);
}

}  // namespace
