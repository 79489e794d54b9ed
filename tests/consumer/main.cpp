// Links the installed library, writes one record through the installed logger header and
// checks that the library it loaded is the one its headers describe.
#include <QApplication>
#include <cstdio>
#include <cstring>

#include "base/common/include/logger.h"
#include "qt_util/version.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  int records = 0;
  std::string text;
  base::log::SetLogSink([&](const base::log::LogRecord& record) {
    ++records;
    text = record.text;
  });
  base::log::SetLogLevel(base::log::kLevelInfo);
  QTU_LOG(base::log::kLevelWarning) << "consumer linked qt_util " << qt_util::Version();
  base::log::SetLogSink({});

  if (std::strcmp(qt_util::Version(), QT_UTIL_VERSION_STRING) != 0) {
    std::fprintf(stderr, "version mismatch: %s vs %s\n", qt_util::Version(),
                 QT_UTIL_VERSION_STRING);
    return 1;
  }
  if (records != 1 || text != std::string("consumer linked qt_util ") + QT_UTIL_VERSION_STRING) {
    std::fprintf(stderr, "unexpected log output (%d records): %s\n", records, text.c_str());
    return 1;
  }
  std::printf("consumer OK: %s\n", text.c_str());
  return 0;
}
