#pragma once

#include "pelk/base/api.h"

namespace Tarnkit {

/// The one exception type: memory that can't be had, or a hardware fault with a translator.
/// The text is held by value, so that throwing needs no further memory.
class PELK_API ExceptionMsg {
public:
    /// A printf format and its arguments; what does not fit is cut.
    explicit ExceptionMsg(const char* format, ...) __attribute__((format(printf, 2, 3)));
    ExceptionMsg(const ExceptionMsg&) noexcept = default;
    ExceptionMsg& operator=(const ExceptionMsg&) noexcept = default;
    virtual ~ExceptionMsg();

    char text[1024];  ///< always terminated
};

}  // namespace Tarnkit
