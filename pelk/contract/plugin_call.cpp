#include "pelk/contract/plugin_call.h"

#include <cstdio>
#include <exception>

#include "pelk/base/text_or.h"
#include "pelk/contract/context.h"
#include "pelk/contract/plugin.h"
#include "pelk/contract/plugin_desc.h"
#include "pelk/platform/module.h"

namespace Tarnkit {

namespace {

// Reserved when the library is loaded: a first access that allocates may be a fault handler's.
__attribute__((tls_model("initial-exec"))) constinit thread_local PluginCallNote* noteOfThread =
    nullptr;

template <int N>
void copyText(char (&to)[N], const char* from) {
    std::snprintf(to, N, "%s", textOrEmpty(from));
}

/// The library of an instance is the one that its descriptor's class comes from.
void noteInstance(PluginCallNote& note, Plugin& plugin) {
    copyText(note.instance, plugin.getPluginName());
    copyText(note.type, plugin.getPluginTypeName());
    if (PluginDesc* const desc = plugin.getPluginDesc())
        platform::moduleOfObject(desc, note.library, sizeof note.library);
}

/// The call at a hit in words.
void noteHit(PluginCallNote& note, const PluginCall& call) {
    note.operation = call.operation;
    note.instance[0] = note.type[0] = note.library[0] = '\0';
    if (!call.callee)
        return;
    platform::moduleOfObject(call.callee, note.library, sizeof note.library);
    if (PluginBase* const plugin = call.callee->getPlugin())
        noteInstance(note, static_cast<Plugin&>(*plugin));
}

}  // namespace

PluginCallNote* setPluginCallNote(PluginCallNote* note) {
    PluginCallNote* const former = noteOfThread;
    noteOfThread = note;
    return former;
}

PluginCallNote* pluginCallNote() {
    return noteOfThread;
}

ScopedCallNote::ScopedCallNote(const char* operation, const char* library, const char* type,
                               const char* instance)
    : note(noteOfThread), exceptions(std::uncaught_exceptions()) {
    if (!note)
        return;
    former = *note;
    note->operation = operation;
    copyText(note->instance, instance);
    copyText(note->type, type);
    if (library)
        copyText(note->library, library);
}

ScopedCallNote::ScopedCallNote(const char* operation, Plugin& instance)
    : ScopedCallNote(operation, nullptr) {
    if (note)
        noteInstance(*note, instance);
}

ScopedCallNote::~ScopedCallNote() {
    if (note && std::uncaught_exceptions() == exceptions)
        *note = former;
}

bool describePluginCall(char* text, int size) {
    text[0] = '\0';
    if (!noteOfThread)
        return false;
    keepPluginCall();
    const PluginCallNote& told = *noteOfThread;
    if (!told.operation)
        return false;
    const char* const both = told.type[0] && told.library[0] ? " of " : "";
    const char* const form = told.instance[0] ? "%s of \"%s\" (%s%s%s)" : "%s of %s%s%s%s";
    std::snprintf(text, static_cast<std::size_t>(size), form, told.operation, told.instance,
                  told.type, both, told.library);
    return true;
}

void keepPluginCall() {
    if (noteOfThread && noteOfThread->thread && noteOfThread->thread->call.operation)
        noteHit(*noteOfThread, noteOfThread->thread->call);
}

void forgetPluginCall() {
    if (!noteOfThread)
        return;
    noteOfThread->operation = nullptr;
    if (noteOfThread->thread)
        noteOfThread->thread->call = {};
}

}  // namespace Tarnkit
