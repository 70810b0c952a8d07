#include "fake_host/materials_module.h"

#include <gtest/gtest.h>

#include <cstring>

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

PelkPluginDesc* MaterialsModule::find(const char* pluginName) const {
    struct FindByName final : EnumPluginDescCallback {
        const char* name = nullptr;
        PelkPluginDesc* found = nullptr;

        int process(PluginDesc* desc) override {
            if (std::strcmp(desc->getName(), name) == 0)
                found = static_cast<PelkPluginDesc*>(desc);
            return !found;
        }
    } callback;
    callback.name = pluginName;
    if (libDesc)
        libDesc->enumPluginDescs(&callback);
    return callback.found;
}
