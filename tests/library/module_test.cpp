#include <dlfcn.h>

#include <cstring>

#include "fake_host/fake_host.h"
#include "frame/exception_msg.h"
#include "frame/plugin_desc.h"
#include "library/command_lines.h"
#include "platform/debug_stream.h"

namespace {

// The plug-ins in the order in which hosts see them.
const struct {
    const char* name;
    u32 id;
    bool describesItself;
} kPlugins[] = {
    {"Mtl2Sided", 2006140877, true},       {"MtlDiffuse", 2004101502, true},
    {"MtlDoubleSided", 2005073001, false}, {"MtlLayeredBRDF", 2004102130, false},
    {"MtlMaterialID", 2008290200, true},   {"MtlMulti", 2005052701, true},
    {"MtlOverride", 2007020199, true},     {"MtlRenderStats", 2007021701, true},
    {"MtlSingleBRDF", 2004101810, true},   {"MtlWrapperMaya", 2009220400, true},
    {"MtlWrapper", 2008180400, true},
};
constexpr int kNumPlugins = std::size(kPlugins);

// Goes on until a number of descriptors has been seen.
class Collect : public EnumPluginDescCallback {
public:
    explicit Collect(int most) : limit(most) {}

    int process(PluginDesc* desc) override {
        seen.push_back(desc);
        return static_cast<int>(seen.size()) < limit;
    }

    std::vector<PluginDesc*> seen;

private:
    int limit;
};

class RecordingPluginHost : public PelkPluginHost {
public:
    std::vector<std::string> calls;

    void addPluginDesc(PluginDesc* desc) override { add("add", desc->getName()); }
    void removePluginDesc(PluginDesc* desc) override { add("remove", desc->getName()); }
    void addParameter(PluginDesc*, const ParameterDesc& parameter) override {
        add("parameter", parameter.name);
    }

private:
    void add(const char* what, const char* name) {
        calls.push_back(std::string(what) + " " + name);
    }
};

bool isLoaded() {
    void* module = dlopen(MaterialsModule::path(), RTLD_NOW | RTLD_NOLOAD);
    if (module)
        dlclose(module);
    return module != nullptr;
}

TEST(Module, ExportsOneName) {
    const std::vector<std::string> lines =
        linesOf(PELK_NM " -D --defined-only " + std::string(MaterialsModule::path()));
    ASSERT_EQ(lines.size(), 1u) << testing::PrintToString(lines);
    EXPECT_TRUE(lines[0].ends_with(" T getLibDesc")) << lines[0];
}

TEST(Module, UnloadsAndLoadsAgain) {
    for (int i = 0; i < 3; ++i) {
        {
            MaterialsModule module;
            ASSERT_TRUE(module.getLibDesc());
            EXPECT_EQ(module.getLibDesc()->enumPluginDescs(nullptr), kNumPlugins);
            EXPECT_TRUE(isLoaded());
        }
        EXPECT_FALSE(isLoaded()) << "something keeps the module from unloading";
    }
}

TEST(Module, ListsItsPluginsInOrder) {
    MaterialsModule module;
    PluginLibDesc& lib = *module.getLibDesc();
    EXPECT_STREQ(lib.getLibraryName(), "Materials");
    EXPECT_STREQ(lib.getLibraryDescription(), "Pelk Materials");
    Collect all(100), first(1);
    EXPECT_EQ(lib.enumPluginDescs(&all), kNumPlugins);
    EXPECT_EQ(lib.enumPluginDescs(&first), 1) << "the one at which it stopped counts";
    ASSERT_EQ(all.seen.size(), std::size(kPlugins));
    EXPECT_EQ(first.seen, std::vector<PluginDesc*>{all.seen[0]});
    for (int i = 0; i < kNumPlugins; ++i) {
        PluginDesc& desc = *all.seen[i];
        EXPECT_STREQ(desc.getName(), kPlugins[i].name);
        EXPECT_EQ(desc.getPluginID(), kPlugins[i].id);
        EXPECT_EQ(desc.supportsInterface(EXT_MATERIAL), 1);
        EXPECT_EQ(desc.supportsInterface(EXT_PLUGIN_BASE), 1);
        EXPECT_EQ(desc.supportsInterface(EXT_BSDF), 0) << "offered, but not announced";
        EXPECT_EQ(desc.reserved(), 0);
        desc.deletePlugin(nullptr);
    }
}

TEST(Module, RegistersDescriptorsBeforeTheirParameters) {
    MaterialsModule module;
    PelkPluginDesc& desc = *module.find("MtlSingleBRDF");
    desc.registerPlugin(nullptr);
    desc.unregisterPlugin(nullptr);
    RecordingPluginHost host;
    desc.registerPlugin(&host);
    desc.unregisterPlugin(&host);
    EXPECT_EQ(host.calls,
              (std::vector<std::string>{"add MtlSingleBRDF", "parameter filter", "parameter brdf",
                                        "parameter double_sided", "parameter allow_negative_colors",
                                        "remove MtlSingleBRDF"}));
}

class ModuleInstances : public FakeHost {
protected:
    ModuleInstances() {
        platform::setDebugSink([](const char*) {});
    }
    ~ModuleInstances() override { platform::setDebugSink(nullptr); }

    MaterialsModule module;
};

TEST_F(ModuleInstances, HaveTheirFaces) {
    for (const auto& plugin : kPlugins) {
        SCOPED_TRACE(plugin.name);
        PelkMaterial& mtl = make(plugin.name);
        for (const u64 id : {EXT_PLUGIN_BASE, EXT_MATERIAL, EXT_BSDF, EXT_OPAQUE_SHADEABLE}) {
            PluginInterface* face = mtl.getInterface(id);
            ASSERT_TRUE(face) << std::hex << id;
            EXPECT_EQ(face->getInterfaceID(), id);
            EXPECT_EQ(face->getPlugin(), &mtl);
        }
        EXPECT_EQ(mtl.getInterface(EXT_RTMTL) != nullptr, plugin.describesItself);
        EXPECT_EQ(mtl.getInterface(EXT_TEXTURE), nullptr);
        EXPECT_STREQ(mtl.getPluginTypeName(), plugin.name);
        EXPECT_EQ(mtl.getPluginID(), plugin.id);
    }
}

TEST_F(ModuleInstances, AreNotMadeWithoutMemory) {
    for (const auto& plugin : kPlugins) {
        SCOPED_TRACE(plugin.name);
        PluginDesc* desc = module.find(plugin.name);
        int refusals = 0;
        for (Plugin* made = nullptr; !made; ++refusals) {
            HeapProbe heap;
            heap.refuseAfter(refusals);
            // Caught by its type although it was thrown through the module.
            try {
                made = desc->newPlugin(nullptr);
                desc->deletePlugin(made);
            } catch (const ExceptionMsg& e) {
                EXPECT_TRUE(std::string(e.text).starts_with("Memory allocation failure; "))
                    << e.text;
            }
        }
        EXPECT_GT(refusals, 1);
    }
}

TEST_F(ModuleInstances, SurviveAPoolBlockThatCantBeHad) {
    RecordingMaterial base;
    PelkMaterial& single = make("MtlSingleBRDF");
    startFrame(single, {{"brdf", &base}, {"double_sided", 2}});
    PelkMaterial& diffuse = make("MtlDiffuse");
    startFrame(diffuse);
    PelkMaterial& wrapper = make("MtlWrapper");
    startFrame(wrapper, {{"base_material", &base}});
    for (PelkMaterial* mtl : {&single, &diffuse, &wrapper}) {
        FakeContext context = hit();
        HeapProbe heap;
        heap.refuseAfter(0);
        EXPECT_THROW(mtl->getBSDF(context, 0), ExceptionMsg);
        EXPECT_EQ(base.samplersOut, 0) << "the plug-in's sampler is lost";
        heap.refuseAfter(1000);
        BSDFSampler* sampler = mtl->getBSDF(context, 0);
        EXPECT_NE(sampler, nullptr);
        mtl->releaseBSDF(context, sampler);
    }
    HeapProbe heap;
    endRender(diffuse);
    heap.refuseAfter(0);
    startFrame(diffuse);
    FakeContext context = hit();
    EXPECT_EQ(diffuse.getBSDF(context, 0), nullptr) << "without pools there are no samplers";
}

}  // namespace
