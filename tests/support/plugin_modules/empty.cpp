#include "listed_library.h"

static ListedLibrary library{nullptr};

Tarnkit::PluginLibDesc* getLibDesc() {
    return &library;
}
