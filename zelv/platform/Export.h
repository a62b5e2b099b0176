#pragma once

/// Marks what the shared library shows to those who link it; all else stays hidden.
#define ZELV_EXPORT __attribute__((visibility("default")))
