#include "listed_library.h"

// Linked with a library that has a getLibDesc, but with none of its own.
extern "C" PELK_API const char* borrowedName() {
    return getLibDesc()->getLibraryName();
}
