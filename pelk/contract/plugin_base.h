#pragma once

#include "pelk/base/api.h"
#include "pelk/contract/interface_id.h"

namespace Tarnkit {

class PluginBase;

/// Root of the faces that an object offers. Each face class answers with its own id; a class that
/// has several faces must not override getInterfaceID, or it answers for all of them.
class PELK_API PluginInterface {
public:
    virtual ~PluginInterface();
    virtual u64 getInterfaceID() const = 0;
    /// The object whose face this is.
    virtual PluginBase* getPlugin() = 0;
    virtual const char* getInterfaceName() const { return nullptr; }
    /// Tells the object that its face is no longer used.
    virtual void release();
};

/// Root of plug-ins, descriptors and managers: an object that can be asked for its faces.
class PELK_API PluginBase {
public:
    PluginBase() = default;
    PluginBase(const PluginBase&) = delete;
    PluginBase& operator=(const PluginBase&) = delete;
    /// Drops the list of faces, last node first, and releases the owned ones.
    virtual ~PluginBase();

    /// The first face in the list that has the id, or null. The face stays this object's.
    virtual PluginInterface* getInterface(u64 id);
    virtual void releaseInterface(PluginInterface* face);
    /// Puts a face in front of the list. With `owned`, the destructor calls its release. Returns 1.
    virtual int addInterface(PluginInterface* face, int owned);
    /// Takes a face out of the list; nothing is called on it. Returns 0 if it isn't there, else 1.
    virtual int removeInterface(PluginInterface* face);

private:
    struct InterfaceNode;
    InterfaceNode* interfaces = nullptr;
};

/// The interface of that class which `object` offers; null without an object, or if it doesn't.
/// The interface stays the object's and is valid as long as it.
template <InterfaceClass Interface>
Interface* findInterface(PluginBase* object) {
    return object ? static_cast<Interface*>(object->getInterface(Interface::kInterfaceID))
                  : nullptr;
}

}  // namespace Tarnkit
