// Writes records at several levels through the log writer and shows which ones pass the
// current level, with the default stderr line format and with a custom sink.
#include <QApplication>

#include "base/common/include/logger.h"
#include "gallery.h"
#include "qt_util/version.h"

namespace {

int RunLogging(QApplication&, const QString&) {
  gallery::Say(QStringLiteral("qt_util %1 loaded").arg(qt_util::Version()));

  gallery::Say(
      "Log level 4: levels 1 and 4 go to the default stderr sink, 5 and 6 are dropped "
      "before their text is even built.");
  base::log::SetLogLevel(base::log::kLevelWarning);
  for (int level : {base::log::kLevelFailure, base::log::kLevelWarning, base::log::kLevelQtCritical,
                    base::log::kLevelInfo})
    QTU_LOG(level) << "a record at level " << level;

  gallery::Say("Log level 6 with a custom sink that prints level, file:line and text:");
  base::log::SetLogLevel(base::log::kLevelInfo);
  int seen = 0;
  base::log::LogSink previous = base::log::SetLogSink([&](const base::log::LogRecord& record) {
    ++seen;
    gallery::Say(QStringLiteral("  [sink] level %1 %2:%3 %4| %5")
                     .arg(record.level)
                     .arg(QString::fromStdString(record.file))
                     .arg(record.line)
                     .arg(QString::fromStdString(record.function))
                     .arg(QString::fromStdString(record.text)));
  });
  for (int level : {base::log::kLevelFailure, base::log::kLevelWarning, base::log::kLevelQtCritical,
                    base::log::kLevelInfo})
    QTU_LOG(level) << "a record at level " << level;
  const char* missing = nullptr;
  QTU_LOG(base::log::kLevelInfo) << "a null C string streams as " << missing;
  QTU_LOG(base::log::kLevelInfo) << "a 2000-character text is cut at 1024: "
                                 << std::string(2000, '.');
  base::log::SetLogSink(std::move(previous));
  base::log::SetLogLevel(base::log::kLevelWarning);
  return seen == 6 ? 0 : 1;
}

}  // namespace

GALLERY_SECTION("logging", RunLogging);
