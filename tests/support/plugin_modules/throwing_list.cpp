#include "listed_library.h"

namespace {

struct ThrowingLibrary final : Tarnkit::PluginLibDesc {
    const char* getLibraryName() override { return "Throwing"; }
    const char* getLibraryDescription() override { return "A library that shows nothing"; }
    int enumPluginDescs(Tarnkit::EnumPluginDescCallback*) override { throw 5; }
} library;

}  // namespace

Tarnkit::PluginLibDesc* getLibDesc() {
    return &library;
}
