#pragma once

#include <cstddef>
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

/// Writes the path of the library that an address of code or data belongs to. Allocates nothing.
/// Returns false, and an empty text, if there is none, or if it is the program itself. `size` is
/// above 0; what is too long is cut.
PELK_API bool moduleOfAddress(const void* address, char* path, std::size_t size);

/// The same for the library that the class of an object comes from, by its table of operations. The
/// class has virtual operations, and `object` points to its start or to that of such a base.
PELK_API bool moduleOfObject(const void* object, char* path, std::size_t size);

/// Undoes one load. Null does nothing. Returns false if the system refused.
PELK_API bool releaseModule(ModuleHandle module);

}  // namespace Tarnkit::platform
