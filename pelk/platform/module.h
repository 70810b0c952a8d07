#pragma once

#include <string>

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// A loaded library of code; null is none.
using ModuleHandle = void*;

/// Why a library could not be loaded.
struct ModuleError {
    int code = 0;         ///< the system's error number, never 0 after a failure
    std::string message;  ///< the system's words
};

/// Loads the library in the file `path`, with all that it needs, and keeps its names to itself.
/// A path without a directory means the working directory; no search is made. Loading a file
/// twice counts twice. Returns null and fills `error` on failure.
PELK_API ModuleHandle loadModule(const char* path, ModuleError& error);

/// The address of an exported name of the module itself; null if there is none, or if only a
/// library that the module needs has one.
PELK_API void* findSymbol(ModuleHandle module, const char* name);

/// Undoes one load. Null does nothing. Returns false if the system refused.
PELK_API bool releaseModule(ModuleHandle module);

}  // namespace Tarnkit::platform
