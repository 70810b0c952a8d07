#pragma once

// The one header that materials include: the contract, with the host's names brought to the global
// scope, where materials and their descriptors live.

#include "frame/context.h"
#include "frame/fragment.h"
#include "frame/param_table.h"
#include "frame/pelk_material.h"
#include "frame/renderer.h"
#include "frame/samplers.h"
#include "frame/shader_source.h"
#include "frame/texture.h"
#include "frame/thread_pools.h"

using namespace Tarnkit;  // NOLINT(google-build-using-namespace): once, here, on purpose
