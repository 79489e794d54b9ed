#pragma once

// Paths that no user can open for reading, for the readers' "cannot be opened" rows:
//
//   void myTest_data() { test_support::AddUnopenablePathRows(); }
//   void myTest() {
//     QTemporaryDir dir;
//     const QString path = test_support::UnopenablePath(dir);
//     ...
//   }
//
// A file without read permission is not among them: the suite may run as root, which reads it.

#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <QtTest>

namespace test_support {

/// One row per kind of path, in the column "unopenable".
inline void AddUnopenablePathRows() {
  QTest::addColumn<QString>("unopenable");
  QTest::newRow("missing") << "missing";
  QTest::newRow("directory") << "directory";
  QTest::newRow("under a regular file") << "under a regular file";
  QTest::newRow("dangling link") << "dangling link";
}

/// Makes what the current row's kind needs in `dir` and returns the path; empty when the setting
/// could not be made (fail the test then).
inline QString UnopenablePath(const QTemporaryDir& dir) {
  QFETCH(QString, unopenable);
  if (unopenable == "missing") return dir.filePath("absent");
  if (unopenable == "directory") return dir.path();
  if (unopenable == "under a regular file") {
    QFile plain(dir.filePath("plain"));
    if (!plain.open(QIODevice::WriteOnly) || plain.write("text") != 4) return QString();
    return dir.filePath("plain/inner");
  }
  if (unopenable == "dangling link") {
    if (!QFile::link(dir.filePath("absent"), dir.filePath("link"))) return QString();
    return dir.filePath("link");
  }
  return QString();
}

}  // namespace test_support
