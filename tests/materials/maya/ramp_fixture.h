#pragma once

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "materials/maya/ramp_reference.h"
#include "pelk/contract/shading.h"
#include "support/regions/test_channels.h"

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// A medium of the scene.
class MediumPlugin : public Plugin, public PelkVolume {
public:
    explicit MediumPlugin(float index) : ior(index) { addInterface(this, 0); }
    PluginBase* getPlugin() override { return this; }
    float getIOR(PelkContext&) override { return ior; }

    float ior;
};

/// The channels of a render, one behind the other by alias; 0 stands for a place without channel.
class AliasedChannels : public ChannelHostInterface {
public:
    explicit AliasedChannels(PluginBase& owner_, const std::vector<int>& aliases) : owner(owner_) {
        for (const int alias : aliases)
            channels.push_back(alias ? std::make_unique<TestChannel>(kChannelColor, alias)
                                     : nullptr);
        owner.addInterface(this, 0);
    }
    ~AliasedChannels() override { owner.removeInterface(this); }
    PluginBase* getPlugin() override { return &owner; }
    int getNumChannels() override { return static_cast<int>(channels.size()); }
    RenderChannel* getChannel(int index) override { return channels.at(index).get(); }

private:
    PluginBase& owner;
    std::vector<std::unique_ptr<TestChannel>> channels;
};

/// A fragment that gives back what was written to it last.
class ChannelFragment : public RecordingFragment {
public:
    void getChannel(int index, void* out) override { *static_cast<Color*>(out) = last(index); }
    Color last(int index) const {
        Color value;
        for (const auto& [channel, written] : channels)
            if (channel == index)
                value = written;
        return value;
    }
};

/// A hit within media, the innermost last.
class MediaContext : public FakeContext {
public:
    using FakeContext::FakeContext;
    std::vector<PelkVolume*> media;

    PelkVolume* currentVolume(PelkVolume* skip) override {
        const auto inner = std::find_if(media.rbegin(), media.rend(),
                                        [&](PelkVolume* volume) { return volume != skip; });
        return inner == media.rend() ? nullptr : *inner;
    }
};

/// The ramp material in a fake host, with its ramps given by their points.
class RampFixture : public FakeHost {
protected:
    void setRamp(const std::string& ramp, const std::vector<RampPoint>& points) {
        const RampLists lists(points);
        setParams(mtl, {{(ramp + "_positions").c_str(), lists.positions},
                        {(ramp + "_interpolations").c_str(), lists.interpolations}});
        if (ramp == "specularRollOff" || ramp == "reflectivity")
            setParams(mtl, {{(ramp + "_values").c_str(), lists.values}});
        else
            setParams(mtl, {{(ramp + "_colors").c_str(), lists.colors}});
    }
    /// The same value everywhere.
    void setRamp(const std::string& ramp, Color value, float alpha = 1.0f) {
        setRamp(ramp, {{0.0f, {value, alpha}, 0}});
    }

    PelkMaterial& mtl = make("MtlMayaRamp", "toon");
    ThreadData thread;
    MediaContext context{renderer, thread};
};
