#include "pelk/contract/plugin_base.h"

#include <new>

#include "pelk/base/memory.h"

namespace Tarnkit {

struct PluginBase::InterfaceNode {
    PluginInterface* face;
    int owned;
    InterfaceNode* next;
};

PluginInterface::~PluginInterface() = default;

void PluginInterface::release() {
    if (PluginBase* plugin = getPlugin())
        plugin->releaseInterface(this);
}

PluginBase::~PluginBase() {
    // Faces may lean on those that were added before them, so the list is turned round first and
    // goes from the oldest node to the newest.
    InterfaceNode* oldest = nullptr;
    while (InterfaceNode* node = interfaces) {
        interfaces = node->next;
        node->next = oldest;
        oldest = node;
    }
    while (InterfaceNode* node = oldest) {
        oldest = node->next;
        if (node->face && node->owned)
            node->face->release();
        freeMemory(node);
    }
}

PluginInterface* PluginBase::getInterface(u64 id) {
    for (InterfaceNode* node = interfaces; node; node = node->next) {
        if (node->face && node->face->getInterfaceID() == id)
            return node->face;
    }
    return nullptr;
}

void PluginBase::releaseInterface(PluginInterface*) {}

int PluginBase::addInterface(PluginInterface* face, int owned) {
    interfaces = new (allocate(sizeof(InterfaceNode))) InterfaceNode{face, owned, interfaces};
    return 1;
}

int PluginBase::removeInterface(PluginInterface* face) {
    for (InterfaceNode** link = &interfaces; *link; link = &(*link)->next) {
        InterfaceNode* node = *link;
        if (node->face == face) {
            *link = node->next;
            freeMemory(node);
            return 1;
        }
    }
    return 0;
}

}  // namespace Tarnkit
