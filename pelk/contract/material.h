#pragma once

// The one header that materials include: the contract, with the host's names brought to the global
// scope, where materials and their descriptors live. Their class names are what scenes and users
// see, so they stand without a namespace. Headers of a host or a support module include what they
// need of the list below instead, or they would spill every name into the global scope of their
// users.
//
// In order of use at a hit: pools for samplers, the hit's context, render channels, the parameters,
// the material's base class, the renderer and its lights, samplers, descriptor text, textures.

#include "pelk/base/thread_pools.h"
#include "pelk/contract/channel_alias.h"
#include "pelk/contract/context.h"
#include "pelk/contract/desc_of.h"
#include "pelk/contract/fragment.h"
#include "pelk/contract/param_table.h"
#include "pelk/contract/pelk_material.h"
#include "pelk/contract/renderer.h"
#include "pelk/contract/sampler_pool.h"
#include "pelk/contract/samplers.h"
#include "pelk/contract/shader_source.h"
#include "pelk/contract/texture.h"

using namespace Tarnkit;  // NOLINT(google-build-using-namespace): once, here, on purpose
