#include "pelk/support/plugin_manager.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/support/silent_log.h"

namespace Tarnkit {

namespace {

constexpr std::size_t kMaxList = 51200;
constexpr std::size_t kMaxText = 1023;  // of an entry, and of a directory with a mask behind it

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

/// A list as far as it is read; it may be null.
std::string_view boundedList(const char* list) {
    if (!list)
        return {};
    const void* end = std::memchr(list, 0, kMaxList);
    return {list, end ? static_cast<const char*>(end) - list : kMaxList};
}

/// The entries of a list separated by `;`.
std::vector<std::string_view> splitList(std::string_view rest) {
    std::vector<std::string_view> entries;
    for (std::size_t end; (end = rest.find(';')) != std::string_view::npos;
         rest.remove_prefix(end + 1))
        // A single character is taken for a slip, but at the end of the list for an entry.
        if (end >= 2)
            entries.push_back(rest.substr(0, std::min(end, kMaxText)));
    if (!rest.empty())
        entries.push_back(rest.substr(0, kMaxText));
    return entries;
}

/// Drops blanks in front, and all separators of a run but the last. Two equal separators at the
/// start name a network path and stay.
std::string cleanPath(std::string_view path) {
    path.remove_prefix(std::min(path.find_first_not_of(" \t"), path.size()));
    std::string clean;
    if (path.size() >= 2 && isSeparator(path[0]) && path[0] == path[1]) {
        clean = path[0];
        path.remove_prefix(1);
    }
    for (std::size_t i = 0; i < path.size(); ++i)
        if (!isSeparator(path[i]) || i + 1 == path.size() || !isSeparator(path[i + 1]))
            clean += path[i];
    return clean;
}

/// False if a library threw.
bool loadMask(PluginManager& manager, const std::string& mask, PelkPluginHost* host,
              MessageLog& log) {
    log.info("Loading plugins from \"%s\"", mask.c_str());
    try {
        manager.loadLibrary(mask.c_str(), host, &log);
        return true;
    } catch (...) {
        // Whatever a stranger's code throws, the libraries beside it are still wanted.
        log.error("Fatal error loading plugins.");
        return false;
    }
}

}  // namespace

Plugin* PluginManager::newPlugin(const char* pluginName, PelkPluginHost* host, u64 instanceID) {
    PluginDesc* desc = getPluginDesc(pluginName);
    return desc ? newPlugin(desc->getPluginID(), host, instanceID) : nullptr;
}

bool loadPlugins(PluginManager& manager, const char* directories, const char* masks,
                 PelkPluginHost* host, MessageLog* log) {
    SilentLog silent;
    MessageLog& report = log ? *log : silent;
    const std::vector<std::string_view> maskList = splitList(boundedList(masks));
    bool good = true;
    for (std::string_view directory : splitList(boundedList(directories)))
        for (std::string_view mask : maskList) {
            const std::string path = std::string(directory).append(mask);
            if (path.size() > kMaxText)
                report.error("Plugin path \"%s\" is longer than %zu characters", path.c_str(),
                             kMaxText);
            else
                good &= loadMask(manager, cleanPath(path), host, report);
        }
    report.info("Finished loading plugins.");
    return good;
}

}  // namespace Tarnkit
