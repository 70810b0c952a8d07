#pragma once

#include "pelk/contract/plugin_base.h"

namespace Tarnkit {

class PluginDesc;

/// One instance of a plug-in, with the name that the scene gave it.
class PELK_API Plugin : public PluginBase {
public:
    ~Plugin() override;

    virtual PluginDesc* getPluginDesc() { return nullptr; }
    /// Keeps a copy of the name; null takes the name away.
    virtual void setPluginName(const char* newName);

    /// The instance's name, null if it has none.
    const char* getPluginName() const { return name; }
    /// The name of the plug-in's kind; null without a descriptor.
    const char* getPluginTypeName();
    /// The numeric id of the plug-in's kind; 0 without a descriptor.
    u32 getPluginID();

    /// The number that a plug-in manager gave this instance; 0 before that.
    u64 getInstanceID() const { return instanceID; }
    void setInstanceID(u64 id) { instanceID = id; }

private:
    char* name = nullptr;
    u64 instanceID = 0;
};

}  // namespace Tarnkit
