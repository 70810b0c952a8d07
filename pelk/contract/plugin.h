#pragma once

#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

class PluginDesc;

/// One instance of a plug-in, as a scene names it: "red", of the kind "MtlDiffuse".
///
/// Made by newPlugin of its descriptor and destroyed by deletePlugin of the same, most often by way
/// of a plug-in manager; whoever made it through the manager deletes it, nothing else does. All
/// operations here are for the one thread that builds the scene, but for the getters, which render
/// threads use in messages.
class PELK_API Plugin : public PluginBase {
public:
    ~Plugin() override;

    /// The descriptor that made this instance; null for one that no descriptor made. Instances must
    /// be gone before their library is unloaded, as the descriptor and the code go with it.
    virtual PluginDesc* getPluginDesc() { return nullptr; }
    /// Keeps a copy of the name; null takes the name away. Throws an ExceptionMsg if there is no
    /// memory; the old name stays then.
    virtual void setPluginName(const char* newName);

    /// The instance's name, which warnings name the instance by; null if it has none. The text is
    /// this object's and valid until the next setPluginName.
    const char* getPluginName() const { return name; }
    /// The same for a message or a list; `without` if it has none.
    const char* getPluginNameOr(const char* without) const { return name ? name : without; }
    /// The name of the plug-in's kind, PluginDesc::getName; null without a descriptor.
    const char* getPluginTypeName();
    /// The number of the plug-in's kind, PluginDesc::getPluginID; 0 without a descriptor.
    u32 getPluginID();

    /// The number that a plug-in manager gave this instance, unlike that of any other instance of
    /// the manager; 0 before that.
    u64 getInstanceID() const { return instanceID; }
    /// For the manager that keeps the instances by their numbers: it would no longer find one
    /// whose number another party has changed.
    void setInstanceID(u64 id) { instanceID = id; }

private:
    char* name = nullptr;  ///< an own copy
    u64 instanceID = 0;
};

}  // namespace Tarnkit
