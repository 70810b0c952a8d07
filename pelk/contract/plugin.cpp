#include "pelk/contract/plugin.h"

#include <cstring>

#include "pelk/base/memory.h"
#include "pelk/contract/plugin_desc.h"

namespace Tarnkit {

Plugin::~Plugin() {
    freeMemory(name);
}

void Plugin::setPluginName(const char* newName) {
    char* copy = nullptr;
    if (newName) {
        // Copied before the old name goes: the new one may lie inside it.
        const std::size_t size = std::strlen(newName) + 1;
        copy = static_cast<char*>(allocate(size));
        std::memcpy(copy, newName, size);
    }
    freeMemory(name);
    name = copy;
}

const char* Plugin::getPluginTypeName() {
    PluginDesc* desc = getPluginDesc();
    return desc ? desc->getName() : nullptr;
}

u32 Plugin::getPluginID() {
    PluginDesc* desc = getPluginDesc();
    return desc ? desc->getPluginID() : 0;
}

}  // namespace Tarnkit
