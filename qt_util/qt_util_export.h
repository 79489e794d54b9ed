#pragma once

/// @file
/// QT_UTIL_EXPORT.

/// Everything in libqt_util.so is hidden unless marked with this macro.
#define QT_UTIL_EXPORT __attribute__((visibility("default")))
