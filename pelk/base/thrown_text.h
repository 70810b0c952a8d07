#pragma once

#include <exception>
#include <new>
#include <string>

#include "pelk/base/exception_msg.h"

namespace Tarnkit {

/// The words of the exception that is being handled: the text of an ExceptionMsg, "out of memory"
/// for std::bad_alloc, `what` of another standard exception, "unknown exception" of anything else.
/// To be called inside a `catch (...)` only; outside there is nothing to rethrow and the program
/// ends.
///
///     try {
///         scene.load(file);
///     } catch (...) {
///         result.error = thrownText();
///     }
///
/// It is for the places at which an exception stops: the body of a job's thread, the loader of a
/// scene, the main function. Libraries beside ours throw what they like, and one that leaves a
/// thread's entry ends the process. The result is a copy and outlives the exception. Making it may
/// throw std::bad_alloc when memory is what ran out, which is why materials, whose one exception is
/// ExceptionMsg with its text inside, never call this.
inline std::string thrownText() {
    try {
        throw;
    } catch (const ExceptionMsg& failure) {
        return failure.text;
    } catch (const std::bad_alloc&) {
        return "out of memory";
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (...) {
        return "unknown exception";
    }
}

}  // namespace Tarnkit
