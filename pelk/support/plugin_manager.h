#pragma once

#include "pelk/base/types.h"
#include "pelk/contract/plugin_desc.h"

namespace Tarnkit {

class InputStream;
class MessageLog;
class OutputStream;
class Plugin;

/// Receives libraries one by one.
class EnumPluginLibCallback {
public:
    /// Returns 0 to stop the enumeration, anything else to go on.
    virtual int process(PluginLibDesc* library) = 0;

protected:
    ~EnumPluginLibCallback() = default;
};

/// Receives plug-in instances one by one. It may delete the one that it was given.
class EnumPluginCallback {
public:
    /// Returns 0 to stop the enumeration, anything else to go on.
    virtual int process(Plugin* plugin) = 0;

protected:
    ~EnumPluginCallback() = default;
};

/// The host's keeper of plug-ins: loads the libraries, finds what they offer by name and id, and
/// makes, numbers, finds and deletes instances.
///
/// `host` is handed on to the descriptors as it is and may be null, as may any log; without a log
/// nothing is reported. Nothing here takes a lock: callers keep their calls from overlapping.
/// Memory failure is an ExceptionMsg.
class PluginManager : public PluginBase {
public:
    /// Loads every library that matches a file mask, such as "/plugins/*.so", and registers what
    /// it offers. A library that can't be used is reported and passed over; so is a plug-in whose
    /// id another one has, in any library. Returns the description of the last library loaded,
    /// null if none was.
    virtual PluginLibDesc* loadLibrary(const char* mask, PelkPluginHost* host, MessageLog* log) = 0;
    /// Unregisters what the library offers and releases it. Its instances must be gone. False if
    /// no such library is loaded or the system would not let it go.
    virtual bool unloadLibrary(PluginLibDesc* library, PelkPluginHost* host) = 0;
    /// The same for all libraries, the last one first. False if one of them stays.
    virtual bool unloadAllLibraries(PelkPluginHost* host) = 0;

    /// Enters a descriptor of the host's own; one that stands already is taken out first. It must
    /// live until it is unregistered. Returns 1.
    virtual int registerPluginDesc(PluginDesc* desc, PelkPluginHost* host) = 0;
    /// Takes such a descriptor out again. Returns 1, also if it wasn't there.
    virtual int unregisterPluginDesc(PluginDesc* desc, PelkPluginHost* host) = 0;
    /// Takes them all out, the last one first. Returns 1.
    virtual int unregisterAllPluginDescs(PelkPluginHost* host) = 0;

    /// Shows the libraries, the last one first; the library of the host's own descriptors, which
    /// is always there, comes at the end. Returns the number of all. The callback may be null.
    virtual int enumLibraries(EnumPluginLibCallback* callback) = 0;
    /// Shows the descriptors of all libraries, in the same order. Returns the number visited, the
    /// one at which the callback stopped included. The callback may be null.
    virtual int enumPluginDescs(EnumPluginDescCallback* callback) = 0;

    /// The descriptor with a name, null if there is none. Of several the first one entered.
    virtual PluginDesc* getPluginDesc(const char* pluginName) = 0;
    /// The descriptor with an id, null if there is none. Goes through all libraries.
    virtual PluginDesc* getPluginDesc(u32 pluginID) = 0;

    /// Makes an instance and enters it under a number of its own. `instanceID` 0 takes the next
    /// free number. Null if there is no such plug-in, it gave nothing, or the number is in use.
    virtual Plugin* newPlugin(const char* pluginName, PelkPluginHost* host, u64 instanceID);
    virtual Plugin* newPlugin(u32 pluginID, PelkPluginHost* host, u64 instanceID) = 0;
    /// Deletes an instance through its descriptor. Null does nothing.
    virtual void deletePlugin(Plugin* plugin) = 0;
    /// Deletes all instances by ascending number, and starts numbering again at 1.
    virtual void deleteAllPlugins() = 0;
    /// Shows the instances by ascending number. Returns the number of all. The callback may be
    /// null.
    virtual int enumPlugins(EnumPluginCallback* callback) = 0;
    /// The instance with a number, null if there is none.
    virtual Plugin* getPlugin(u64 instanceID) = 0;

    /// Writes the last number given out; the instances are not written. Returns 1.
    virtual int saveState(OutputStream& stream) = 0;
    /// Reads what `saveState` wrote. Returns 0, and changes nothing, if the stream holds something
    /// else or ends too early.
    virtual int loadState(InputStream& stream) = 0;

    /// Gives an instance another number. An instance that had it is no longer found.
    virtual void setPluginID(Plugin* plugin, u64 instanceID) = 0;
    /// The full path of the library that an instance comes from, cut at `size` - 1 characters;
    /// empty for a plug-in of the host's own. False if no library offers it.
    virtual bool getPluginFileName(Plugin* plugin, char* buffer, int size) = 0;
    /// Sets the last number given out.
    virtual void setNextPluginID(u64 id) = 0;
    /// The address of a symbol in a loaded library, which is named by its file name without
    /// directory. Null if there is no such library or symbol.
    virtual void* getLibraryProc(const char* libraryFileName, const char* symbol) = 0;

    /// Unloads the libraries and frees the manager. Instances are not deleted.
    virtual void release() = 0;
};

/// Loads libraries by two lists: for each directory and each mask, `loadLibrary` gets the one with
/// the other behind it. Both lists are separated by `;`, and a directory ends in a separator of
/// its own. Entries of one character count only at the end of a list. False if a library threw;
/// the masks that follow are tried all the same.
bool loadPlugins(PluginManager& manager, const char* directories, const char* masks,
                 PelkPluginHost* host, MessageLog* log);

}  // namespace Tarnkit
