#pragma once

#include <vector>

#include "pelk/contract/plugin_desc.h"
#include "pelk/platform/module.h"

/// The built module, loaded as a host loads it, for as long as this lives.
struct MaterialsModule {
    MaterialsModule();
    ~MaterialsModule();
    MaterialsModule(const MaterialsModule&) = delete;
    MaterialsModule& operator=(const MaterialsModule&) = delete;

    static const char* path();

    /// What the module says of itself; null if it did not load, which fails the test.
    Tarnkit::PluginLibDesc* getLibDesc() const { return libDesc; }
    /// All descriptors, in the order in which hosts see them.
    std::vector<Tarnkit::PelkPluginDesc*> kinds() const;

private:
    Tarnkit::platform::ModuleHandle module = nullptr;
    Tarnkit::PluginLibDesc* libDesc = nullptr;
};
