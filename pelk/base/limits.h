#pragma once

namespace Tarnkit {

// The two numbers that stand for "without end". Both are 1e18 and not infinity: differences and
// quotients of infinities are no numbers, while the square of this still fits into a float.

/// The rayMaxT (tmax) of an unbounded ray, and the distance or depth where nothing was hit; in
/// scene units. The float nearest to 1e18, so that a value which went through a float still
/// compares equal. Where depths are floats, as in fragments, cast it: that is exact.
constexpr double kRayFar = static_cast<double>(1e18f);

/// The density that stands for a delta distribution: a mirror's, a point light's, and one that
/// can't be computed as it divides by nearly 0. In the power heuristic of multiple importance
/// sampling no other density has any weight against it, so such a sample counts in full. Per solid
/// angle or in the scale of BRDFSampler::eval: at this size a factor of 2 pi changes nothing.
constexpr float kDeltaDensity = 1e18f;

}  // namespace Tarnkit
