#pragma once

#include <span>

#include "pelk/contract/interface_id.h"

namespace Tarnkit {

/// All interfaces that this host knows, its own at the end.
std::span<const InterfaceName> knownInterfaces();

/// The name of an interface, such as "EXT_MATERIAL"; null for an unknown id.
const char* interfaceName(u64 id);

}  // namespace Tarnkit
