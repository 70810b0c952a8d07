#pragma once

#include <exception>
#include <optional>
#include <utility>

namespace Tarnkit {

/// All that a module of plug-ins keeps from its load to its unload, as one static object of it:
/// `Library` has the description that getLibDesc gives out and the descriptors as its members.
/// What its construction throws must not leave the module's load, for the system's loader stands
/// between and would never be usable again. It waits here for the host's first call instead.
template <class Library>
class ModuleLibrary {
public:
    ModuleLibrary() noexcept {
        try {
            library.emplace();
        } catch (...) {
            failure = std::current_exception();
        }
    }

    /// What getLibDesc asks. Throws what the load has failed with, once; what was made by then has
    /// been taken down. Each call after that tries anew.
    Library& get() {
        if (failure)
            std::rethrow_exception(std::exchange(failure, nullptr));
        if (!library)
            library.emplace();
        return *library;
    }

private:
    std::optional<Library> library;
    std::exception_ptr failure;
};

}  // namespace Tarnkit
