#pragma once

/// @file
/// The client's home page flag and home view information.

#include "talvex_framework_export.h"

namespace base::variant {
class Variant;
}

namespace talvex_common::utils {

/// Whether the client runs the new home page (whose host controller is registered under
/// "talvex://page/nxui/host") rather than the classic one. Defaults to false. Thread-safe.
TALVEX_FRAMEWORK_EXPORT bool IsNxHomePage();
/// Sets what IsNxHomePage returns.
TALVEX_FRAMEWORK_EXPORT void SetNxHomePage(bool on);

/// Copies the classic home view's information (a map with "start_x", "start_y", "end_x" and
/// "end_y") into `info`, replacing what it held, and returns true. Returns false and leaves
/// `info` untouched when no information has been set. Thread-safe.
TALVEX_FRAMEWORK_EXPORT bool GetHomeViewInfo(base::variant::Variant& info);

/// Stores a copy of `info` for GetHomeViewInfo. Only a map is stored; any other value (a null
/// one included) clears the stored information.
TALVEX_FRAMEWORK_EXPORT void SetHomeViewInfo(const base::variant::Variant& info);

}  // namespace talvex_common::utils
