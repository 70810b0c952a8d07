#pragma once

#include <iterator>
#include <utility>

#include "pelk/base/color.h"
#include "pelk/contract/channel_alias.h"
#include "pelk/contract/fragment.h"

namespace Tarnkit {

/// What the samplers that make up one surface enter in the hit's channels of their own rays, each
/// by its share in what is seen of the surface. A sampler's own entry replaces what stands there.
/// The channels of these aliases are colours.
class NotedRays {
public:
    /// Empties the channels. `fragment` may be null.
    explicit NotedRays(Fragment* fragment_) : fragment(fragment_) {
        for (int i = 0; fragment && i < kNumAliases; ++i) {
            if (Color* noted = channel(i))
                *noted = Color(0);
        }
    }

    /// Takes what a sampler has entered, and empties the channels for the next.
    void take(const Color& share) {
        for (int i = 0; fragment && i < kNumAliases; ++i) {
            if (Color* noted = channel(i))
                sums[i] += share * std::exchange(*noted, Color(0));
        }
    }

    /// Enters the sum.
    void write() {
        for (int i = 0; fragment && i < kNumAliases; ++i) {
            if (channel(i))
                fragment->addAlias(kAliases[i], &sums[i]);
        }
    }

private:
    static constexpr int kAliases[] = {kAliasReflection, kAliasRefraction, kAliasReflectionFilter};
    static constexpr int kNumAliases = std::size(kAliases);

    Color* channel(int i) { return static_cast<Color*>(fragment->getAliasPtr(kAliases[i])); }

    Fragment* fragment;
    Color sums[kNumAliases];
};

}  // namespace Tarnkit
