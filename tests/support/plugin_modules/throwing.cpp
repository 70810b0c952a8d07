#include "listed_library.h"
#include "pelk/base/exception_msg.h"

Tarnkit::PluginLibDesc* getLibDesc() {
    throw Tarnkit::ExceptionMsg("no licence");
}
