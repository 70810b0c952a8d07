#pragma once

// PELK_API, which marks what libpelk.so exports, for headers of this folder and above. Whoever
// includes one of them need not know that the mark depends on the system and so stands in
// platform/.
#include "pelk/platform/api.h"
