#pragma once

#include <exception>
#include <optional>
#include <utility>

namespace Tarnkit {

/// All that a library of plug-ins keeps from its load to its unload, as one static object of it.
/// `Library` is a struct with the PluginLibDesc that getLibDesc gives out and the descriptors as
/// its members, so that the order in which they are made and destroyed is that of the members and
/// not that of several sources, which the language leaves open.
///
///     struct MyPlugins {
///         MyLibDesc libDesc;  // first: there before the descriptors enter it, gone after them
///         MyTextureDesc texture{libDesc};
///     };
///
///     ModuleLibrary<MyPlugins> plugins;
///
///     extern "C" PELK_API PluginLibDesc* getLibDesc() { return &plugins.get().libDesc; }
///
/// What the construction throws, an ExceptionMsg for lack of memory, must not leave the static
/// initialiser: the system's loader stands between that and the host, knows nothing of exceptions,
/// and would not be usable again. It waits here for the host's first call instead.
template <class Library>
class ModuleLibrary {
public:
    /// Runs while the library is being loaded, on the thread that loads it.
    ModuleLibrary() noexcept {
        try {
            library.emplace();
        } catch (...) {
            failure = std::current_exception();
        }
    }

    /// What getLibDesc asks. Throws what the load has failed with, once; what had been made by then
    /// was destroyed. Each call after that tries anew, as memory may be there again, and throws if
    /// that fails too. Not for several threads at once: a host loads its libraries one by one.
    Library& get() {
        if (failure)
            std::rethrow_exception(std::exchange(failure, nullptr));
        if (!library)
            library.emplace();
        return *library;
    }

private:
    std::optional<Library> library;  ///< empty after a failure
    std::exception_ptr failure;      ///< of the load, until get has told it
};

}  // namespace Tarnkit
