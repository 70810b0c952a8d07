#pragma once

namespace Tarnkit {

/// The text, or the empty one for null. Names of plug-ins, libraries and channels may be null,
/// which a host that sets none leaves them at, and neither printf nor std::string takes that. The
/// answer lives as long as the argument; nothing is copied.
constexpr const char* textOrEmpty(const char* text) {
    return text ? text : "";
}

}  // namespace Tarnkit
