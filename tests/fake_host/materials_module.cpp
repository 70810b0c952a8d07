#include "fake_host/materials_module.h"

#include <gtest/gtest.h>

using namespace Tarnkit;

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

std::vector<PelkPluginDesc*> MaterialsModule::kinds() const {
    struct Collect final : EnumPluginDescCallback {
        std::vector<PelkPluginDesc*> seen;

        int process(PluginDesc* desc) override {
            seen.push_back(static_cast<PelkPluginDesc*>(desc));
            return 1;
        }
    } callback;
    if (libDesc)
        libDesc->enumPluginDescs(&callback);
    return callback.seen;
}
