#pragma once

#include <memory>
#include <string>

#include "pelk/contract/desc_of.h"
#include "pelk/contract/fragment.h"
#include "pelk/contract/scene_interfaces.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// A plug-in by which a scene asks for a render channel (AOV). RenderChannels calls it before a
/// render.
class ChannelSourceInterface : public PluginInterface {
public:
    static constexpr InterfaceID<ChannelSourceInterface> kInterfaceID{0x7E1C0005,
                                                                      "EXT_CHANNEL_SOURCE"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// A new object for the channel; null with a text that starts with the parameter at fault.
    virtual std::unique_ptr<RenderChannel> newChannel(std::string& error) = 0;
    /// Tells the index that the channel has among those of the coming render.
    virtual void setChannelIndex(int index) = 0;
};

/// A render channel (AOV) as a plug-in of the scene, so that materials that write to channels can
/// refer to it: one of the kinds known by name, or a channel of the scene's own, which holds what
/// plug-ins write to it.
class ChannelPlugin final : public PluginOffering<RenderChannelInterface, ChannelSourceInterface> {
public:
    static constexpr const char* kName = "RenderChannel";
    static constexpr u32 kID = 0x7E100051;

    using PluginOffering::PluginOffering;
    static void addParameters(PelkParameterListDesc& list);

    int getChannelIndex() override { return index; }
    std::unique_ptr<RenderChannel> newChannel(std::string& error) override;
    void setChannelIndex(int newIndex) override { index = newIndex; }

private:
    int index = -1;
};

}  // namespace Tarnkit
