#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/contract/channel_alias.h"

namespace Tarnkit {

/// The object that does the arithmetic of a channel. Any number of threads may use it at once.
///
/// Colours and numbers show the whole pixel: the weighted mean of its samples, and along a ray the
/// sum of what surfaces let through. Vectors, pairs and integers show the front of the pixel, the
/// object that covers most of it: on a ray the first surface, vectors and pairs as the mean of the
/// object's samples, integers, being ids, as they were found.
std::unique_ptr<RenderChannel> newChannel(int alias);

/// The names of all channels that can be asked for by name, in their order.
std::vector<std::string_view> channelNames();

/// The same for a channel of the scene's own, without an alias. `type` is a colour or a float.
std::unique_ptr<RenderChannel> newCustomChannel(const std::string& name, ChannelType type);

}  // namespace Tarnkit
