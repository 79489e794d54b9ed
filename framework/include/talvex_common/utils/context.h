#pragma once

/// @file
/// The client's application name.

#include <string>

#include "talvex_framework_export.h"

namespace talvex_common::utils::context {

/// The application's name in UTF-8: the name given to SetAppName, or else
/// QCoreApplication::applicationName() at the time of the call (empty without a name and
/// without an application object). Thread-safe.
TALVEX_FRAMEWORK_EXPORT std::string GetAppName();

/// Sets the name GetAppName reports; an empty name returns to the default.
TALVEX_FRAMEWORK_EXPORT void SetAppName(const std::string& utf8);

}  // namespace talvex_common::utils::context
