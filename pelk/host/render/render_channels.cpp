#include "pelk/host/render/render_channels.h"

#include "pelk/host/plugins/channel_plugin.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/scene/scene_json.h"
#include "pelk/support/regions/channel_kinds.h"
#include "pelk/support/spelling.h"

namespace Tarnkit {

namespace {

constexpr int kPicture[] = {kAliasImageColor, kAliasImageAlpha};
static_assert(kPicture[kBeautyChannel] == kAliasImageColor &&
              kPicture[kAlphaChannel] == kAliasImageAlpha);

}  // namespace

bool RenderChannels::collect(const Scene& scene, std::span<const std::string> asked,
                             std::string& error) {
    channels.clear();
    channels.addAliases(kPicture);
    return addSources(scene, error) &&
           addNamed(scene.settings.channels, "/settings/channels", error) &&
           addNamed(asked, "--channels", error);
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
        const int index = channels.add(std::move(channel));
        if (channels.at(index)->getType() != type) {
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
            for (const ChannelAliasInfo& info : namedChannelAliases())
                channels.add(newChannel(info.alias));
        } else if (const ChannelAliasInfo* info = findChannelAlias(name)) {
            channels.add(newChannel(info->alias));
        } else if (channels.find(name) < 0) {
            error = std::string(place) + ": there is no channel \"" + name + "\"" +
                    knownNames(name, namesToAskFor());
            return false;
        }
    }
    return true;
}

/// What a message offers in place of a name that isn't known: the scene's own channels included.
std::vector<std::string_view> RenderChannels::namesToAskFor() const {
    std::vector<std::string_view> names = channelNames();
    names.push_back("all");
    for (RenderChannel* channel : channels.getList().subspan(kFirstExtraChannel)) {
        if (!findChannelAlias(channel->getName()))
            names.push_back(channel->getName());
    }
    return names;
}

}  // namespace Tarnkit
