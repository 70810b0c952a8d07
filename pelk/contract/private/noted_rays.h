#pragma once

#include <iterator>
#include <utility>

#include "pelk/base/color.h"
#include "pelk/contract/channel_alias.h"
#include "pelk/contract/fragment.h"

namespace Tarnkit {

/// Sums up what the samplers that make up one surface (layers, sides) enter in the channels
/// kAliasReflection, kAliasRefraction and kAliasReflectionFilter of the hit. Each sampler enters
/// its own ray as if it were the whole surface, and replaces what stands there; without this the
/// last layer's reflection would stand for all, and not scaled by what the layers above leave of
/// it.
///
/// On the stack of a traceForward, for one hit; doesn't throw. The channels of these aliases are
/// colours:
///
///     NotedRays noted(context.resultFragment);
///     for (each sampler) {
///         sampler.traceBSDFForward(context, doDiffuse);
///         noted.take(its share);
///     }
///     noted.write();
class NotedRays {
public:
    /// Empties the channels for the first sampler. `fragment`: the hit's resultFragment; with null
    /// all does nothing.
    explicit NotedRays(Fragment* fragment_) : fragment(fragment_) {
        for (int i = 0; fragment && i < kNumAliases; ++i) {
            if (Color* noted = channel(i))
                *noted = Color(0);
        }
    }

    /// Adds what a sampler has entered, times its share in what is seen of the surface, and empties
    /// the channels for the next, which may enter nothing.
    void take(const Color& share) {
        for (int i = 0; fragment && i < kNumAliases; ++i) {
            if (Color* noted = channel(i))
                sums[i] += share * std::exchange(*noted, Color(0));
        }
    }

    /// Enters the sums, black where nothing was traced, so that no leftover of a sampler's entry
    /// remains. Called once, after the last `take`.
    void write() {
        for (int i = 0; fragment && i < kNumAliases; ++i) {
            if (channel(i))
                fragment->addAlias(kAliases[i], &sums[i]);
        }
    }

private:
    // What a sampler's own ray enters: see BSDFSampler::traceBSDFForward.
    static constexpr int kAliases[] = {kAliasReflection, kAliasRefraction, kAliasReflectionFilter};
    static constexpr int kNumAliases = std::size(kAliases);

    // The address of the i-th alias's value in the fragment, which stays valid as long as that;
    // null for a fragment that lacks the channel.
    Color* channel(int i) { return static_cast<Color*>(fragment->getAliasPtr(kAliases[i])); }

    Fragment* fragment;       // the hit's, or null
    Color sums[kNumAliases];  // what was taken so far, in the order of kAliases
};

}  // namespace Tarnkit
