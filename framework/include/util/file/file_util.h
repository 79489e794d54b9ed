#pragma once

/// @file
/// Path joining and file existence.

#include <string>

#include "talvex_framework_export.h"

namespace util::file {

/// Joins a directory and a name with exactly one '/' between them, whatever separators `dir`
/// ends with or `name` starts with ("a/" + "b" and "a" + "/b" both give "a/b"; "/" + "b" gives
/// "/b"). An empty `dir` gives `name` unchanged, an empty `name` gives `dir` with one trailing
/// separator.
TALVEX_FRAMEWORK_EXPORT std::string MakeFilePath(const std::string& dir, const std::string& name);

/// True when `path` names a regular file (symbolic links are followed). False for directories,
/// other file types, missing or unreadable paths and the empty path.
TALVEX_FRAMEWORK_EXPORT bool IsFileExist(const std::string& path);

}  // namespace util::file
