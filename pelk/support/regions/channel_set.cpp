#include "pelk/support/regions/channel_set.h"

#include <cstddef>
#include <utility>

#include "pelk/support/regions/channel_kinds.h"

namespace Tarnkit {

int ChannelSet::add(std::unique_ptr<RenderChannel> channel) {
    const int known = find(channel->getName());
    if (known >= 0)
        return known;
    list.push_back(channel.get());
    channels.push_back(std::move(channel));
    return size() - 1;
}

bool ChannelSet::addAliases(std::span<const int> aliases) {
    for (const int alias : aliases) {
        std::unique_ptr<RenderChannel> channel = newChannel(alias);
        if (!channel)
            return false;
        add(std::move(channel));
    }
    return true;
}

int ChannelSet::find(std::string_view name) const {
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (name == list[i]->getName())
            return static_cast<int>(i);
    }
    return -1;
}

void ChannelSet::clear() {
    list.clear();
    channels.clear();
}

RenderChannel* ChannelSet::at(int index) const {
    return index >= 0 && index < size() ? list[static_cast<std::size_t>(index)] : nullptr;
}

}  // namespace Tarnkit
