#pragma once

#include "pelk/contract/samplers.h"

namespace Tarnkit {

/// Indirect light at the hit, around the normal that diffuse light is scattered about; black in a
/// scene without.
Color gatherIrradiance(PelkContext& context, BRDFSampler& brdf);

}  // namespace Tarnkit
