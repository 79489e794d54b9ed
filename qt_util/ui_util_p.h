#pragma once

// VxQtUiUtil's sources are split by topic (ui_util_image.cpp, ui_util_style.cpp, ...), but the
// library names one file for the facility, ui_util.cpp, and the client's log tools key on it: the
// records and Qt messages of every topic unit carry that file, with the call site's own line and
// function. Private to the library.

#include <QByteArray>
#include <QMessageLogger>

#include "base/common/include/logger.h"

namespace qt_util::internal {

/// The file every record of VxQtUiUtil names, in the base-name form of the library's records.
inline constexpr char kUiUtilFileName[] = "ui_util.cpp";

/// The same file in the form of the library's other Qt message contexts, which carry the
/// compiler's path of their source: this header's directory (that of the topic units too) and
/// kUiUtilFileName.
inline const char* UiUtilSourcePath() {
  static const QByteArray path =
      QByteArray(__FILE__, int(::base::log::BaseNameOffset(__FILE__))) + kUiUtilFileName;
  return path.constData();
}

}  // namespace qt_util::internal

/// QTU_LOG for the units of VxQtUiUtil: the record names kUiUtilFileName.
#define QTU_UI_UTIL_LOG(level) QTU_LOG_IN_FILE(level, ::qt_util::internal::kUiUtilFileName)

/// A QMessageLogger at the call site's line in `function`, for a Qt message of VxQtUiUtil.
#define QTU_UI_UTIL_QT_MESSAGE(function) \
  QMessageLogger(::qt_util::internal::UiUtilSourcePath(), __LINE__, (function))
