#pragma once

#include "pelk/materials/matte/mtl_wrapper.h"

/// A MtlWrapper that is opaque black to reflected and refracted rays, matte or not: the
/// background that a matte shows the camera isn't seen in mirrors and through glass. shade() alone
/// does so; the sampler of getBSDF() is that of MtlWrapper.
class MtlWrapperMaya final : public MtlWrapper {
public:
    static constexpr const char* kName = "MtlWrapperMaya";
    static constexpr u32 kID = 0x77C24530;

    using MtlWrapper::MtlWrapper;

    void shade(PelkContext& context) override;
};

using MtlWrapperMayaDesc = DescOf<MtlWrapperMaya>;
