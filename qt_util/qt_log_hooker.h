#pragma once

/// @file
/// QtLogHooker, Qt's messages into the framework log.

#include <QtGlobal>

#include "qt_util/qt_util_export.h"

class QMessageLogContext;
class QString;

/// Relays Qt's own diagnostics into the framework log. Install it yourself after creating
/// the application:
///
///   QtMessageHandler previous = qInstallMessageHandler(&QtLogHooker::HandleGlobalMessage);
///
/// Each message becomes one record "\<type>(\<file>:\<line>) \<message>", where \<type> is
/// QInfoMsg, QWarningMsg, QCriticalMsg or QFatalMsg and \<file> the base name of the
/// emitting source ("unknown" without context). Levels: info 6, warning 4, critical 5,
/// fatal 1; debug messages are never logged. A critical message thus needs a more talkative
/// log level than a warning, and a fatal one is written whenever logging is on.
class QT_UTIL_EXPORT QtLogHooker {
 public:
  /// A QtMessageHandler; safe on any thread. Qt still aborts after a fatal message.
  static void HandleGlobalMessage(QtMsgType type, const QMessageLogContext& context,
                                  const QString& message);
};
