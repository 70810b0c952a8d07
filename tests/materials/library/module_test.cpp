#include <dlfcn.h>

#include "base/test_heap.h"
#include "fake_host/fake_host.h"
#include "pelk/base/exception_msg.h"
#include "pelk/contract/plugin_desc.h"

namespace {

// The plug-ins in the order in which hosts see them.
const struct {
    const char* name;
    u32 id;
    bool describesItself;
} kPlugins[] = {
    {"Mtl2Sided", 2006140877, true},       {"MtlBump", 2005052650, true},
    {"MtlDiffuse", 2004101502, true},      {"MtlDoubleSided", 2005073001, false},
    {"MtlLayeredBRDF", 2004102130, false}, {"MtlMaterialID", 2008290200, true},
    {"MtlMulti", 2005052701, true},        {"MtlOverride", 2007020199, true},
    {"MtlMayaRamp", 2009111901, false},    {"MtlRenderStats", 2007021701, true},
    {"MtlSingleBRDF", 2004101810, true},   {"MtlWrapperMaya", 2009220400, true},
    {"MtlWrapper", 2008180400, true},
};
constexpr int kNumPlugins = std::size(kPlugins);

TEST(Module, ListsItsPluginsInOrderWithTheirFaces) {
    MaterialsModule module;
    PluginLibDesc& lib = *module.getLibDesc();
    EXPECT_STREQ(lib.getLibraryName(), "Materials");
    EXPECT_STREQ(lib.getLibraryDescription(), "Pelk Materials");
    const auto all = module.kinds();
    ASSERT_EQ(std::ssize(all), kNumPlugins);
    for (int i = 0; i < kNumPlugins; ++i) {
        SCOPED_TRACE(kPlugins[i].name);
        PluginDesc& desc = *all[i];
        EXPECT_STREQ(desc.getName(), kPlugins[i].name);
        EXPECT_EQ(desc.getPluginID(), kPlugins[i].id);
        EXPECT_EQ(desc.supportsInterface(MaterialInterface::kInterfaceID), 1);
        EXPECT_EQ(desc.supportsInterface(PelkPluginInterface::kInterfaceID), 1);
        EXPECT_EQ(desc.supportsInterface(BSDFInterface::kInterfaceID), 0)
            << "offered, but not announced";
        desc.registerPlugin(nullptr);
        desc.unregisterPlugin(nullptr);
        desc.deletePlugin(nullptr);
        Plugin* made = desc.newPlugin(nullptr);
        for (const auto& [id, name] : PelkMaterial::Offered::With<PelkPluginInterface>::kNames) {
            PluginInterface* face = made->getInterface(id);
            ASSERT_TRUE(face) << name;
            EXPECT_EQ(face->getInterfaceID(), id);
            EXPECT_EQ(face->getPlugin(), made);
        }
        EXPECT_EQ(made->getInterface(RTMtlInterface::kInterfaceID) != nullptr,
                  kPlugins[i].describesItself);
        desc.deletePlugin(made);
    }
}

// An exception on its way through the system's loader would end the process or keep its lock.
TEST(Module, LoadsWithoutMemoryNeitherHalfNorForGood) {
    const DebugRecorder quiet;
    using GetLibDesc = PluginLibDesc* (*)();
    int refusals = 0;
    for (bool failed = true; failed; ++refusals) {
        const TestHeap heap;
        heap.refuseAfter(refusals);
        platform::ModuleError error;
        const platform::ModuleHandle module = platform::loadModule(MaterialsModule::path(), error);
        ASSERT_TRUE(module) << error.message;
        heap.refuseNothing();
        const auto entry = reinterpret_cast<GetLibDesc>(platform::findSymbol(module, "getLibDesc"));
        failed = false;
        try {
            entry();
        } catch (const ExceptionMsg&) {
            failed = true;
        }
        EXPECT_EQ(entry()->enumPluginDescs(nullptr), kNumPlugins) << refusals;
        platform::releaseModule(module);
        EXPECT_FALSE(dlopen(MaterialsModule::path(), RTLD_NOW | RTLD_NOLOAD)) << "still loaded";
    }
    EXPECT_GT(refusals, 2 * kNumPlugins) << "a list and a node each";
}

}  // namespace
