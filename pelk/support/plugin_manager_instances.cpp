#include <algorithm>
#include <cstdint>
#include <cstring>

#include "pelk/contract/plugin.h"
#include "pelk/support/plugin_manager_default.h"
#include "pelk/support/streams.h"

namespace Tarnkit {

namespace {

constexpr u32 kStateChunk = 0x100;

/// Tells whether a library offers a plug-in.
class EnumThisLibraryPlugins final : public EnumPluginDescCallback {
public:
    explicit EnumThisLibraryPlugins(u32 wantedID) : id(wantedID) {}

    int process(PluginDesc* desc) override {
        found |= desc && desc->getPluginID() == id;
        return 1;
    }

    bool found = false;

private:
    u32 id;
};

void deleteInstance(Plugin* plugin) {
    if (PluginDesc* desc = plugin->getPluginDesc())
        desc->deletePlugin(plugin);
}

/// False if the stream ends before the value does.
template <class T>
bool readValue(InputStream& stream, T& value) {
    u32 read = 0;
    return stream.read(&value, sizeof value, read) != 0 && read == sizeof value;
}

}  // namespace

Plugin* DefaultPluginManager::newPlugin(u32 pluginID, PelkPluginHost* host, u64 instanceID) {
    if (instanceID == 0) {
        do
            instanceID = ++nextPluginID;
        while (plugins.contains(instanceID));
    } else {
        if (plugins.contains(instanceID))
            return nullptr;
        // Compared as signed numbers: those of 2^63 and above, a range that a host may keep for
        // itself, count as negative and don't move the automatic ones.
        if (static_cast<std::int64_t>(nextPluginID) < static_cast<std::int64_t>(instanceID))
            nextPluginID = instanceID;
    }
    PluginDesc* desc = getPluginDesc(pluginID);
    Plugin* plugin = desc ? desc->newPlugin(host) : nullptr;
    if (!plugin)
        return nullptr;
    plugin->setInstanceID(instanceID);
    try {
        plugins[instanceID] = plugin;
    } catch (...) {
        desc->deletePlugin(plugin);
        throw;
    }
    return plugin;
}

void DefaultPluginManager::deletePlugin(Plugin* plugin) {
    if (!plugin)
        return;
    plugins.erase(plugin->getInstanceID());
    deleteInstance(plugin);
}

void DefaultPluginManager::deleteAllPlugins() {
    // The next one is looked up by number: an instance may take others with it when it goes.
    for (auto entry = plugins.begin(); entry != plugins.end();) {
        const u64 id = entry->first;
        deleteInstance(entry->second);
        entry = plugins.upper_bound(id);
    }
    plugins.clear();
    nextPluginID = 0;
}

int DefaultPluginManager::enumPlugins(EnumPluginCallback* callback) {
    const int count = static_cast<int>(plugins.size());
    auto entry = callback ? plugins.begin() : plugins.end();
    while (entry != plugins.end()) {
        const u64 id = entry->first;
        if (callback->process(entry->second) == 0)
            break;
        entry = plugins.upper_bound(id);
    }
    return count;
}

Plugin* DefaultPluginManager::getPlugin(u64 instanceID) {
    const auto entry = plugins.find(instanceID);
    return entry == plugins.end() ? nullptr : entry->second;
}

void DefaultPluginManager::setPluginID(Plugin* plugin, u64 instanceID) {
    if (!plugin)
        return;
    // Entered before it is taken out: without memory for the entry it keeps its number.
    plugins[instanceID] = plugin;
    if (plugin->getInstanceID() != instanceID)
        plugins.erase(plugin->getInstanceID());
    plugin->setInstanceID(instanceID);
}

int DefaultPluginManager::saveState(OutputStream& stream) {
    u32 written = 0;
    stream.write(&kStateChunk, sizeof kStateChunk, written);
    stream.write(&nextPluginID, sizeof nextPluginID, written);
    return 1;
}

int DefaultPluginManager::loadState(InputStream& stream) {
    u32 chunk = 0;
    u64 id = 0;
    if (!readValue(stream, chunk) || chunk != kStateChunk || !readValue(stream, id))
        return 0;
    nextPluginID = id;
    return 1;
}

bool DefaultPluginManager::getPluginFileName(Plugin* plugin, char* buffer, int size) {
    if (!plugin)
        return false;
    EnumThisLibraryPlugins search(plugin->getPluginID());
    for (const LoadedLibrary& library : libraries) {
        if (library.desc)
            library.desc->enumPluginDescs(&search);
        if (!search.found)
            continue;
        if (buffer && size > 0) {
            const int length = static_cast<int>(std::strlen(library.fileName));
            const int copied = std::min(length, size - 1);
            std::memcpy(buffer, library.fileName, copied);
            buffer[copied] = 0;
        }
        return true;
    }
    return false;
}

}  // namespace Tarnkit
