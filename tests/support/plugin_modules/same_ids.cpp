#include "listed_library.h"

static ListedDesc first(103, "TestFirst");
static ListedDesc alone(104, "TestAlone");
static ListedDesc second(103, "TestSecond");
static ListedLibrary library{&first, &alone, &second};

Tarnkit::PluginLibDesc* getLibDesc() {
    return &library;
}
