#pragma once

#include "pelk/base/types.h"
#include "pelk/contract/plugin_desc.h"

namespace Tarnkit {

class InputStream;
class MessageLog;
class OutputStream;
class Plugin;

/// Receives libraries one by one from PluginManager::enumLibraries, on that call's thread. The
/// caller owns the callback, which may live on its stack; the manager keeps no pointer to it.
class EnumPluginLibCallback {
public:
    /// `library` is never null and stays the manager's. The callback may unload it. Returns 0 to
    /// stop the enumeration, anything else to go on.
    virtual int process(PluginLibDesc* library) = 0;

protected:
    ~EnumPluginLibCallback() = default;
};

/// Receives plug-in instances one by one from PluginManager::enumPlugins, on that call's thread.
class EnumPluginCallback {
public:
    /// `plugin` is never null. The callback may delete it or others: the walk looks the next one up
    /// by number and keeps no place in the table. Returns 0 to stop, anything else to go on.
    virtual int process(Plugin* plugin) = 0;

protected:
    ~EnumPluginCallback() = default;
};

/// The host's keeper of plug-ins: loads dynamic libraries of them, finds what they offer by name
/// and id, and makes, numbers, finds and deletes instances. The host makes one at its start, by
/// newDefaultPluginManager, and ends it by `release`:
///
///     DefaultPluginManager* manager = newDefaultPluginManager();
///     manager->registerPluginDesc(&ownDesc, host);  // plug-ins compiled into the host
///     loadPlugins(*manager, "/opt/a/;/opt/b/", "*.so", host, log);
///     Plugin* mtl = manager->newPlugin("MtlDiffuse", host, 0);
///     // ... set parameters, render
///     manager->deletePlugin(mtl);                   // before its code is unloaded
///     manager->release();
///
/// **Owners.** A descriptor (PluginDesc) belongs to its library, or to the host for those that it
/// registers; the manager keeps pointers alone. An instance belongs to whoever asked for it: its
/// memory comes from its library, so it goes back by `deletePlugin`, never by `delete`. Unloading a
/// library deletes no instances and does not look for them; one that still lives then points to
/// code that is no longer mapped, and its next virtual call crashes.
///
/// **Two kinds of id.** A *plug-in id* (32 bits) is that of a kind, such as MtlDiffuse, and is
/// written into its source. An *instance id* (64 bits) is the number of one instance, given out by
/// this manager from 1 on. A number is not used again after its instance was deleted, so that one
/// kept elsewhere (in a file, in an editor's history) can't come to mean another instance.
///
/// **Threads.** Nothing here takes a lock. Callers keep their calls from overlapping; callbacks and
/// the operations of descriptors run on the caller's thread.
///
/// **Failure** is told by the result, and in words to the log, which may be null. `host` is handed
/// on to descriptors as it is and may be null. Lack of memory is an ExceptionMsg. What the code of
/// a library throws while it is loaded or asked goes through to the caller of the operation, unless
/// that says otherwise.
class PluginManager : public PluginBase {
public:
    /// Loads every file that matches `mask`, such as "/plugins/*.so", in the byte order of the file
    /// names, and registers what each library offers. `*` and `?` may stand in the name, not in the
    /// directory; the full path must fit into 511 characters.
    ///
    /// A library is one if it exports `extern "C" PluginLibDesc* getLibDesc()`. One that can't be
    /// loaded, lacks the function or answers null is reported as an error and passed over; one that
    /// lacks the function stays mapped, but no operation here knows it.
    ///
    /// Of two plug-ins with one id the first one loaded wins. The other gets a warning and can't be
    /// made, while its library stays; two in the same library are both refused, as each finds the
    /// other.
    ///
    /// Returns the description of the last library loaded, null if there was none.
    virtual PluginLibDesc* loadLibrary(const char* mask, PelkPluginHost* host, MessageLog* log) = 0;

    /// Takes the library's descriptors out of the tables and of `host`, then unmaps its code. All
    /// of its instances must be gone, and no pointer to its descriptors may be used again. False if
    /// no such library is loaded, if it threw while it was asked, or if the system keeps the
    /// module; it then stays in the list. The library of the host's own descriptors can't be
    /// unloaded.
    virtual bool unloadLibrary(PluginLibDesc* library, PelkPluginHost* host) = 0;
    /// The same for all libraries, the last one first. False if one of them stays; the others have
    /// gone all the same.
    virtual bool unloadAllLibraries(PelkPluginHost* host) = 0;

    /// Enters a descriptor that is compiled into the host; one that stands already is taken out
    /// first, so entering it twice is harmless. It must live until it is unregistered, or until the
    /// manager is released. Its id is not compared with others. Returns 1; null is ignored.
    virtual int registerPluginDesc(PluginDesc* desc, PelkPluginHost* host) = 0;
    /// Takes such a descriptor out again. Returns 1, also if it wasn't there.
    virtual int unregisterPluginDesc(PluginDesc* desc, PelkPluginHost* host) = 0;
    /// Takes them all out, the last one first. Returns 1.
    virtual int unregisterAllPluginDescs(PelkPluginHost* host) = 0;

    /// Shows the libraries, the last one first; the library of the host's own descriptors, which
    /// is always there, comes at the end. Returns the number of all, however many were shown. With
    /// a null callback it only counts.
    virtual int enumLibraries(EnumPluginLibCallback* callback) = 0;
    /// Shows the descriptors of all libraries, in the same order, those refused for their id too.
    /// Returns the number visited, the one at which the callback stopped included. With a null
    /// callback it only counts.
    virtual int enumPluginDescs(EnumPluginDescCallback* callback) = 0;

    /// The descriptor with a name, null if there is none or for null. Of several with one name the
    /// first one entered. One look-up in a hash table.
    virtual PluginDesc* getPluginDesc(const char* pluginName) = 0;
    /// The descriptor with an id, null if there is none. Asks all libraries one after the other,
    /// the host's own first; a library that throws then counts with what it has shown.
    virtual PluginDesc* getPluginDesc(u32 pluginID) = 0;

    /// Makes an instance and enters it under `instanceID`; 0 takes the next free number. A number
    /// of one's own, as a reader of files needs it, moves the automatic ones behind it; one of 2^63
    /// or above leaves them alone, so that a host can keep a range of its own. Null if there is no
    /// such plug-in, if its descriptor gave null, or if the number is in use. A number that was
    /// drawn for an instance that then failed is not given out again.
    virtual Plugin* newPlugin(const char* pluginName, PelkPluginHost* host, u64 instanceID);
    virtual Plugin* newPlugin(u32 pluginID, PelkPluginHost* host, u64 instanceID) = 0;
    /// Takes an instance out of the table and deletes it through its descriptor. Null does nothing.
    virtual void deletePlugin(Plugin* plugin) = 0;
    /// Deletes all instances by ascending number, and starts numbering again at 1. An instance may
    /// delete others on its way.
    virtual void deleteAllPlugins() = 0;
    /// Shows the instances by ascending number. Returns the number of all before the call. With a
    /// null callback it only counts.
    virtual int enumPlugins(EnumPluginCallback* callback) = 0;
    /// The instance with a number, null if there is none.
    virtual Plugin* getPlugin(u64 instanceID) = 0;

    /// Writes the last number given out, behind a mark of its own (4 bytes 0x100, 8 bytes number);
    /// the instances are the host's to write. A host saves it with a scene so that numbers in other
    /// files about the scene stay good. Returns 1, whatever the stream answers.
    virtual int saveState(OutputStream& stream) = 0;
    /// Reads what `saveState` wrote. Returns 0, and changes nothing, if the stream holds something
    /// else or ends too early; else 1.
    virtual int loadState(InputStream& stream) = 0;

    /// Gives an instance another number. An instance that had it is no longer found, though it
    /// lives on. The automatic numbers don't move. Null does nothing.
    virtual void setPluginID(Plugin* plugin, u64 instanceID) = 0;
    /// The full path of the library that an instance comes from, cut at `size` - 1 characters;
    /// empty for a plug-in of the host's own. False for null, or if no library offers its kind;
    /// `buffer` is then left alone.
    virtual bool getPluginFileName(Plugin* plugin, char* buffer, int size) = 0;
    /// Sets the last number given out: the next automatic one is the first free one above it.
    virtual void setNextPluginID(u64 id) = 0;
    /// The address of a symbol that a loaded library exports itself. The library is named by its
    /// file name without directory, case included. Null if there is no such library or symbol.
    /// Valid until the library is unloaded.
    virtual void* getLibraryProc(const char* libraryFileName, const char* symbol) = 0;

    /// Unloads the libraries, takes out the host's own descriptors with a null host, and frees the
    /// manager. Instances are not deleted: those of a library must be gone before.
    virtual void release() = 0;
};

/// Loads libraries by two lists: for each directory and each mask in it, `loadLibrary` gets the one
/// with the other behind it. Both lists are separated by `;`. A directory ends in a separator of
/// its own, as none is put in: "/a/;/b/" and "*.so" give "/a/*.so" and "/b/*.so". An entry of a
/// single character is taken for a slip and passed over, but at the end of a list it counts. Runs
/// of separators shrink to their last, but two equal ones at the front name a network path and
/// stay. Lists may be null, and are read up to 51,200 characters; a path of more than 1,023 is an
/// error in the log. A library that throws is reported ("Fatal error loading plugins."), and the
/// masks that follow are tried all the same: a stranger's fault must not cost the plug-ins beside
/// it. False if that happened; a library that was merely refused leaves the result true.
bool loadPlugins(PluginManager& manager, const char* directories, const char* masks,
                 PelkPluginHost* host, MessageLog* log);

}  // namespace Tarnkit
