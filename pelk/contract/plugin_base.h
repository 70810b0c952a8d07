#pragma once

#include "pelk/base/api.h"
#include "pelk/contract/interface_id.h"

namespace Tarnkit {

class PluginBase;

/// Root of the interfaces that an object offers: one for being shaded, one for being a texture,
/// and so on. Hosts and plug-ins hold objects as PluginBase and ask them for the interface that
/// they want to use, with findInterface.
///
/// Each interface class answers getInterfaceID and getInterfaceName with its own id. A class that
/// implements several interfaces must not override the two: the override would answer for all of
/// them, and PluginBase::getInterface compares those answers.
///
/// An interface is most often a base class of the object that offers it. Then it is never deleted
/// by itself, and a pointer to it is valid as long as the object.
class PELK_API PluginInterface {
public:
    virtual ~PluginInterface();
    /// The number of the interface's class, the same for all objects. Never 0.
    virtual u64 getInterfaceID() const = 0;
    /// The object that offers this interface, for going on to another interface of it. Null only
    /// if the interface stands alone, which no material and no plug-in of `pelk` does.
    virtual PluginBase* getPlugin() = 0;
    /// "EXT_" and upper case, a literal; null for a class that has no name to show.
    virtual const char* getInterfaceName() const { return nullptr; }
    /// Tells the object that this interface is no longer used, by its releaseInterface. Called by
    /// the object's destructor on interfaces that were added as owned; an interface that is an
    /// object of its own overrides this to delete itself.
    virtual void release();
};

/// Root of plug-ins, descriptors, parameters and managers: an object that can be asked for its
/// interfaces. An object's interfaces are those of its class (an override of getInterface, see
/// InterfaceList) and those that were added to the instance.
///
/// Not copied, since others hold pointers to it and to its interfaces. Interfaces are added and
/// removed on one thread while no other asks; then all threads may ask at once.
class PELK_API PluginBase {
public:
    PluginBase() = default;
    PluginBase(const PluginBase&) = delete;
    PluginBase& operator=(const PluginBase&) = delete;
    /// Calls `release` on the interfaces that were added as owned, in the order in which they were
    /// added, and frees the list.
    virtual ~PluginBase();

    /// The interface with that id, null if the object doesn't offer it. It stays this object's and
    /// isn't handed back. Called from all render threads at once, at hits too: takes no lock and no
    /// memory, and gives the same answer for the whole of a frame. Here: the first of the added
    /// interfaces that has the id. An override answers from its class first and then asks its base.
    virtual PluginInterface* getInterface(u64 id);
    /// Comes from PluginInterface::release. Does nothing here; an object that makes interfaces
    /// on demand frees `interface` in an override.
    virtual void releaseInterface(PluginInterface* interface);
    /// Adds an interface to this instance, before those added so far, so that the newest with an id
    /// is found. With `owned` not 0 the destructor calls its `release`; else it stays the caller's
    /// and must outlive this object or be removed. Returns 1. Throws an ExceptionMsg if there is no
    /// memory; nothing is added then.
    virtual int addInterface(PluginInterface* interface, int owned);
    /// Takes an added interface out, once if it was added twice; nothing is called on it, so an
    /// owned one is the caller's again. Returns 1, or 0 if it isn't there.
    virtual int removeInterface(PluginInterface* interface);

private:
    struct InterfaceNode;
    InterfaceNode* interfaces = nullptr;  ///< newest first; most objects have none
};

/// The interface of that class which `object` offers, null if it offers none or is null itself: a
/// scene need not connect everything. The interface stays the object's and lives as long as it.
///
///     auto* material = findInterface<MaterialInterface>(params.baseMtl);
///     if (!material)
///         return setOpaqueBlack(context);
///
/// At a hit this costs a virtual call and some comparisons; what doesn't change from hit to hit is
/// better looked up in frameBegin.
template <InterfaceClass Interface>
Interface* findInterface(PluginBase* object) {
    return object ? static_cast<Interface*>(object->getInterface(Interface::kInterfaceID))
                  : nullptr;
}

}  // namespace Tarnkit
