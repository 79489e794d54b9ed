// The HTML converter's block primitives against their one-character-at-a-time meaning, on texts
// made of the characters the converter looks for, their neighbours, and characters that share a
// byte with them. Built with the library's QT_UTIL_HTML_PORTABLE setting, so that the portable
// lane checks the loops and the other lanes the SSE2 code; the Debug lanes check the assertions
// on the block arithmetic on the way.
#include <QRandomGenerator>
#include <QtTest>
#include <algorithm>

#include "qt_util/html_blocks_p.h"

using qt_util::internal::html::AsciiLower;
using qt_util::internal::html::BlockMask;
using qt_util::internal::html::Chars8;
using qt_util::internal::html::FindAny;
using qt_util::internal::html::Scan;

namespace {

QString RandomText(QRandomGenerator& random, int size) {
  // 0x013c and 0x3c00 share a byte with "<", 0x2200 and 0x0122 with a double quote.
  static const char16_t kAlphabet[] = {
      u'<',  u'>',      u'"',      u'\'',     u' ',      u'!',      u'-',     u'&',
      u'\r', u'\n',     u'a',      u'Z',      u'@',      u'[',      u'`',     u'{',
      u'\0', u'\u00c4', u'\u0130', u'\u013c', u'\u3c00', u'\u2200', u'\u0122'};
  QString text;
  for (int i = 0; i < size; ++i)
    text += QChar(kAlphabet[random.bounded(int(sizeof kAlphabet / sizeof *kAlphabet))]);
  return text;
}

// The indexes a mask picks, in order.
QList<int> Indexes(BlockMask mask) {
  QList<int> indexes;
  for (int i = 0; i < Chars8::kCount; ++i) {
    if (mask.Has(i)) indexes << i;
  }
  return indexes;
}

QList<int> IndexesWhere(const QChar* chars, bool (*test)(QChar)) {
  QList<int> indexes;
  for (int i = 0; i < Chars8::kCount; ++i) {
    if (test(chars[i])) indexes << i;
  }
  return indexes;
}

bool IsLessThan(QChar c) {
  return c == QLatin1Char('<');
}

bool IsTagSpecial(QChar c) {
  return c == QLatin1Char('"') || c == QLatin1Char('\'') || c == QLatin1Char('>');
}

}  // namespace

class tst_HtmlBlocks : public QObject {
  Q_OBJECT

 private slots:
  void match_picksExactlyTheEqualCharacters();
  void mask_operationsKeepTheirMeaning();
  void findAny_findsTheFirstAtEveryOffsetAndEnd();
  void scan_readsSinglesOnlyBehindTheLastWholeBlock();
  void packLower_data();
  void packLower();
};

void tst_HtmlBlocks::match_picksExactlyTheEqualCharacters() {
  QRandomGenerator random(7);
  for (int round = 0; round < 3000; ++round) {
    const QString text = RandomText(random, Chars8::kCount);
    const Chars8 block(text.constData());
    QCOMPARE(Indexes(block.Match('<')), IndexesWhere(text.constData(), IsLessThan));
    QCOMPARE(Indexes(block.Match('"', '\'', '>')), IndexesWhere(text.constData(), IsTagSpecial));
  }
}

void tst_HtmlBlocks::mask_operationsKeepTheirMeaning() {
  QRandomGenerator random(11);
  for (int round = 0; round < 3000; ++round) {
    const QString text = RandomText(random, Chars8::kCount);
    const Chars8 block(text.constData());
    const BlockMask a = block.Match('<', '>', '"');
    const BlockMask b = block.Match('"', '\'', ' ');
    const QList<int> picked = Indexes(a);
    QCOMPARE(bool(a), !picked.isEmpty());
    QCOMPARE(a.Count(), picked.size());
    QList<int> before;
    QList<int> parity;
    QList<int> complement;
    QList<int> both;
    QList<int> either;
    QList<int> one;
    for (int i = 0; i < Chars8::kCount; ++i) {
      if (picked.isEmpty() || i < picked.first()) before << i;
      if (std::count_if(picked.begin(), picked.end(), [i](int p) { return p <= i; }) % 2) {
        parity << i;
      }
      if (!a.Has(i)) complement << i;
      if (a.Has(i) && b.Has(i)) both << i;
      if (a.Has(i) || b.Has(i)) either << i;
      if (a.Has(i) != b.Has(i)) one << i;
    }
    QCOMPARE(Indexes(a.Before()), before);
    QCOMPARE(Indexes(a.PrefixParity()), parity);
    QCOMPARE(Indexes(~a), complement);
    QCOMPARE(Indexes(a & b), both);
    QCOMPARE(Indexes(a | b), either);
    QCOMPARE(Indexes(a ^ b), one);
    if (picked.isEmpty()) continue;
    QCOMPARE(a.First(), picked.first());
    QCOMPARE(Indexes(a.Lowest()), QList<int>{picked.first()});
    QCOMPARE(Indexes(a.WithoutFirst()), picked.mid(1));
  }
}

void tst_HtmlBlocks::findAny_findsTheFirstAtEveryOffsetAndEnd() {
  QRandomGenerator random(13);
  for (int round = 0; round < 20; ++round) {
    const QString text = RandomText(random, 40);
    const QChar* data = text.constData();
    for (int from = 0; from <= text.size(); ++from) {
      for (int end = from; end <= text.size(); ++end) {
        const QChar* expected = std::find(data + from, data + end, QLatin1Char('<'));
        QCOMPARE(FindAny<u'<'>(data + from, data + end), expected);
        expected = std::find_if(data + from, data + end, [](QChar c) {
          return c == QLatin1Char('!') || c == QLatin1Char('-');
        });
        QCOMPARE((FindAny<u'!', u'-'>(data + from, data + end)), expected);
      }
    }
  }
}

// A block is read only where eight characters are left; the rest goes one character at a time.
void tst_HtmlBlocks::scan_readsSinglesOnlyBehindTheLastWholeBlock() {
  const QString text(29, QLatin1Char('a'));
  const QChar* data = text.constData();
  for (int from = 0; from <= text.size(); ++from) {
    QList<int> blocks;
    QList<int> singles;
    const QChar* stop = Scan(
        data + from, data + text.size(),
        [&](const Chars8& chars, const QChar* at) {
          blocks << int(at - data);
          return chars.Match('<');
        },
        [&](const QChar* at) {
          singles << int(at - data);
          return false;
        });
    QCOMPARE(stop, data + text.size());
    QList<int> expectedBlocks;
    int at = from;
    for (; text.size() - at >= Chars8::kCount; at += Chars8::kCount) expectedBlocks << at;
    QList<int> expectedSingles;
    for (; at < text.size(); ++at) expectedSingles << at;
    QCOMPARE(blocks, expectedBlocks);
    QCOMPARE(singles, expectedSingles);
  }
}

void tst_HtmlBlocks::packLower_data() {
  QTest::addColumn<QString>("name");
  QTest::newRow("empty") << QString();
  QTest::newRow("one letter") << "B";
  QTest::newRow("mixed case") << "FoNt";
  QTest::newRow("with a space") << "TR COLS";
  QTest::newRow("a whole block") << "V:IMAGED";
  QTest::newRow("neighbours of the letters") << "@[`{AZaz";
  QTest::newRow("not ASCII") << QString::fromUtf8("\xc3\x84Rger");
  QTest::newRow("not ASCII last") << QString::fromUtf8("imag\xc4\xb0");
}

// Every prefix, from the block's start and from its second and third character on.
void tst_HtmlBlocks::packLower() {
  QFETCH(QString, name);
  const QString text = name + QString(2 * Chars8::kCount, QLatin1Char('X'));
  for (int skip = 0; skip <= 2; ++skip) {
    const Chars8 block = skip == 0 ? Chars8(text.constData()) : Chars8(text.constData()).From(skip);
    for (int length = 0; length <= Chars8::kCount - skip; ++length) {
      uint64_t expected = 0;
      bool ascii = true;
      for (int i = 0; i < length; ++i) {
        const ushort c = text.at(skip + i).unicode();
        ascii = ascii && c < 0x80;
        expected |= uint64_t(AsciiLower(c) & 0xff) << (8 * i);
      }
      uint64_t packed = 0;
      QCOMPARE(block.PackLower(length, packed), ascii);
      if (ascii) QCOMPARE(packed, expected);
    }
  }
  QCOMPARE(QString(QChar(AsciiLower('Q'))) + QChar(AsciiLower('@')) + QChar(AsciiLower(0xc4)),
           QString::fromUtf8("q@\xc3\x84"));
}

QTEST_MAIN(tst_HtmlBlocks)
#include "tst_html_blocks.moc"
