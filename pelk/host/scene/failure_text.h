#pragma once

#include <string>

#include "pelk/base/thrown_text.h"
#include "pelk/contract/plugin_call.h"

namespace Tarnkit {

/// The words of the exception that is being handled, behind the call into a plug-in that it came
/// out of, if any: `frameBegin of "red" (MtlDiffuse of /lib/materials.so): no licence`. To be
/// called once, inside a `catch (...)`: afterwards the thread is in no plug-in. May throw
/// std::bad_alloc.
inline std::string failureText() {
    char call[800];
    const bool inPlugin = describePluginCall(call, sizeof call);
    forgetPluginCall();
    return inPlugin ? std::string(call) + ": " + thrownText() : thrownText();
}

}  // namespace Tarnkit
