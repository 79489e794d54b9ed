#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "util/file/file_util.h"

using util::file::IsFileExist;
using util::file::MakeFilePath;

class tst_FileUtil : public QObject {
  Q_OBJECT

 private slots:
  void makeFilePath_data() {
    QTest::addColumn<QString>("dir");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << "a"
                           << "b"
                           << "a/b";
    QTest::newRow("dir ends in separator") << "a/"
                                           << "b"
                                           << "a/b";
    QTest::newRow("dir ends in two separators") << "a//"
                                                << "b"
                                                << "a/b";
    QTest::newRow("name starts with separator") << "a"
                                                << "/b"
                                                << "a/b";
    QTest::newRow("both") << "a/"
                          << "/b"
                          << "a/b";
    QTest::newRow("absolute nested") << "/x/y/"
                                     << "Asset/m.rcc"
                                     << "/x/y/Asset/m.rcc";
    QTest::newRow("root dir") << "/"
                              << "b"
                              << "/b";
    QTest::newRow("empty dir") << ""
                               << "b"
                               << "b";
    QTest::newRow("empty name") << "a"
                                << ""
                                << "a/";
    QTest::newRow("both empty") << ""
                                << ""
                                << "";
  }
  void makeFilePath() {
    QFETCH(QString, dir);
    QFETCH(QString, name);
    QFETCH(QString, expected);
    QCOMPARE(QString::fromStdString(MakeFilePath(dir.toStdString(), name.toStdString())), expected);
  }

  void isFileExist() {
    QTemporaryDir root;
    QVERIFY(root.isValid());
    const QString file = root.filePath("image.png");
    {
      QFile out(file);
      QVERIFY(out.open(QIODevice::WriteOnly));
      out.write("x");
    }
    const QString dir = root.filePath("Asset");
    QVERIFY(QDir(root.path()).mkdir("Asset"));
    QVERIFY(IsFileExist(file.toStdString()));
    QVERIFY(!IsFileExist(dir.toStdString()));
    QVERIFY(!IsFileExist(root.filePath("missing.png").toStdString()));
    QVERIFY(!IsFileExist(""));
    // Links count for what they point at.
    QVERIFY(QFile::link(file, root.filePath("to_file")));
    QVERIFY(QFile::link(dir, root.filePath("to_dir")));
    QVERIFY(QFile::link(root.filePath("missing.png"), root.filePath("dangling")));
    QVERIFY(IsFileExist(root.filePath("to_file").toStdString()));
    QVERIFY(!IsFileExist(root.filePath("to_dir").toStdString()));
    QVERIFY(!IsFileExist(root.filePath("dangling").toStdString()));
    // Joined paths are usable as they come.
    QVERIFY(IsFileExist(MakeFilePath(root.path().toStdString() + "/", "image.png")));
  }
};

QTEST_GUILESS_MAIN(tst_FileUtil)
#include "tst_file_util.moc"
