#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/contract/channel_alias.h"

namespace Tarnkit {

// The RenderChannel objects that a host needs to fill the well-known channels: how samples of a
// pixel are averaged, how surfaces along a ray are composited, and what the finished pixel shows.
// A host with an arithmetic of its own derives from RenderChannel and uses none of them.
//
// There are two sorts of values, and averaging the wrong sort is the fault to avoid:
// - Radiance, or a share of it (Color, float), shows the whole pixel. Samples are summed by their
//   weights, and what lies behind a see-through surface is added times its transparency.
// - A measure of a surface (normal, uv, id) means nothing when it is mixed with another object's:
//   the mean of two ids is a third object. Such a channel shows the front of the pixel alone, the
//   object that covers most of it. Vectors and pairs are averaged over that object's samples;
//   ids are taken as they were found first.
//
// Slots and pixels start at 0; those of main values start as a pixel does in which nothing was hit
// (depth 1e18, render id -1). Objects hold no state of a render: one object may serve any number
// of regions and threads at once, and must outlive the regions that were given it.

/// The channel object of an alias, owned by the caller; null for an alias that has no name in
/// kChannelAliases. A main value that the host computes anyway (beauty, alpha, transparency, depth,
/// normal, render id, front) needs no slot in fragments (kChannelNoFragmentData) and is read from
/// the fragment's fields when the pixel is stored; all others have a slot that materials write to.
/// The fragments must be PKFragments.
std::unique_ptr<RenderChannel> newChannel(int alias);

/// A channel of the scene's own: no alias (-1), so only a plug-in that was given its index writes
/// to it. `type`: kChannelFloat, kChannelFloat2, kChannelVector or kChannelInt; any other makes a
/// colour. `name` is copied; regions keep 63 characters of it.
std::unique_ptr<RenderChannel> newCustomChannel(const std::string& name, ChannelType type);

/// The names by which channels can be asked for, in the order of kChannelAliases. For messages.
std::vector<std::string_view> channelNames();

}  // namespace Tarnkit
