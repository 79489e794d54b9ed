#pragma once

/// @file
/// The version of the loaded library.

#include "qt_util/qt_util_export.h"
#include "qt_util/version_config.h"

namespace qt_util {

/// The version of the loaded library ("1.0.0"), which may differ from the headers a client
/// was built with; compare with QT_UTIL_VERSION_STRING to detect a mismatch.
QT_UTIL_EXPORT const char* Version();

}  // namespace qt_util
