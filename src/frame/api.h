#pragma once

#include "platform/api.h"
