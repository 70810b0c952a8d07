#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/contract/fragment.h"

namespace Tarnkit {

class PKFragment;

/// Aliases of this host's own channels, beside those that materials know.
enum HostChannelAlias : int {
    kAliasDiffuse = 101,
    kAliasSelfIllumination = 104,
    kAliasImageBackground = 124,
    kAliasImageAlpha = 125,
    kAliasImageColor = 126,
    kAliasFront = 1001,
    kAliasUV = 1002,
};

/// Writes one pixel from main values of its fragments; `front` may be null.
using StoreFields = void (*)(void* pixel, const PKFragment* front, const PKFragment& total);

/// A channel that users can ask for by its name.
struct ChannelKind {
    const char* name;
    int alias;
    ChannelType type;
    StoreFields store = nullptr;  ///< of a channel without a slot of its own in fragments
};

/// All of them: beauty first, alpha second.
std::span<const ChannelKind> channelKinds();

/// The kind of that name, or null.
const ChannelKind* findChannelKind(std::string_view name);

/// The names of all kinds, in their order.
std::vector<std::string_view> channelKindNames();

/// The object that does the arithmetic of a channel. Any number of threads may use it at once.
///
/// Colours and numbers show the whole pixel: the weighted mean of its samples, and along a ray the
/// sum of what surfaces let through. Vectors, pairs and integers show the front of the pixel, the
/// object that covers most of it: on a ray the first surface, vectors and pairs as the mean of the
/// object's samples, integers, being ids, as they were found.
std::unique_ptr<RenderChannel> newChannel(const ChannelKind& kind);

/// The same for a channel of the scene's own, without an alias. `type` is a colour or a float.
std::unique_ptr<RenderChannel> newCustomChannel(const std::string& name, ChannelType type);

}  // namespace Tarnkit
