#include "pelk/materials/matte/mtl_wrapper_maya.h"

void MtlWrapperMaya::shade(PelkContext& context) {
    if (context.rayType & (kRayReflect | kRayRefract))
        return setOpaqueBlack(context);
    MtlWrapper::shade(context);
}
