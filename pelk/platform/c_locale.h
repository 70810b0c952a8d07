#pragma once

#include "pelk/platform/api.h"

namespace Tarnkit::platform {

/// While it lives, the calling thread writes numbers as in the "C" locale, whatever locale the
/// program has set. Other threads see no change.
class PELK_API CLocaleScope {
public:
    CLocaleScope();
    ~CLocaleScope();
    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;

private:
    void* own;
    void* former;
};

}  // namespace Tarnkit::platform
