#include "pelk/materials/maya/ramp.h"

#include "fake_host/fake_host.h"
