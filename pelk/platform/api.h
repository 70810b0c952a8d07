#pragma once

/// Marks what libpelk.so exports. All else is hidden.
#define PELK_API __attribute__((visibility("default")))
