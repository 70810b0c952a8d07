#pragma once

#include "pelk/base/api.h"

namespace Tarnkit {

class BSDFSampler;
class Plugin;
class PluginInterface;
struct ThreadData;

/// The call into a plug-in that a render thread is in, for a host that names who has failed. Notes
/// are plain stores: the caller writes one before the call and puts the outer one back behind it,
/// but not if the call throws. So whoever catches finds the innermost call.
struct PluginCall {
    const char* operation = nullptr;    ///< a literal such as "shade"; null outside of plug-ins
    PluginInterface* callee = nullptr;  ///< the interface that is called
};

/// What a thread is doing with plug-ins outside of hits, in words. A copy, as instance and library
/// may be half gone when it is read. Made by a host for each of its threads that is to have one,
/// see setPluginCallNote.
struct PluginCallNote {
    const char* operation = nullptr;  ///< a literal; null while the thread is in no plug-in
    char instance[128] = "";          ///< what is too long is cut; empty if it has no name (yet)
    char type[64] = "";               ///< PluginDesc::getName; empty if it isn't known (yet)
    char library[512] = "";           ///< path; empty for plug-ins of the program itself
    ThreadData* thread = nullptr;     ///< of a thread that renders: its `call` goes before these
};

/// Has the calls of this thread noted in `note`, from now on; null for nowhere, as threads begin.
/// Returns what stood before. The note stays the caller's.
PELK_API PluginCallNote* setPluginCallNote(PluginCallNote* note);
/// The note of this thread; null without one. A fault handler may ask.
PELK_API PluginCallNote* pluginCallNote();

/// Notes a call for the length of a scope, where the thread has a note. If the scope is left by an
/// exception the note stays, for the catch to read and to forget. For managers and hosts; at hits
/// use callShade, takeSampler and giveSampler of shading.h.
class PELK_API ScopedCallNote {
public:
    /// `operation` is a literal; the other texts may be null. Without `library` the one of the
    /// outer note holds.
    ScopedCallNote(const char* operation, const char* library, const char* type = nullptr,
                   const char* instance = nullptr);
    /// Asks the instance for its names.
    ScopedCallNote(const char* operation, Plugin& instance);
    ~ScopedCallNote();
    ScopedCallNote(const ScopedCallNote&) = delete;
    ScopedCallNote& operator=(const ScopedCallNote&) = delete;

private:
    PluginCallNote* const note;
    PluginCallNote former;
    const int exceptions;  // under way when the scope began
};

/// Writes who this thread is calling: `shade of "red" (MtlDiffuse of /lib/materials.so)`, as far as
/// it is known. Returns false, and an empty text, if it is calling none. Allocates nothing, but
/// asks the instance for its names. `size` is above 0; what is too long is cut.
PELK_API bool describePluginCall(char* text, int size);
/// Puts the call at a hit into the words of the note, where the thread's record ends before whoever
/// catches has read it.
PELK_API void keepPluginCall();
/// From now on the thread is in no plug-in: an exception was caught.
PELK_API void forgetPluginCall();

}  // namespace Tarnkit
