#pragma once

#include "pelk/materials/matte/mtl_wrapper.h"

/// A MtlWrapper that is opaque black to reflected and refracted rays, matte or not. Its sampler
/// doesn't know of this.
class MtlWrapperMaya final : public MtlWrapper {
public:
    using MtlWrapper::MtlWrapper;

    void shade(PelkContext& context) override;
};

class MtlWrapperMayaDesc : public MaterialDesc<MtlWrapperMaya> {
public:
    MtlWrapperMayaDesc();
    u32 getPluginID() override { return 0x77C24530; }
    const char* getName() override { return "MtlWrapperMaya"; }
};
