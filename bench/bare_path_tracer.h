#pragma once

#include <vector>

namespace bench {

/// What a bare render did.
struct BareResult {
    double seconds = 0.0;  ///< the rendering alone
    long long rays = 0;
    double mean[3] = {};  ///< of the picture
};

/// The Cornell box hard-wired on Embree: no plug-ins, no virtual calls, two materials, independent
/// random numbers, no roulette. The limit for a renderer that traces the same rays.
class BarePathTracer {
public:
    BarePathTracer();
    ~BarePathTracer();
    BarePathTracer(const BarePathTracer&) = delete;
    BarePathTracer& operator=(const BarePathTracer&) = delete;

    /// A picture of `size` x `size` pixels on one thread. `seed` chooses the random numbers.
    BareResult render(int size, int samples, unsigned seed) const;

private:
    struct Impl;
    Impl* impl;
};

}  // namespace bench
