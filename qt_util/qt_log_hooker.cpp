#include "qt_util/qt_log_hooker.h"

#include <QString>

#include "base/common/include/logger.h"
#include "qt_util/string_utils.h"

namespace {

QString MessageTypeName(QtMsgType type) {
  switch (type) {
    case QtDebugMsg:
      return QStringLiteral("QDebugMsg");
    case QtWarningMsg:
      return QStringLiteral("QWarningMsg");
    case QtCriticalMsg:
      return QStringLiteral("QCriticalMsg");
    case QtFatalMsg:
      return QStringLiteral("QFatalMsg");
    case QtInfoMsg:
      return QStringLiteral("QInfoMsg");
  }
  return QStringLiteral("QOtherMsg");
}

// Sources from the client's Windows builds come with backslashes; both kinds separate.
QString ShortFileName(const char* file) {
  if (!file || !*file) return QStringLiteral("unknown");
  QString name = QString::fromUtf8(file);
  name.replace(QLatin1Char('\\'), QLatin1Char('/'));
  const int slash = name.lastIndexOf(QLatin1Char('/'));
  return slash < 0 ? name : name.mid(slash + 1);
}

}  // namespace

void QtLogHooker::HandleGlobalMessage(QtMsgType type, const QMessageLogContext& context,
                                      const QString& message) {
  // One pass over the template: a "%1" inside the message must come out as written.
  const QString text = QStringLiteral("%1(%2:%3) %4")
                           .arg(MessageTypeName(type), ShortFileName(context.file),
                                QString::number(context.line), message);
  switch (type) {
    case QtInfoMsg:
      QTU_LOG(base::log::kLevelInfo) << QTStringUtils::QStr2StdStr(text);
      break;
    case QtWarningMsg:
      QTU_LOG(base::log::kLevelWarning) << QTStringUtils::QStr2StdStr(text);
      break;
    case QtCriticalMsg:
      QTU_LOG(base::log::kLevelQtCritical) << QTStringUtils::QStr2StdStr(text);
      break;
    case QtFatalMsg:
      QTU_LOG(base::log::kLevelFailure) << QTStringUtils::QStr2StdStr(text);
      break;
    case QtDebugMsg:
      // Qt's debug chatter would drown the client's own lines at any level.
      break;
  }
}
