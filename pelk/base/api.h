#pragma once

#include "pelk/platform/api.h"
