#pragma once

#include <initializer_list>
#include <vector>

#include "pelk/contract/plugin.h"
#include "pelk/contract/plugin_desc.h"

/// A plug-in kind of which only name and id matter. Counts the instances that live.
struct ListedDesc : Tarnkit::PelkPluginDesc {
    ListedDesc(Tarnkit::u32 descID, const char* descName) : id(descID), name(descName) {}

    Tarnkit::u32 getPluginID() override { return id; }
    Tarnkit::Plugin* newPlugin(Tarnkit::PelkPluginHost*) override { return new Instance(*this); }
    void deletePlugin(Tarnkit::Plugin* plugin) override { delete plugin; }
    int supportsInterface(Tarnkit::u64) override { return 0; }
    const char* getName() override { return name; }

    int alive = 0;

private:
    struct Instance : Tarnkit::Plugin {
        explicit Instance(ListedDesc& desc) : kind(desc) { ++kind.alive; }
        ~Instance() override { --kind.alive; }
        Tarnkit::PluginDesc* getPluginDesc() override { return &kind; }
        ListedDesc& kind;
    };

    Tarnkit::u32 id;
    const char* name;
};

/// A library of such kinds, shown in the order in which they are given.
struct ListedLibrary : Tarnkit::PluginLibDesc {
    ListedLibrary(std::initializer_list<Tarnkit::PluginDesc*> list) : descs(list) {}

    const char* getLibraryName() override { return "Listed"; }
    const char* getLibraryDescription() override { return "A made-up library"; }
    int enumPluginDescs(Tarnkit::EnumPluginDescCallback* callback) override {
        for (Tarnkit::PluginDesc* desc : descs)
            if (callback->process(desc) == 0)
                break;
        return 0;  // which nobody is to rely on
    }

private:
    std::vector<Tarnkit::PluginDesc*> descs;
};

/// What every library of this kind exports.
extern "C" PELK_API Tarnkit::PluginLibDesc* getLibDesc();
