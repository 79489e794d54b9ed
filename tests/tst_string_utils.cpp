#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <thread>

#include "qt_util/string_utils.h"
#include "support/stepwise_html_encode.h"
#include "support/unopenable_path.h"

namespace {

// U+1F600, outside the Basic Multilingual Plane: two UTF-16 units, four UTF-8 bytes.
const QString kGrin = QString::fromUcs4(U"\U0001F600");

QByteArray ReadBytes(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return QByteArray("<unreadable>");
  return file.readAll();
}

bool WriteBytes(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

// Text drawn from the characters HtmlEncode treats specially, plain letters, a non-Latin letter
// and a surrogate pair, so that every pair of neighbours (a "\r" before "\r\n" too) turns up.
QString GeneratedText(std::mt19937& random, int length) {
  static const QString pieces[] = {"&",
                                   " ",
                                   "<",
                                   ">",
                                   "\"",
                                   "'",
                                   "\r",
                                   "\n",
                                   "\v",
                                   "\r\n",
                                   "a",
                                   "Z",
                                   ";",
                                   "#",
                                   QStringLiteral("\u00e9"),
                                   kGrin,
                                   QStringLiteral("&amp;"),
                                   QStringLiteral("\t")};
  std::uniform_int_distribution<int> pick(0, int(std::size(pieces)) - 1);
  QString text;
  while (text.size() < length) text += pieces[pick(random)];
  return text;
}

}  // namespace

class tst_StringUtils : public QObject {
  Q_OBJECT

 private slots:
  void htmlEncode_data() {
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("expected");
    QTest::newRow("space") << "a b"
                           << "a&nbsp;b";
    QTest::newRow("markup and quotes") << "x<y & \"z\""
                                       << "x&lt;y&nbsp;&amp;&nbsp;&quot;z&quot;";
    QTest::newRow("every line break") << "l1\r\nl2\nl3\rl4"
                                      << "l1<br>l2<br>l3<br>l4";
    QTest::newRow("vertical tab") << QStringLiteral("a\vb") << "a<br>b";
    QTest::newRow("apostrophe and greater") << "it's > 1"
                                            << "it&#39;s&nbsp;&gt;&nbsp;1";
    QTest::newRow("entity escaped once") << "&lt;"
                                         << "&amp;lt;";
    QTest::newRow("run of spaces") << "a   b"
                                   << "a&nbsp;&nbsp;&nbsp;b";
    QTest::newRow("cr before crlf") << "a\r\r\nb"
                                    << "a<br><br>b";
    QTest::newRow("lf before cr is two breaks") << "a\n\rb"
                                                << "a<br><br>b";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("non-BMP untouched") << kGrin << kGrin;
  }
  void htmlEncode() {
    QFETCH(QString, input);
    QFETCH(QString, expected);
    QString text = input;
    QTStringUtils::HtmlEncode(text);
    QCOMPARE(text, expected);
  }

  void htmlEncode_generatedText_matchesStepwiseReplacement() {
    std::mt19937 random(20261123);
    for (int length : {1, 2, 3, 5, 8, 13, 64, 500, 4096, 1 << 20}) {
      const int rounds = length > 4096 ? 1 : 200;
      for (int round = 0; round < rounds; ++round) {
        const QString input = GeneratedText(random, length);
        QString expected = input;
        test_support::StepwiseHtmlEncode(expected);
        QString text = input;
        QTStringUtils::HtmlEncode(text);
        if (text != expected) {
          int at = 0;
          while (at < text.size() && at < expected.size() && text[at] == expected[at]) ++at;
          // Shows where they part.
          QCOMPARE(text.mid(std::max(0, at - 20), 60), expected.mid(std::max(0, at - 20), 60));
          QCOMPARE(text.size(), expected.size());
        }
      }
    }
  }

  void qStr2StdStr_isUtf8() {
    const QString text = QStringLiteral("caf\u00e9 ") + kGrin;
    QCOMPARE(QTStringUtils::QStr2StdStr(text), std::string("caf\xc3\xa9 \xf0\x9f\x98\x80"));
    QCOMPARE(QTStringUtils::QStr2StdStr(QString()), std::string());
  }

  void qStr2StdStr_stopsAtEmbeddedNul() {
    const QString text = QStringLiteral("ab") + QChar(0) + QStringLiteral("cd");
    QCOMPARE(QTStringUtils::QStr2StdStr(text), std::string("ab"));
  }

  void stdStr2QStr_stopsAtEmbeddedNul() {
    const std::string text("ab\0cd", 5);
    QCOMPARE(QTStringUtils::StdStr2QStr(text), QStringLiteral("ab"));
  }

  void stdStr2QStr_invalidUtf8_givesReplacementCharacter() {
    const QString text =
        QTStringUtils::StdStr2QStr(std::string("a\xff"
                                               "b"));
    QCOMPARE(text, QStringLiteral("a\ufffdb"));
  }

  void utf8RoundTrip_nonBmp() {
    const QString text = QStringLiteral("x ") + kGrin + QStringLiteral(" \u4e2d");
    const std::string utf8 = QTStringUtils::QStr2StdStr(text);
    QCOMPARE(utf8.size(), size_t(2 + 4 + 1 + 3));
    QCOMPARE(QTStringUtils::StdStr2QStr(utf8), text);
    QCOMPARE(QString::fromUtf8(QTStringUtils::QStr2CharArray(text)), text);
  }

  void qStr2StdWStr_nonBmpGivesSurrogatePair() {
    const std::wstring wide = QTStringUtils::QStr2StdWStr(kGrin);
    QCOMPARE(wide.size(), size_t(2));
    QCOMPARE(static_cast<unsigned>(wide[0]), 0xD83Du);
    QCOMPARE(static_cast<unsigned>(wide[1]), 0xDE00u);
  }

  void qStr2StdWStr_bmpOneUnitPerCharacter() {
    const std::wstring wide = QTStringUtils::QStr2StdWStr(QStringLiteral("a\u00e9\u4e2d"));
    QCOMPARE(wide, std::wstring(L"a\u00e9\u4e2d"));
    QVERIFY(QTStringUtils::QStr2StdWStr(QString()).empty());
  }

  void qStr2StdWStr_loneSurrogateDoesNotThrow() {
    // Qt's UTF-8 encoder never emits an unpaired surrogate, so the converter always gets
    // well-formed input; the unpaired unit comes back as a single replacement.
    const QString broken = QStringLiteral("a") + QChar(0xD800) + QStringLiteral("b");
    std::wstring wide;
    try {
      wide = QTStringUtils::QStr2StdWStr(broken);
    } catch (...) {
      QFAIL("QStr2StdWStr threw on an unpaired surrogate");
    }
    QCOMPARE(wide.size(), size_t(3));
    QCOMPARE(wide[0], L'a');
    QVERIFY(static_cast<unsigned>(wide[1]) < 0xD800u || static_cast<unsigned>(wide[1]) > 0xDFFFu);
    QCOMPARE(wide[2], L'b');
  }

  void qStr2CharArray_bytesAndNeverNull() {
    const char* empty = QTStringUtils::QStr2CharArray(QString());
    QVERIFY(empty != nullptr);
    QCOMPARE(empty[0], '\0');
    const QString text = QStringLiteral("\u00e9t\u00e9");
    QCOMPARE(QByteArray(QTStringUtils::QStr2CharArray(text)), text.toUtf8());
    QCOMPARE(QByteArray(QTStringUtils::QStr2LocalCharArray(QStringLiteral("plain ascii"))),
             QByteArray("plain ascii"));
    QCOMPARE(QByteArray(QTStringUtils::QStr2LocalCharArray(text)), text.toLocal8Bit());
    const char* local_empty = QTStringUtils::QStr2LocalCharArray(QString());
    QVERIFY(local_empty != nullptr);
    QCOMPARE(local_empty[0], '\0');
  }

  void qStr2CharArray_resultOutlivesCallsOfTheOtherFunction() {
    const char* utf8 = QTStringUtils::QStr2CharArray(QStringLiteral("first"));
    const char* local = QTStringUtils::QStr2LocalCharArray(QStringLiteral("second"));
    QCOMPARE(QByteArray(utf8), QByteArray("first"));
    QCOMPARE(QByteArray(local), QByteArray("second"));
    // A temporary QString argument is gone by now; the bytes are not.
    const char* from_temporary = QTStringUtils::QStr2CharArray(QString::number(12345));
    QCOMPARE(QByteArray(from_temporary), QByteArray("12345"));
  }

  void qStr2CharArray_resultOutlivesCallsOnOtherThreads() {
    const char* mine = QTStringUtils::QStr2CharArray(QStringLiteral("main thread"));
    std::string theirs;
    std::thread other([&theirs] {
      theirs = QTStringUtils::QStr2CharArray(QStringLiteral("other thread, longer text"));
    });
    other.join();
    QCOMPARE(QByteArray(mine), QByteArray("main thread"));
    QCOMPARE(theirs, std::string("other thread, longer text"));
  }

  void getFileStream_readsUtf8() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath("utf8.txt");
    const QString text = QStringLiteral("line \u00e9\n") + kGrin + QStringLiteral("\nend");
    QVERIFY(WriteBytes(path, text.toUtf8()));
    QCOMPARE(QFTextStreamLoader::GetFileStream(path), text);
  }

  void getFileStream_invalidUtf8LoadsWithReplacement() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath("broken.txt");
    // A stray continuation byte, a truncated sequence at the end, an overlong encoding.
    QVERIFY(WriteBytes(path, QByteArray("ok \x80 mid \xc0\xaf end \xe2\x82")));
    const QString text = QFTextStreamLoader::GetFileStream(path);
    QVERIFY(text.startsWith(QStringLiteral("ok ")));
    QVERIFY(text.contains(QStringLiteral(" mid ")));
    QVERIFY(text.contains(QStringLiteral(" end ")));
    QVERIFY(text.contains(QChar(0xFFFD)));
  }

  // What the file's bytes read as, BOMs and malformed input included. The style sheets read the
  // same files differently (tst_ui_util_style): these results are QFTextStreamLoader's own.
  void getFileStream_decoding_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("UTF-8 BOM skipped") << QByteArray("\xEF\xBB\xBFhi") << QStringLiteral("hi");
    QTest::newRow("only the first BOM skipped")
        << QByteArray("\xEF\xBB\xBF\xEF\xBB\xBFhi") << QStringLiteral("\uFEFFhi");
    QTest::newRow("UTF-16 LE BOM switches to UTF-16")
        << QByteArray("\xFF\xFEh\0i\0", 6) << QStringLiteral("hi");
    QTest::newRow("UTF-16 BE BOM switches to UTF-16")
        << QByteArray("\xFE\xFF\0h\0i", 6) << QStringLiteral("hi");
    QTest::newRow("UTF-32 LE BOM switches to UTF-32")
        << QByteArray("\xFF\xFE\0\0h\0\0\0", 8) << QStringLiteral("h");
    QTest::newRow("stray byte is U+FFFD") << QByteArray(
                                                 "a\xFF"
                                                 "b")
                                          << QStringLiteral("a\uFFFDb");
    QTest::newRow("incomplete sequence at the end is dropped")
        << QByteArray("ab\xE2\x82") << QStringLiteral("ab");
    QTest::newRow("NUL kept") << QByteArray("a\0b", 3) << QString::fromUtf16(u"a\0b", 3);
    // The stream reads in blocks of 16 KiB: a sequence across the border stays whole.
    QTest::newRow("sequence across a block border")
        << QByteArray(16383, 'a') + "\xC3\xBC" << QString(16383, 'a') + QStringLiteral("\u00FC");
  }

  void getFileStream_decoding() {
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath("in.txt");
    QVERIFY(WriteBytes(path, bytes));
    QCOMPARE(QFTextStreamLoader::GetFileStream(path), text);
  }

  void getFileStream_cannotBeOpened_isEmpty_data() { test_support::AddUnopenablePathRows(); }

  void getFileStream_cannotBeOpened_isEmpty() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = test_support::UnopenablePath(dir);
    QVERIFY(!path.isEmpty());
    const QString text = QFTextStreamLoader::GetFileStream(path);
    QVERIFY(text.isEmpty());
    QVERIFY(text.isNull());
  }

  void saveFileStream_missingDirectoryFailsAndCreatesNothing() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString missing_dir = dir.filePath("no_such_dir");
    QVERIFY(!QFTextStreamLoader::SaveFileStream(missing_dir + "/out.txt", "x", false));
    QVERIFY(!QFTextStreamLoader::SaveFileStream(missing_dir + "/out.txt", "x", true));
    QVERIFY(!QDir(missing_dir).exists());
  }

  void saveFileStream_truncateReplacesContent() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath("out.txt");
    QVERIFY(WriteBytes(path, "a much longer previous content"));
    QVERIFY(QFTextStreamLoader::SaveFileStream(path, QStringLiteral("new"), false));
    QCOMPARE(ReadBytes(path), QByteArray("new"));
  }

  void saveFileStream_appendAddsToEnd() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath("out.txt");
    QVERIFY(QFTextStreamLoader::SaveFileStream(path, QStringLiteral("one\n"), true));
    QVERIFY(QFTextStreamLoader::SaveFileStream(path, QStringLiteral("two\n"), true));
    QCOMPARE(ReadBytes(path), QByteArray("one\ntwo\n"));
    QCOMPARE(QFTextStreamLoader::GetFileStream(path), QStringLiteral("one\ntwo\n"));
  }

  void saveFileStream_writesUtf8WithoutByteOrderMark() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath("out.txt");
    const QString text = QStringLiteral("\u00e9 ") + kGrin;
    QVERIFY(QFTextStreamLoader::SaveFileStream(path, text, false));
    QCOMPARE(ReadBytes(path), QByteArray("\xc3\xa9 \xf0\x9f\x98\x80"));
    QCOMPARE(QFTextStreamLoader::GetFileStream(path), text);
  }
};

QTEST_MAIN(tst_StringUtils)
#include "tst_string_utils.moc"
