#pragma once

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// While it lives, the calling thread reads and writes numbers as in the "C" locale, with a decimal
/// point, whatever locale the program has set: a host with a German user interface would otherwise
/// make 0,5 of 0.5 in files that others read. Other threads see no change. Ends on the thread that
/// made it, in reverse order if several are nested.
class PELK_API CLocaleScope {
public:
    CLocaleScope();
    ~CLocaleScope();
    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;

private:
    void* own;     // the system's handle of the "C" locale
    void* former;  // that of the thread's locale before
};

}  // namespace Tarnkit::platform
