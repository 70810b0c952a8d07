#include <algorithm>

#include "pelk/support/plugin_manager_default.h"

namespace Tarnkit {

namespace {

/// Finds the descriptor with an id, other than `self`.
class FindPluginDescCb final : public EnumPluginDescCallback {
public:
    FindPluginDescCb(PluginDesc* asking, u32 wantedID) : self(asking), id(wantedID) {}

    int process(PluginDesc* desc) override {
        if (!desc || desc == self || desc->getPluginID() != id)
            return 1;
        found = desc;
        return 0;
    }

    PluginDesc* found = nullptr;

private:
    PluginDesc* self;
    u32 id;
};

/// Passes the descriptors of one library on to the user's callback, counts them, and notes whether
/// the callback stopped. What enumPluginDescs of a library returns is not used for either: it is a
/// stranger's code, and the host's own library counts differently.
class EnumDescs final : public EnumPluginDescCallback {
public:
    explicit EnumDescs(EnumPluginDescCallback* user) : callback(user) {}

    int process(PluginDesc* desc) override {
        if (!desc)
            return 1;
        ++count;
        if (!callback || callback->process(desc) != 0)
            return 1;
        stop = true;
        return 0;
    }

    int count = 0;
    bool stop = false;

private:
    EnumPluginDescCallback* callback;
};

}  // namespace

int SystemLibDesc::enumPluginDescs(EnumPluginDescCallback* callback) {
    if (callback)
        // The size is read anew each time, as the callback may register and unregister.
        for (int i = 0; i < descs.size(); ++i)
            if (callback->process(descs[i]) == 0)
                return i;
    return descs.size();
}

void SystemLibDesc::add(PluginDesc* desc, PelkPluginHost* host) {
    remove(desc, host);
    descs.append(desc);
    manager.enterName(desc);
    desc->registerPlugin(host);
}

void SystemLibDesc::remove(PluginDesc* desc, PelkPluginHost* host) {
    for (int i = descs.size() - 1; i >= 0; --i)
        if (descs[i] == desc)
            return removeAt(i, host);
}

void SystemLibDesc::removeAll(PelkPluginHost* host) {
    while (!descs.isEmpty())
        removeAt(descs.size() - 1, host);
    descs.free();
}

void SystemLibDesc::removeAt(int index, PelkPluginHost* host) {
    PluginDesc* desc = descs[index];
    manager.dropName(desc);
    descs.removeBySwap(index);
    desc->unregisterPlugin(host);
}

DefaultPluginManager::DefaultPluginManager() {
    LoadedLibrary system{};
    system.desc = &systemLib;
    libraries.append(system);
}

DefaultPluginManager::~DefaultPluginManager() {
    unloadAllLibraries(nullptr);
    unregisterAllPluginDescs(nullptr);
}

DefaultPluginManager* newDefaultPluginManager() {
    return new DefaultPluginManager;
}

int DefaultPluginManager::registerPluginDesc(PluginDesc* desc, PelkPluginHost* host) {
    if (desc)
        systemLib.add(desc, host);
    return 1;
}

int DefaultPluginManager::unregisterPluginDesc(PluginDesc* desc, PelkPluginHost* host) {
    systemLib.remove(desc, host);
    return 1;
}

int DefaultPluginManager::unregisterAllPluginDescs(PelkPluginHost* host) {
    systemLib.removeAll(host);
    return 1;
}

int DefaultPluginManager::enumLibraries(EnumPluginLibCallback* callback) {
    if (callback)
        // Here as below, the callback may unload libraries, so that the table gets shorter.
        for (int i = libraries.size() - 1; i >= 0; i = std::min(i, libraries.size()) - 1)
            if (libraries[i].desc && callback->process(libraries[i].desc) == 0)
                break;
    return libraries.size();
}

int DefaultPluginManager::enumPluginDescs(EnumPluginDescCallback* callback) {
    int count = 0;
    for (int i = libraries.size() - 1; i >= 0; i = std::min(i, libraries.size()) - 1) {
        if (!libraries[i].desc)
            continue;
        EnumDescs counting(callback);
        libraries[i].desc->enumPluginDescs(&counting);
        count += counting.count;
        if (counting.stop)
            break;
    }
    return count;
}

PluginDesc* DefaultPluginManager::getPluginDesc(const char* pluginName) {
    PluginDesc** desc = pluginName ? descsByName.find(pluginName) : nullptr;
    return desc ? *desc : nullptr;
}

PluginDesc* DefaultPluginManager::getPluginDesc(u32 pluginID) {
    FindPluginDescCb find(nullptr, pluginID);
    for (int i = 0; i < libraries.size() && !find.found; ++i)
        searchLibrary(libraries[i], find);
    return find.found;
}

/// Another descriptor with the same id, attached or not, in any library.
PluginDesc* DefaultPluginManager::findDuplicate(PluginDesc* desc) {
    FindPluginDescCb find(desc, desc->getPluginID());
    for (int i = libraries.size() - 1; i >= 0 && !find.found; --i)
        searchLibrary(libraries[i], find);
    return find.found;
}

/// Shows a library's descriptors to `callback`. If the library throws, the search goes on with the
/// next one: its fault must not hide the plug-ins of others.
void DefaultPluginManager::searchLibrary(const LoadedLibrary& library,
                                         EnumPluginDescCallback& callback) {
    try {
        if (library.desc)
            library.desc->enumPluginDescs(&callback);
    } catch (...) {
    }
}

}  // namespace Tarnkit
