#pragma once

#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "pelk/contract/fragment.h"

namespace Tarnkit {

/// The channels of one render, each once, and the owner of their objects.
///
/// The index of a channel is its place here. Given to PKRegionData::setChannels, the list makes
/// regions whose channels have the same indices, so an index that a material was told before the
/// render is good for every fragment of it. Objects live until `clear`, or as long as the set:
/// longer than all regions that render with them.
///
///     constexpr int kAsked[] = {kAliasImageColor, kAliasImageAlpha, kAliasZDepth};
///     ChannelSet channels;
///     channels.addAliases(kAsked);
///     region.setChannels(channels.getList());
///
/// Made ready by one thread before the render begins; from then on any number may read.
class ChannelSet {
public:
    /// Takes a channel in and returns its index. A channel of a name that is here already is
    /// destroyed, and the index is that of the one that stays: names are what users and files know
    /// channels by.
    int add(std::unique_ptr<RenderChannel> channel);

    /// Makes the channels of these aliases and adds them in the order of the list. Returns false at
    /// the first alias that no channel can be made of (newChannel); those before it are in.
    bool addAliases(std::span<const int> aliases);

    /// The index of the channel of that name, or -1.
    int find(std::string_view name) const;

    /// Destroys all channels.
    void clear();

    int size() const { return static_cast<int>(list.size()); }
    /// The channel of that index, or null.
    RenderChannel* at(int index) const;
    /// All channels by their indices, none null. Good until the next change.
    std::span<RenderChannel* const> getList() const { return list; }

private:
    std::vector<std::unique_ptr<RenderChannel>> channels;
    std::vector<RenderChannel*> list;  // the same, in the form that regions take
};

}  // namespace Tarnkit
