#pragma once

#include "pelk/contract/desc_of.h"

namespace Tarnkit {

/// Descriptor of one kind of plug-in of this host.
template <class T>
using HostPluginDesc = DescOf<T>;

}  // namespace Tarnkit
