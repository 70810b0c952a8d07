#pragma once

#include "pelk/base/api.h"

namespace Tarnkit {

/// The one exception that library and plug-ins throw: memory that can't be had, or a hardware fault
/// of a thread with a translator (crash_handler.h). A bad scene, a missing file or a missing
/// plug-in is never an exception; those have fixed answers and a warning in the log.
///
/// It may leave any operation of a plug-in that can allocate, at a hit too, where a pool grows. Who
/// holds something meanwhile (a pool element, a field of the context) gives it back by a scoped
/// object. Materials don't catch it; the host does, at the entry of a job, and reports `text`.
///
/// The text is held by value, so that throwing and copying need no further memory than the runtime
/// keeps in reserve for exceptions. It derives from no standard exception, so a `catch` of
/// std::exception passes it by: see thrown_text.h. Exported, with its destructor in libpelk.so,
/// since a catch in one library must know the type that another throws.
class PELK_API ExceptionMsg {
public:
    /// A printf format, not null, and its arguments; what does not fit in `text` is cut. Formatting
    /// plain numbers and short texts allocates nothing.
    explicit ExceptionMsg(const char* format, ...) __attribute__((format(printf, 2, 3)));
    ExceptionMsg(const ExceptionMsg&) noexcept = default;
    ExceptionMsg& operator=(const ExceptionMsg&) noexcept = default;
    virtual ~ExceptionMsg();

    char text[1024];  ///< words for the user, at most 1,023 bytes; always terminated
};

}  // namespace Tarnkit
