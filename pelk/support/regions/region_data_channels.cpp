// The channel table of a region: which channels there are, and in what order.
#include <algorithm>
#include <cstring>
#include <utility>

#include "pelk/base/text_or.h"
#include "pelk/contract/channel_alias.h"
#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

namespace {

constexpr std::size_t kNameChars = sizeof ChannelRecord::name - 1;

/// Compares as much of two names as a record can hold: records have theirs cut.
bool sameName(const char* a, const char* b) {
    return std::strncmp(a, b, kNameChars) == 0;
}

void setName(ChannelRecord& record, const char* name) {
    std::strncpy(record.name, textOrEmpty(name), kNameChars);
    record.name[kNameChars] = '\0';
}

/// The channel's name, empty if it has none; null without a channel.
const char* nameOf(RenderChannel* channel) {
    return channel ? textOrEmpty(channel->getName()) : nullptr;
}

}  // namespace

bool ChannelRecord::hasName(const char* other) const {
    return other && sameName(name, other);
}

int PKRegionData::getChannelInfo(int index, ChannelInfo& out) {
    if (!isChannel(index))
        return 0;
    out = {channels[index].type, channels[index].name, channels[index].alias};
    return 1;
}

int PKRegionData::findChannelByAlias(int alias) {
    for (int i = channels.size(); i-- > 0;) {
        if (channels[i].alias == alias)
            return i;
    }
    return -1;
}

int PKRegionData::findChannelByName(const char* name) const {
    for (int i = channels.size(); i-- > 0;) {
        if (channels[i].hasName(name))
            return i;
    }
    return -1;
}

int PKRegionData::getChannelFlags(int index) {
    return isChannel(index) ? channels[index].flags : 0;
}

int PKRegionData::addChannel(RenderChannel* channel) {
    if (!channel)
        return -1;
    ChannelRecord record;
    describe(record, *channel);
    if (!channels.isEmpty()) {
        const ChannelRecord& last = channels[channels.size() - 1];
        record.fragmentOffset = last.fragmentOffset + last.fragmentSize;
    }
    channels.append(record);
    fragmentDataSize = record.fragmentOffset + record.fragmentSize;
    return channels.size() - 1;
}

/// Takes from the object all that a record holds of it.
void PKRegionData::describe(ChannelRecord& record, RenderChannel& channel) {
    record.type = channel.getType();
    setName(record, channel.getName());
    record.alias = channel.getAlias();
    record.flags = channel.getFlags();
    record.channel = &channel;
    record.fragmentSize = record.flags & kChannelNoFragmentData ? 0 : channelTypeSize(record.type);
}

void PKRegionData::setChannels(ChannelList list) {
    freeChannels();
    for (RenderChannel* channel : list)
        addChannel(channel);
}

void PKRegionData::freeChannels() {
    freeBuffers();
    channels.clear();
    fragmentDataSize = 0;
}

void PKRegionData::addChannels(ChannelList list) {
    if (std::ssize(list) <= channels.size())
        return;
    for (auto entry = list.rbegin(); entry != list.rend(); ++entry) {
        if (*entry && wantsChannel(list, **entry))
            allocateChannelBuffer(addChannel(*entry));
    }
}

/// Whether the channel's name stands in the list more often than in the table.
bool PKRegionData::wantsChannel(ChannelList list, RenderChannel& channel) const {
    const char* name = nameOf(&channel);
    const auto wanted = std::count_if(list.begin(), list.end(), [&](RenderChannel* other) {
        return other && sameName(nameOf(other), name);
    });
    return wanted > std::count_if(channels.begin(), channels.end(),
                                  [&](const ChannelRecord& r) { return r.hasName(name); });
}

int PKRegionData::channelsMatch(ChannelList list) const {
    if (std::ssize(list) != channels.size())
        return 0;
    for (int i = 0; i < channels.size(); ++i) {
        if (list[i] && !matches(channels[i], list[i]))
            return 0;
    }
    return 1;
}

bool PKRegionData::matches(const ChannelRecord& record, RenderChannel* channel) const {
    constexpr int kCompared = kChannelNoBuffer | kChannelNoColorMapping;
    return record.hasName(nameOf(channel)) && record.type == channel->getType() &&
           ((record.flags ^ channel->getFlags()) & kCompared) == 0;
}

int PKRegionData::reorderChannels(ChannelList list) {
    if (std::ssize(list) != channels.size())
        return 1;
    moveToOrder(list);
    return 0;
}

/// Swaps records until each name stands where the list, which is as long as the table, has it.
/// Goes from the end, so that a name's last record takes its last place.
void PKRegionData::moveToOrder(ChannelList list) {
    for (int place = channels.size(); place-- > 0;) {
        int from = place;
        while (from >= 0 && !channels[from].hasName(nameOf(list[place])))
            --from;
        if (from >= 0)
            std::swap(channels[place], channels[from]);
    }
}

int PKRegionData::syncChannels(ChannelList list) {
    removeStaleChannels(list);
    addChannels(list);
    if (std::ssize(list) != channels.size())
        return 1;
    moveToOrder(list);
    if (!channelsMatch(list))
        return 1;
    // The objects of the last render die with it, so the records take those of the new list.
    for (int i = 0; i < channels.size(); ++i) {
        if (list[i])
            describe(channels[i], *list[i]);
    }
    buildAliasTable();
    return 0;
}

/// Removes the channels that the list lacks, or has fewer of, from the third on.
void PKRegionData::removeStaleChannels(ChannelList list) {
    // A copy of the names, of which those from `i` on are not yet matched with a channel: of two
    // channels of one name each takes one entry.
    GrowTable<const char*> names;
    for (RenderChannel* channel : list)
        names.append(nameOf(channel));
    for (int i = kFirstExtraChannel; i < channels.size();) {
        int at = i;
        while (at < names.size() && !channels[i].hasName(names[at]))
            ++at;
        if (at >= names.size()) {
            removeChannel(i);
        } else {
            std::swap(names[i], names[at]);
            ++i;
        }
    }
}

void PKRegionData::setChannelNames(ChannelList list) {
    if (std::ssize(list) != channels.size())
        return;
    for (int i = 0; i < channels.size(); ++i) {
        const char* name = list[i] ? list[i]->getName() : nullptr;
        setName(channels[i], name ? name : "Unknown channel");
    }
}

void PKRegionData::setNumChannels(int count) {
    freeChannels();
    channels.resize(std::max(count, 0));
}

void PKRegionData::setChannelInfo(int index, int type, int alias, const char* name) {
    if (!isChannel(index))
        return;
    freeBuffer(channels[index]);
    channels[index] = ChannelRecord();
    channels[index].type = type;
    channels[index].alias = alias;
    setName(channels[index], name);
}

void PKRegionData::removeChannel(int index) {
    if (!isChannel(index))
        return;
    freeBuffer(channels[index]);
    const int alias = channels[index].alias;
    if (alias >= 0 && alias < aliasBuckets.size())
        aliasBuckets[alias] = nullptr;
    std::copy(channels.begin() + index + 1, channels.end(), channels.begin() + index);
    channels.resize(channels.size() - 1);
}

void PKRegionData::detachChannels() {
    for (ChannelRecord& record : channels)
        record.channel = nullptr;
}

}  // namespace Tarnkit
