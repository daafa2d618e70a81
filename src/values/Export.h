#pragma once

/// Stands before every class and function that a host program may call. All other symbols stay
/// inside the shared library.
#define MRZIPHOTO_EXPORT __attribute__((visibility("default")))
