#include "pelk/host/plugins/channel_plugin.h"

#include <algorithm>

#include "pelk/host/plugins/text_parameter.h"
#include "pelk/support/regions/channel_kinds.h"
#include "pelk/support/spelling.h"

namespace Tarnkit {

namespace {

constexpr const char* kCustom = "custom";
constexpr std::size_t kLongestName = 63;  // what a region keeps of it

/// What is wrong with the name of a scene's own channel; empty if nothing is.
std::string checkCustomName(const std::string& name) {
    const auto isGood = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '-';
    };
    if (name.empty() || name.size() > kLongestName ||
        !std::all_of(name.begin(), name.end(), isGood))
        return "expected 1 to 63 letters, digits, '_' or '-', not \"" + name + "\"";
    if (findChannelAlias(name) || name == "all")
        return "the name \"" + name + "\" has a meaning of its own; expected another one";
    return {};
}

}  // namespace

void ChannelPlugin::addParameters(PelkParameterListDesc& list) {
    list.addParamString("kind", kCustom, -1,
                        "Name of a channel that the host knows, such as depth or reflection; or "
                        "custom, for a channel of the scene's own");
    list.addParamString("channel_name", "", -1, "Name of a custom channel");
    list.addParamString("channel_type", "color", -1, "Values of a custom channel: color or float");
}

std::unique_ptr<RenderChannel> ChannelPlugin::newChannel(std::string& error) {
    const std::string kindName = textParameter(paramList, *desc, "kind");
    if (kindName != kCustom) {
        if (const ChannelAliasInfo* kind = findChannelAlias(kindName))
            return Tarnkit::newChannel(kind->alias);
        std::vector<std::string_view> names = channelNames();
        names.push_back(kCustom);
        error = "kind: there is no channel \"" + kindName + "\"" + knownNames(kindName, names);
        return nullptr;
    }
    const std::string custom = textParameter(paramList, *desc, "channel_name");
    const std::string fault = checkCustomName(custom);
    const std::string type = textParameter(paramList, *desc, "channel_type");
    if (!fault.empty())
        error = "channel_name: " + fault;
    else if (type != "color" && type != "float")
        error = "channel_type: expected color or float, not \"" + type + "\"";
    else
        return newCustomChannel(custom, type == "color" ? kChannelColor : kChannelFloat);
    return nullptr;
}

}  // namespace Tarnkit
