#include "listed_library.h"

Tarnkit::PluginLibDesc* getLibDesc() {
    return nullptr;
}
