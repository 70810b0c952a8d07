#include "pelk/platform/c_locale.h"

#include <locale.h>

namespace Tarnkit::platform {

/// The "C" locale is built in, so making the handle can't fail for want of a file or memory.
CLocaleScope::CLocaleScope()
    : own(::newlocale(LC_ALL_MASK, "C", nullptr)),
      former(::uselocale(static_cast<locale_t>(own))) {}

CLocaleScope::~CLocaleScope() {
    ::uselocale(static_cast<locale_t>(former));
    ::freelocale(static_cast<locale_t>(own));
}

}  // namespace Tarnkit::platform
