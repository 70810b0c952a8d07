#pragma once

#include "pelk/contract/samplers.h"

namespace Tarnkit {

/// Irradiance over pi at the hit, from the GI engine, about the BRDF's getDiffuseNormal: the factor
/// of the diffuse albedo in BRDFSampler::traceForward and in what shows through a two-sided
/// surface. Black without a renderer or a GI engine, as in a blank context. Traces rays, so it may
/// throw.
Color gatherIrradiance(PelkContext& context, BRDFSampler& brdf);

}  // namespace Tarnkit
