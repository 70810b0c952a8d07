#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "pelk/contract/fragment.h"
#include "pelk/contract/scene_interfaces.h"

namespace Tarnkit {

class Scene;

/// The channels of one render, each once: beauty, alpha, and what the scene and its user ask for.
/// Materials find them through the sequence data, as its face EXT_CHANNEL_HOST.
class RenderChannels final : public ChannelHostInterface {
public:
    /// Makes the list: the scene's plug-ins first, then the names in its settings, then those of
    /// `asked`; "all" stands for every kind that is known by name. A channel that is asked for
    /// again is the same. Returns false with a text that says where which name is wrong. Comes
    /// before the life cycle of plug-ins begins, since they ask for their channels then.
    bool collect(const Scene& scene, std::span<const std::string> asked, std::string& error);

    /// `owner`: the object whose face this is.
    void setPlugin(PluginBase* newOwner) { owner = newOwner; }
    PluginBase* getPlugin() override { return owner; }
    int getNumChannels() override { return static_cast<int>(list.size()); }
    RenderChannel* getChannel(int index) override;

    std::span<RenderChannel* const> getList() const { return list; }
    /// Whether there are any beyond beauty and alpha.
    bool hasMore() const { return list.size() > 2; }

private:
    int add(std::unique_ptr<RenderChannel> channel);
    int find(std::string_view name) const;
    bool addSources(const Scene& scene, std::string& error);
    bool addNamed(std::span<const std::string> names, const char* place, std::string& error);

    PluginBase* owner = nullptr;
    std::vector<std::unique_ptr<RenderChannel>> channels;
    std::vector<RenderChannel*> list;  // the same
};

}  // namespace Tarnkit
