#pragma once

#include <span>

#include "pelk/contract/interface_id.h"

namespace Tarnkit {

/// All interfaces that this host knows by id and name, those of the contract first, then the host's
/// own. In this order they are listed to the user.
std::span<const InterfaceName> knownInterfaces();

/// The name of an interface, such as "EXT_MATERIAL"; null for an unknown id.
const char* interfaceName(u64 id);

}  // namespace Tarnkit
