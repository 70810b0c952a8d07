#include "pelk/contract/plugin_base.h"

#include <new>

#include "pelk/base/memory.h"

namespace Tarnkit {

struct PluginBase::InterfaceNode {
    PluginInterface* interface;
    int owned;
    InterfaceNode* next;
};

PluginInterface::~PluginInterface() = default;

void PluginInterface::release() {
    if (PluginBase* plugin = getPlugin())
        plugin->releaseInterface(this);
}

PluginBase::~PluginBase() {
    // Interfaces are released in the order in which they were added, and the list has the newest
    // first: it is turned round.
    InterfaceNode* oldest = nullptr;
    while (InterfaceNode* node = interfaces) {
        interfaces = node->next;
        node->next = oldest;
        oldest = node;
    }
    while (InterfaceNode* node = oldest) {
        oldest = node->next;
        if (node->interface && node->owned)
            node->interface->release();
        freeMemory(node);
    }
}

PluginInterface* PluginBase::getInterface(u64 id) {
    for (InterfaceNode* node = interfaces; node; node = node->next) {
        if (node->interface && node->interface->getInterfaceID() == id)
            return node->interface;
    }
    return nullptr;
}

void PluginBase::releaseInterface(PluginInterface*) {}

int PluginBase::addInterface(PluginInterface* interface, int owned) {
    interfaces = new (allocate(sizeof(InterfaceNode))) InterfaceNode{interface, owned, interfaces};
    return 1;
}

int PluginBase::removeInterface(PluginInterface* interface) {
    for (InterfaceNode** link = &interfaces; *link; link = &(*link)->next) {
        InterfaceNode* node = *link;
        if (node->interface == interface) {
            *link = node->next;
            freeMemory(node);
            return 1;
        }
    }
    return 0;
}

}  // namespace Tarnkit
