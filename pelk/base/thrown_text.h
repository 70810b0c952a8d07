#pragma once

#include <exception>
#include <string>

#include "pelk/base/exception_msg.h"

namespace Tarnkit {

/// The words of the exception that is being handled; libraries throw what they like.
inline std::string thrownText() {
    try {
        throw;
    } catch (const ExceptionMsg& failure) {
        return failure.text;
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (...) {
        return "unknown exception";
    }
}

}  // namespace Tarnkit
