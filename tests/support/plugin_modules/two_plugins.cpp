#include "listed_library.h"

static ListedDesc tint(101, "TestTint");
static ListedDesc glow(102, "TestGlow");
static ListedLibrary library{&tint, nullptr, &glow};  // an empty place must do no harm

Tarnkit::PluginLibDesc* getLibDesc() {
    return &library;
}
