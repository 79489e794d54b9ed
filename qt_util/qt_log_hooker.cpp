#include "qt_util/qt_log_hooker.h"

#include <QString>

#include "base/common/include/logger.h"
#include "qt_util/string_utils.h"

namespace {

// How a Qt message type is relayed: the name its line starts with and its log level; level 0
// is not relayed.
struct Relay {
  const char* name;
  int level;
};

Relay RelayOf(QtMsgType type) {
  switch (type) {
    case QtDebugMsg:
      // Qt's debug chatter would drown the client's own lines at any level.
      return {"QDebugMsg", 0};
    case QtWarningMsg:
      return {"QWarningMsg", base::log::kLevelWarning};
    case QtCriticalMsg:
      return {"QCriticalMsg", base::log::kLevelQtCritical};
    case QtFatalMsg:
      return {"QFatalMsg", base::log::kLevelFailure};
    case QtInfoMsg:
      return {"QInfoMsg", base::log::kLevelInfo};
  }
  return {"QOtherMsg", 0};
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
  const Relay relay = RelayOf(type);
  if (relay.level == 0) return;
  // One pass over the template: a "%1" inside the message must come out as written.
  const QString text = QStringLiteral("%1(%2:%3) %4")
                           .arg(QLatin1String(relay.name), ShortFileName(context.file),
                                QString::number(context.line), message);
  QTU_LOG(relay.level) << QTStringUtils::QStr2StdStr(text);
}
