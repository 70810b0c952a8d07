#pragma once

#include "pelk/contract/forwarding_sampler.h"
#include "pelk/contract/material.h"
#include "pelk/materials/maya/bump_vector.h"

namespace Tarnkit {

/// The sampler of a bumped hit: the base's sampler, which was made with the normal moved, and the
/// bump, for the operations that look at the context's normal later. Evaluating a light needs
/// nothing of it: light loops set the normal to getDiffuseNormal first.
///
/// Pooled and not constructed anew: MtlBump::getBSDF writes every field, those of ForwardingSampler
/// included. It is used by one thread, at one hit, and holds nothing that outlasts releaseBSDF.
class BumpBRDFSampler : public ForwardingSampler {
public:
    Vector bump;              ///< of computeBump, for applyBump
    Vector offset;            ///< by which a height map raises the hit point; counts in kBumpHeight
    int createdBackSide = 0;  ///< the context's backSide when the sampler was made
    int mode = kBumpNone;     ///< a BumpForm; kBumpNone where the hit has no bump

    /// The base's diffuse normal with the bump; an explicit normal stands for it, unasked.
    Vector getDiffuseNormal(PelkContext& context) override;
    /// The base's, in a context with the normal bumped and, for a height map with `bump_shadows`,
    /// the hit point raised: lowered where the hit was turned over since the sampler was made, as
    /// the viewer's side is then the other one. Then enters the bumped normal in the channels
    /// kAliasBumpScreenNormal and kAliasBumpOffset, if the fragment has them. Normal and hit point
    /// are as before when it returns or throws, whatever the base has left there.
    void traceForward(PelkContext& context, int doDiffuse) override;

private:
    Vector bumped(const PelkContext& context, Vector normal) const;
    Point movedPoint(const PelkContext& context) const;
};

}  // namespace Tarnkit
