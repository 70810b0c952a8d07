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

/// The render channels (AOVs) of one render, each once: beauty, alpha, and what the scene and its
/// user ask for. Materials find them through the sequence data, as its interface EXT_CHANNEL_HOST,
/// to learn the index of an alias. All regions of the render take the same list, so an index means
/// the same channel in every fragment. Collected by one thread, then read by all.
class RenderChannels final : public ChannelHostInterface {
public:
    /// Makes the list: beauty and alpha, the channels of the scene's plug-ins, the names in its
    /// settings, then those of `asked`, what the user asked for; "all" stands for every alias
    /// with a name. A channel that is asked for twice stands once, at its first place. Returns
    /// false with an `error` that says where which name is wrong, and what is known there. Must
    /// come before the first renderBegin, in which materials ask for the indices of their channels.
    bool collect(const Scene& scene, std::span<const std::string> asked, std::string& error);

    /// `newOwner`: the object whose interface this is, asked for by getPlugin. Not owned.
    void setPlugin(PluginBase* newOwner) { owner = newOwner; }
    PluginBase* getPlugin() override { return owner; }
    int getNumChannels() override { return channels.size(); }
    RenderChannel* getChannel(int index) override { return channels.at(index); }

    /// All channels by their indices, as PKRegionData::setChannels takes them.
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
