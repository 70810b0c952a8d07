#include "pelk/base/exception_msg.h"

#include <cstdarg>
#include <cstdio>

namespace Tarnkit {

ExceptionMsg::ExceptionMsg(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
}

ExceptionMsg::~ExceptionMsg() = default;

}  // namespace Tarnkit
