#pragma once

#include "pelk/materials/matte/mtl_wrapper.h"

/// A MtlWrapper that is opaque black to reflected and refracted rays, matte or not. Its sampler
/// doesn't know of this.
class MtlWrapperMaya final : public MtlWrapper {
public:
    static constexpr const char* kName = "MtlWrapperMaya";
    static constexpr u32 kID = 0x77C24530;

    using MtlWrapper::MtlWrapper;

    void shade(PelkContext& context) override;
};

using MtlWrapperMayaDesc = DescOf<MtlWrapperMaya>;
