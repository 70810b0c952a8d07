#pragma once

#include "pelk/contract/material.h"

/// What stands behind a matte at the hit. With `projects`, a matte that the ray reached after the
/// camera shows what the picture has where the camera would see the hit; without a camera, or for
/// hits outside the picture, the plain environment is taken. Writes the context's resultColor.
Color lookUpBackground(PelkContext& context, bool projects);
