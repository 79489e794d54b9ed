#pragma once

// Test-only view of the observer registry; not installed.

#include <cstddef>

#include "qt_util/qt_util_export.h"

namespace qt_util::internal {

/// Number of observers the registry currently owns.
QT_UTIL_EXPORT std::size_t EventObserverCount();

}  // namespace qt_util::internal
