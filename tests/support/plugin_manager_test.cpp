#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "pelk/support/plugin_manager_default.h"
#include "pelk/support/streams.h"
#include "recording_log.h"
#include "support/plugin_modules/listed_library.h"
#include "temporary_directory.h"

using namespace Tarnkit;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Texts = std::vector<std::string>;

namespace {

/// A host that notes what it gets, and whether the manager knew the name at that moment.
struct RecordingHost final : PelkPluginHost {
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

/// An enumeration by a function.
template <class Callback, class Item>
struct Each final : Callback {
    explicit Each(std::function<int(Item*)> visitor) : visit(std::move(visitor)) {}
    int process(Item* item) override { return visit(item); }
    std::function<int(Item*)> visit;
};
using EachDesc = Each<EnumPluginDescCallback, PluginDesc>;

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
    /// The names that an enumeration gives until it is stopped behind two of them.
    Texts firstDescs() {
        Texts names;
        EachDesc lister([&](PluginDesc* desc) {
            names.push_back(desc->getName());
            return names.size() < 2;
        });
        const int count = manager->enumPluginDescs(&lister);
        EXPECT_EQ(count, std::ssize(names)) << "the one that stops it counts";
        return names;
    }
    /// The number of a new instance of `own`, 0 if there is none.
    u64 newNumber(u64 asked = 0) {
        Plugin* plugin = manager->newPlugin(7, &host, asked);
        return plugin ? plugin->getInstanceID() : 0;
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
    char name[5];
    EXPECT_TRUE(manager->getPluginFileName(glow, name, 5));
    EXPECT_EQ(name, path.substr(0, 4));
    EXPECT_TRUE(manager->getLibraryProc("a.so", "getLibDesc"));
    EXPECT_FALSE(manager->getLibraryProc("", "getLibDesc")) << "the host's own has no module";
    manager->deletePlugin(glow);

    host.texts.clear();
    EXPECT_TRUE(manager->unloadLibrary(library, &host));
    EXPECT_THAT(host.texts, ElementsAre("remove TestTint, unknown", "remove TestGlow, unknown"));
    EXPECT_FALSE(manager->unloadLibrary(library, &host)) << "it is gone";
    EXPECT_FALSE(manager->getPluginDesc("TestTint"));
}

TEST_F(PluginManagerTest, RefusedLibrariesAreReportedAndTheOthersLoaded) {
    install("two_plugins", "z.so");
    install("no_entry", "entry.so");
    install("null_description", "null.so");
    directory.write("text.so", "not a library");
    std::filesystem::resize_file(install("two_plugins", "cut.so"), 4096);
    EXPECT_TRUE(load("*.so")) << "the last one is good";
    EXPECT_THAT(refusals, ElementsAre(testing::HasSubstr("cut short"),
                                      StartsWith("entry.so: no function getLibDesc"),
                                      StartsWith("null.so: getLibDesc gives no"),
                                      StartsWith("text.so: LoadLibrary failed (")));
    EXPECT_EQ(log.texts.end()[-2], "i 1 plugin(s) loaded successfully");
    EXPECT_FALSE(load("missing*.so"));

    // A mask that fits where the path of what it finds does not.
    const std::filesystem::path wide = directory.path / std::string(240, 'd');
    const std::filesystem::path deep = wide / std::string(500 - wide.string().size(), 'e');
    std::filesystem::create_directories(deep);
    std::ofstream(deep / "a_long_name.so");
    EXPECT_FALSE(manager->loadLibrary((deep / "*.so").c_str(), &host, &log));
    EXPECT_EQ(refusals.back(), "a_long_name.so: the path is too long");
}

TEST_F(PluginManagerTest, EachIdBelongsToTheFirstLibraryThatHasIt) {
    install("two_plugins", "a.so");
    install("two_plugins", "b.so");
    PluginLibDesc* a = load("a.so");
    PluginDesc* tint = manager->getPluginDesc("TestTint");
    load("b.so");
    EXPECT_THAT(log.texts, Contains("w Duplicate plugin IDs: TestTint and TestTint"));
    EXPECT_EQ(host.texts.size(), 2u) << "descriptors are added once";
    EXPECT_EQ(manager->getPluginDesc(101), tint);
    EXPECT_THAT(firstDescs(), ElementsAre("TestTint", "TestGlow")) << "of b alone";
    EXPECT_TRUE(manager->unloadLibrary(a, &host));
    EXPECT_TRUE(manager->unloadAllLibraries(&host));
    EXPECT_EQ(host.texts.size(), 6u) << "refused descriptors are told to leave like the others";
    EXPECT_THAT(firstDescs(), IsEmpty());
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
    EXPECT_EQ(tried("p/;q/", "*.a;*.b"), (Texts{"p/*.a", "p/*.b", "q/*.a", "q/*.b"}));
    EXPECT_EQ(tried(";;aa;;bb;", "mm;"), (Texts{"aamm", "bbmm"})) << "empty ends";
    EXPECT_EQ(tried(" \t\\\\host//share\\", "m"), Texts{"\\\\host/share\\m"}) << "a network prefix";
    EXPECT_EQ(tried(dir, "mm"), Texts{dir + "mm"}) << "a path of 1023 characters";
    EXPECT_EQ(tried(dir, "mmm"), Texts()) << "a longer one is refused";
}

TEST_F(PluginManagerTest, LibraryThatThrowsSpoilsTheResultButNotTheOthers) {
    install("throwing_list", "thrower.so");
    EXPECT_THROW(load("thrower.so"), int);
    install("throwing", "a.so");
    install("two_plugins", "b.so");
    const std::string dirs = directory.file("");
    EXPECT_FALSE(loadPlugins(*manager, dirs.c_str(), "a.so;b.so", &host, &log));
    EXPECT_THAT(log.texts, Contains("e Fatal error loading plugins."));
    EXPECT_EQ(refusals.back(), "a.so: no licence");
    // Their records have no description, which the walks pass over.
    EXPECT_THAT(firstDescs(), ElementsAre("TestTint", "TestGlow"));
}

TEST_F(PluginManagerTest, OwnDescriptorsEnterByNameBeforeTheyRegister) {
    ListedDesc second{8, "Second"}, third{9, "Own"};
    for (ListedDesc* desc : {&own, &second, &third, &second})
        EXPECT_EQ(manager->registerPluginDesc(desc, &host), 1);
    EXPECT_EQ(manager->getPluginDesc("Own"), &own) << "the first of a name";
    EXPECT_THAT(host.texts, ElementsAre("add Own, known", "add Second, known", "add Own, unknown",
                                        "remove Second, unknown", "add Second, known"));
    for (int time : {1, 2})  // the second time it is no longer there
        EXPECT_EQ(manager->unregisterPluginDesc(&own, &host), 1) << time;
    EXPECT_THAT(firstDescs(), ElementsAre("Second", "Own")) << "the last one took its place";
    EXPECT_EQ(manager->unregisterAllPluginDescs(&host), 1);
    EXPECT_THAT(firstDescs(), IsEmpty());
}

TEST_F(PluginManagerTest, InstancesAreNumbered) {
    constexpr u64 kUpper = 1ull << 63;
    EXPECT_EQ(newNumber(), 0u) << "nobody makes it";
    manager->registerPluginDesc(&own, nullptr);
    EXPECT_EQ(newNumber(), 2u) << "a number drawn in vain is not given back";
    EXPECT_EQ(newNumber(100), 100u) << "a number of its own";
    EXPECT_EQ(newNumber(50), 50u) << "a lower one";
    EXPECT_EQ(newNumber(kUpper), kUpper) << "one that counts as negative";
    EXPECT_EQ(newNumber(), 101u) << "goes on behind the highest";
    EXPECT_EQ(newNumber(50), 0u) << "in use";
    manager->setNextPluginID(99);
    EXPECT_EQ(newNumber(), 102u) << "100 and 101 are in use";
    manager->deletePlugin(manager->getPlugin(102));
    EXPECT_EQ(newNumber(), 103u) << "nor is that of the dead";
}

TEST_F(PluginManagerTest, InstancesAreFoundMovedAndDeleted) {
    manager->registerPluginDesc(&own, nullptr);
    Plugin* first = manager->newPlugin(7, nullptr, 0);
    Plugin* second = manager->newPlugin(7, nullptr, 0);
    for (Plugin* plugin : {first, second}) {
        manager->setPluginID(plugin, 9);
        EXPECT_EQ(manager->getPlugin(9), plugin);
    }
    EXPECT_EQ(own.alive, 2) << "the displaced one is only not found any more";
    own.deletePlugin(first);

    Each<EnumPluginCallback, Plugin> deleter([&](Plugin* plugin) {
        manager->deletePlugin(plugin);
        return 1;
    });
    newNumber(10);
    EXPECT_EQ(manager->enumPlugins(&deleter), 2);
    EXPECT_EQ(own.alive, 0);
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
    manager->registerPluginDesc(&own, nullptr);
    manager->setNextPluginID(0x0102030405060708);
    EXPECT_EQ(manager->saveState(stream), 1);
    EXPECT_EQ(stream.bytes, saved);
    manager->setNextPluginID(5);
    for (const std::string& bad : {std::string(12, '\1'), saved.substr(0, 11)}) {
        stream.bytes = bad;
        EXPECT_EQ(manager->loadState(stream), 0);
    }
    EXPECT_EQ(newNumber(), 6u);
    stream.bytes = saved;
    EXPECT_EQ(manager->loadState(stream), 1);
    EXPECT_EQ(newNumber(), 0x0102030405060709u);
}

TEST_F(PluginManagerTest, DescriptorsMayBeListedWhileOtherLibrariesGo) {
    install("two_plugins", "a.so");
    install("two_plugins", "b.so");
    PluginLibDesc* const other = load("a.so");
    load("b.so");
    EachDesc unloader([&](PluginDesc*) { return manager->unloadLibrary(other, nullptr) + 1; });
    EXPECT_GE(manager->enumPluginDescs(&unloader), 2);
    EXPECT_EQ(manager->enumLibraries(nullptr), 2);
}

}  // namespace
