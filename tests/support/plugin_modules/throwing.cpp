#include "frame/exception_msg.h"
#include "listed_library.h"

Tarnkit::PluginLibDesc* getLibDesc() {
    throw Tarnkit::ExceptionMsg("no licence");
}
