#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "pelk/contract/channel_alias.h"
#include "pelk/contract/scene_interfaces.h"
#include "pelk/support/regions/channel_set.h"

namespace Tarnkit {

class Scene;

/// The channels of one render, each once: beauty, alpha, and what the scene and its user ask for.
/// Materials find them through the sequence data, as its interface EXT_CHANNEL_HOST.
class RenderChannels final : public ChannelHostInterface {
public:
    /// Makes the list: the scene's plug-ins first, then the names in its settings, then those of
    /// `asked`; "all" stands for every channel that is known by name. A channel that is asked for
    /// again is the same. Returns false with a text that says where which name is wrong. Comes
    /// before the life cycle of plug-ins begins, since they ask for their channels then.
    bool collect(const Scene& scene, std::span<const std::string> asked, std::string& error);

    /// `owner`: the object whose interface this is.
    void setPlugin(PluginBase* newOwner) { owner = newOwner; }
    PluginBase* getPlugin() override { return owner; }
    int getNumChannels() override { return channels.size(); }
    RenderChannel* getChannel(int index) override { return channels.at(index); }

    std::span<RenderChannel* const> getList() const { return channels.getList(); }
    /// Whether there are any beyond beauty and alpha.
    bool hasMore() const { return channels.size() > kFirstExtraChannel; }

private:
    bool addSources(const Scene& scene, std::string& error);
    bool addNamed(std::span<const std::string> names, const char* place, std::string& error);
    std::vector<std::string_view> namesToAskFor() const;

    PluginBase* owner = nullptr;
    ChannelSet channels;
};

}  // namespace Tarnkit
