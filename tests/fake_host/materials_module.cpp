#include "fake_host/materials_module.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace Tarnkit;

namespace {

class FindByName : public EnumPluginDescCallback {
public:
    explicit FindByName(const char* wanted) : name(wanted) {}

    int process(PluginDesc* desc) override {
        if (std::strcmp(desc->getName(), name) != 0)
            return 1;
        found = static_cast<PelkPluginDesc*>(desc);
        return 0;
    }

    PelkPluginDesc* found = nullptr;

private:
    const char* name;
};

}  // namespace

MaterialsModule::MaterialsModule() {
    platform::ModuleError error;
    module = platform::loadModule(path(), error);
    void* entry = module ? platform::findSymbol(module, "getLibDesc") : nullptr;
    if (entry)
        libDesc = reinterpret_cast<PluginLibDesc* (*)()>(entry)();
    EXPECT_TRUE(libDesc) << path() << ": " << error.message;
}

MaterialsModule::~MaterialsModule() {
    EXPECT_TRUE(platform::releaseModule(module));
}

const char* MaterialsModule::path() {
    return PELK_MATERIALS_MODULE;
}

PelkPluginDesc* MaterialsModule::find(const char* pluginName) const {
    FindByName callback(pluginName);
    if (libDesc)
        libDesc->enumPluginDescs(&callback);
    return callback.found;
}
