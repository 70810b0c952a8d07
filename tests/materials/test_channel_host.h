#pragma once

#include "fake_host/recorders.h"
#include "support/regions/test_channels.h"

/// The channels of a render, the one of each alias at the place of that number.
struct TestChannelHost : PluginWith<ChannelHostInterface> {
    TestChannelHost() {
        for (int alias = 0; alias <= kAliasRawRefraction; ++alias)
            channels.add(kChannelColor, alias);
    }
    int getNumChannels() override { return static_cast<int>(channels.list.size()); }
    RenderChannel* getChannel(int index) override { return channels.list[index]; }

    TestChannels channels;
};
