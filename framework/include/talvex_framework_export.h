#pragma once

/// @file
/// TALVEX_FRAMEWORK_EXPORT.

/// Everything in libtalvex_framework.so is hidden unless marked with this macro.
#define TALVEX_FRAMEWORK_EXPORT __attribute__((visibility("default")))
