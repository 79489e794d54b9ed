// What the library's text functions make of malformed UTF-8 and of unpaired UTF-16 surrogates.
// Qt 5 and Qt 6 decode and encode through different code; both builds must give the same text
// and bytes, which the generated sequences and the reference decoder pin.
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <string>

#include "qt_util/string_utils.h"
#include "qt_util/ui_util_style.h"
#include "support/utf8_reference.h"

using test_support::GeneratedUtf8Sequences;
using test_support::ReferenceUtf8Decode;

namespace {

bool WriteBytes(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

QByteArray ReadBytes(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

// Every generated sequence between ASCII neighbours, one after another: each ends where the
// next '|' starts, so every sequence is decoded on its own terms.
QByteArray AllSequences() {
  QByteArray bytes("a");
  for (const QByteArray& sequence : GeneratedUtf8Sequences()) bytes += sequence + '|';
  return bytes;
}

QString Hex(const QString& text) {
  QStringList units;
  for (const QChar unit : text) units << QString::number(unit.unicode(), 16);
  return units.join(' ');
}

// Where a long decoded text first parts from the reference's, with its neighbourhood.
QString Difference(const QString& text, const QByteArray& bytes) {
  const QString expected = ReferenceUtf8Decode(bytes);
  int at = 0;
  while (at < text.size() && at < expected.size() && text[at] == expected[at]) ++at;
  const int from = qMax(0, at - 8);
  return QStringLiteral("unit %1 differs: %2, expected %3")
      .arg(at)
      .arg(Hex(text.mid(from, 20)), Hex(expected.mid(from, 20)));
}

}  // namespace

class tst_Utf8InvalidInput : public QObject {
  Q_OBJECT

 private slots:
  void referenceDecoder_knownAnswers_data();
  void referenceDecoder_knownAnswers();
  void stdStr2QStr_eachGeneratedSequence_asTheReference();
  void getFileStream_allGeneratedSequences_asTheReference();
  void getQss_allGeneratedSequences_asTheReference();
  void getFileStream_unfinishedSequenceAtTheEnd_isDropped_data();
  void getFileStream_unfinishedSequenceAtTheEnd_isDropped();
  void getQss_unfinishedSequenceAtTheEnd_isReplacedByteByByte();
  void leadingByteOrderMark_isSkippedByAll();
  void encode_loneSurrogates_becomeQuestionMarks_data();
  void encode_loneSurrogates_becomeQuestionMarks();
};

// The reference itself, on answers worked out by hand from the rule in its header.
void tst_Utf8InvalidInput::referenceDecoder_knownAnswers_data() {
  QTest::addColumn<QByteArray>("bytes");
  QTest::addColumn<QString>("text");
  const QString r(QChar(0xFFFD));
  QTest::newRow("overlong two bytes") << QByteArray("\xC0\x80") << r + r;
  QTest::newRow("surrogate") << QByteArray("\xED\xA0\x80") << r + r + r;
  QTest::newRow("above U+10FFFF") << QByteArray("\xF4\x90\x80\x80") << r + r + r + r;
  QTest::newRow("three-byte lead cut short") << QByteArray("\xE2\x82\x41") << r + r + "A";
  QTest::newRow("four-byte lead cut short") << QByteArray("\xF0\x9F\x98\x41") << r + r + r + "A";
  QTest::newRow("stray continuation") << QByteArray(
                                             "\x80"
                                             "A")
                                      << r + "A";
  QTest::newRow("euro sign") << QByteArray("\xE2\x82\xAC") << QStringLiteral("\u20AC");
  QTest::newRow("grinning face") << QByteArray("\xF0\x9F\x98\x80")
                                 << QString::fromUcs4(U"\U0001F600");
}

void tst_Utf8InvalidInput::referenceDecoder_knownAnswers() {
  QFETCH(QByteArray, bytes);
  QFETCH(QString, text);
  QCOMPARE(ReferenceUtf8Decode(bytes), text);
}

void tst_Utf8InvalidInput::stdStr2QStr_eachGeneratedSequence_asTheReference() {
  const QList<QByteArray> sequences = GeneratedUtf8Sequences();
  QVERIFY(sequences.size() > 16000);
  for (const QByteArray& sequence : sequences) {
    // Between neighbours, and at the very end of the input.
    for (const QByteArray& bytes : {"a" + sequence + "z", "a" + sequence}) {
      const QString text = QTStringUtils::StdStr2QStr(bytes.toStdString());
      const QString expected = ReferenceUtf8Decode(bytes);
      QVERIFY2(text == expected, qPrintable(QStringLiteral("%1: %2, expected %3")
                                                .arg(QString::fromLatin1(bytes.toHex(' ')),
                                                     Hex(text), Hex(expected))));
    }
  }
}

void tst_Utf8InvalidInput::getFileStream_allGeneratedSequences_asTheReference() {
  QTemporaryDir dir;
  QVERIFY(dir.isValid());
  const QString path = dir.filePath("all.txt");
  const QByteArray bytes = AllSequences();
  QVERIFY(WriteBytes(path, bytes));
  const QString text = QFTextStreamLoader::GetFileStream(path);
  QVERIFY2(text == ReferenceUtf8Decode(bytes), qPrintable(Difference(text, bytes)));
}

void tst_Utf8InvalidInput::getQss_allGeneratedSequences_asTheReference() {
  QTemporaryDir dir;
  QVERIFY(dir.isValid());
  const QString path = dir.filePath("all.qss");
  const QByteArray bytes = AllSequences();
  QVERIFY(WriteBytes(path, bytes));
  const QString text = VxQtUiUtil::GetQss(path);
  QVERIFY2(text == ReferenceUtf8Decode(bytes), qPrintable(Difference(text, bytes)));
}

void tst_Utf8InvalidInput::getFileStream_unfinishedSequenceAtTheEnd_isDropped_data() {
  QTest::addColumn<QByteArray>("bytes");
  QTest::addColumn<QString>("text");
  const QString r(QChar(0xFFFD));
  QTest::newRow("two of three bytes") << QByteArray("a\xE2\x82") << QStringLiteral("a");
  QTest::newRow("three of four bytes") << QByteArray("a\xF0\x9F\x98") << QStringLiteral("a");
  QTest::newRow("a lead byte alone") << QByteArray("a\xF0") << QStringLiteral("a");
  // Only a start that could still become a character waits; a byte that cannot is replaced.
  QTest::newRow("a stray continuation") << QByteArray("a\x80") << "a" + r;
  QTest::newRow("a lead byte that never starts a sequence") << QByteArray("a\xFF") << "a" + r;
}

void tst_Utf8InvalidInput::getFileStream_unfinishedSequenceAtTheEnd_isDropped() {
  QFETCH(QByteArray, bytes);
  QFETCH(QString, text);
  QTemporaryDir dir;
  QVERIFY(dir.isValid());
  const QString path = dir.filePath("end.txt");
  QVERIFY(WriteBytes(path, bytes));
  QCOMPARE(QFTextStreamLoader::GetFileStream(path), text);
}

void tst_Utf8InvalidInput::getQss_unfinishedSequenceAtTheEnd_isReplacedByteByByte() {
  QTemporaryDir dir;
  QVERIFY(dir.isValid());
  const QString path = dir.filePath("end.qss");
  QVERIFY(WriteBytes(path, QByteArray("a\xF0\x9F\x98")));
  QCOMPARE(VxQtUiUtil::GetQss(path), QStringLiteral("a\uFFFD\uFFFD\uFFFD"));
}

void tst_Utf8InvalidInput::leadingByteOrderMark_isSkippedByAll() {
  const QByteArray bytes("\xEF\xBB\xBF\xEF\xBB\xBFx");  // the second mark is text
  const QString text = QStringLiteral("\uFEFFx");
  QCOMPARE(QTStringUtils::StdStr2QStr(bytes.toStdString()), text);
  QTemporaryDir dir;
  QVERIFY(dir.isValid());
  const QString path = dir.filePath("bom.txt");
  QVERIFY(WriteBytes(path, bytes));
  QCOMPARE(QFTextStreamLoader::GetFileStream(path), text);
  QCOMPARE(VxQtUiUtil::GetQss(path), text);
}

void tst_Utf8InvalidInput::encode_loneSurrogates_becomeQuestionMarks_data() {
  QTest::addColumn<QString>("text");
  QTest::addColumn<QByteArray>("bytes");
  QTest::addColumn<QByteArray>("file");
  const QChar high(0xD83D);
  const QChar low(0xDE00);
  const QByteArray grin("\xF0\x9F\x98\x80");
  QTest::newRow("high alone inside")
      << QString("a") + high + "b" << QByteArray("a?b") << QByteArray("a?b");
  QTest::newRow("low alone inside")
      << QString("a") + low + "b" << QByteArray("a?b") << QByteArray("a?b");
  QTest::newRow("low before high")
      << QString("a") + low + high + "b" << QByteArray("a??b") << QByteArray("a??b");
  QTest::newRow("two highs, then a low") << QString(high) + high + low << "?" + grin << "?" + grin;
  // The file writer leaves out a high surrogate at the very end (its stream waited for the
  // pair); the string conversions write '?'.
  QTest::newRow("high at the end") << QString("a") + high << QByteArray("a?") << QByteArray("a");
  QTest::newRow("low at the start") << QString(low) + "a" << QByteArray("?a") << QByteArray("?a");
  QTest::newRow("a pair") << QString(high) + low << grin << grin;
}

void tst_Utf8InvalidInput::encode_loneSurrogates_becomeQuestionMarks() {
  QFETCH(QString, text);
  QFETCH(QByteArray, bytes);
  QFETCH(QByteArray, file);
  QCOMPARE(QByteArray::fromStdString(QTStringUtils::QStr2StdStr(text)), bytes);
  QCOMPARE(QByteArray(QTStringUtils::QStr2CharArray(text)), bytes);
  QTemporaryDir dir;
  QVERIFY(dir.isValid());
  const QString path = dir.filePath("out.txt");
  QVERIFY(QFTextStreamLoader::SaveFileStream(path, text, false));
  QCOMPARE(ReadBytes(path), file);
}

QTEST_MAIN(tst_Utf8InvalidInput)
#include "tst_utf8_invalid_input.moc"
