#include "pelk/host/render/render_channels.h"

#include "pelk/host/plugins/channel_plugin.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/scene/scene_json.h"
#include "pelk/support/regions/channel_kinds.h"
#include "pelk/support/spelling.h"

namespace Tarnkit {

bool RenderChannels::collect(const Scene& scene, std::span<const std::string> asked,
                             std::string& error) {
    channels.clear();
    list.clear();
    add(newChannel(channelKinds()[0]));
    add(newChannel(channelKinds()[1]));
    return addSources(scene, error) &&
           addNamed(scene.settings.channels, "/settings/channels", error) &&
           addNamed(asked, "--channels", error);
}

RenderChannel* RenderChannels::getChannel(int index) {
    return index >= 0 && index < getNumChannels() ? list[static_cast<size_t>(index)] : nullptr;
}

/// Takes a channel in, or drops it if there is one of that name. Returns its place.
int RenderChannels::add(std::unique_ptr<RenderChannel> channel) {
    const int known = find(channel->getName());
    if (known >= 0)
        return known;
    list.push_back(channel.get());
    channels.push_back(std::move(channel));
    return getNumChannels() - 1;
}

/// The place of the channel of that name, or -1.
int RenderChannels::find(std::string_view name) const {
    for (size_t i = 0; i < list.size(); ++i) {
        if (name == list[i]->getName())
            return static_cast<int>(i);
    }
    return -1;
}

bool RenderChannels::addSources(const Scene& scene, std::string& error) {
    for (ChannelSourceInterface* source : scene.collect<ChannelSourceInterface>()) {
        const char* const name = static_cast<Plugin*>(source->getPlugin())->getPluginName();
        const std::string pointer = pointerTo("/plugins", name);
        std::string reason;
        std::unique_ptr<RenderChannel> channel = source->newChannel(reason);
        if (!channel) {
            error = pointer + "/" + reason;
            return false;
        }
        const int type = channel->getType();
        const int index = add(std::move(channel));
        if (list[static_cast<size_t>(index)]->getType() != type) {
            error = pointer + "/channel_type: another channel of this name has other values";
            return false;
        }
        source->setChannelIndex(index);
    }
    return true;
}

bool RenderChannels::addNamed(std::span<const std::string> names, const char* place,
                              std::string& error) {
    for (const std::string& name : names) {
        if (name == "all") {
            for (const ChannelKind& kind : channelKinds())
                add(newChannel(kind));
        } else if (const ChannelKind* kind = findChannelKind(name)) {
            add(newChannel(*kind));
        } else if (find(name) < 0) {
            std::vector<std::string_view> known = channelKindNames();
            known.push_back("all");
            for (size_t i = 2; i < list.size(); ++i) {
                if (!findChannelKind(list[i]->getName()))
                    known.push_back(list[i]->getName());
            }
            error = std::string(place) + ": there is no channel \"" + name + "\"" +
                    knownNames(name, known);
            return false;
        }
    }
    return true;
}

}  // namespace Tarnkit
