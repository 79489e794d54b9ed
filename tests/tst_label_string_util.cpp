#include <QFontInfo>
#include <QFontMetrics>
#include <QFontMetricsF>
#include <QLabel>
#include <QtTest>
#include <climits>
#include <vector>

#include "qt_util/label_string_util.h"
#include "support/log_capture.h"

Q_DECLARE_METATYPE(Qt::TextElideMode)

namespace {

// Every measurement comes from this font, so results do not depend on the machine's default.
const char kFamily[] = "DejaVu Sans";
constexpr int kPixelSize = 14;

QFont TestFont(int pixel_size = kPixelSize) {
  QFont font(QString::fromLatin1(kFamily));
  font.setPixelSize(pixel_size);
  return font;
}

QString TrimmedRight(QString text) {
  while (!text.isEmpty() && text.back().isSpace()) text.chop(1);
  return text;
}

// Texts for the invariant tables. The CJK glyphs may come from a fallback font or be drawn as
// boxes; the invariants hold either way since they only compare measurements with each other.
struct SampleText {
  const char* name;
  QString text;
};

std::vector<SampleText> SampleTexts() {
  return {
      {"latin", QStringLiteral("The quick brown fox jumps over the lazy dog while the meeting "
                               "starts in five minutes.")},
      {"cjk", QString::fromUtf8("会议将在五分钟后开始，请准备好您的麦克风和摄像头。")},
      {"mixed", QString::fromUtf8("Meeting 会议 starts at 10:00 开始, join now 加入 please")},
      {"tabs", QStringLiteral("Name:\tAlice Room:\t42 Status:\tonline now")},
      {"long words",
       QStringLiteral("Supercalifragilisticexpialidocious antidisestablishmentarianism "
                      "pneumonoultramicroscopic words")},
  };
}

const int kSampleWidths[] = {40, 90, 160, 300};

// One call of CalculateMultiLineStringRects with its outputs.
struct RectsCall {
  QPoint origin{0, 0};
  int x = 0;
  int spacing = 0;
  int max_width = 100;
  int line_height = 17;
  int max_lines = 0;
  QFont font = TestFont();
  QFontMetrics fm{TestFont()};

  QStringList lines;
  std::vector<QRect> rects;
  bool elided = false;

  RectsCall& Run(const QString& text) {
    VxLabelStringUtil::CalculateMultiLineStringRects(origin, x, spacing, max_width, line_height,
                                                     font, fm, text, lines, rects, elided,
                                                     max_lines);
    return *this;
  }
};

QStringList SplitAnywhere(const QString& text, int width, int indent = 0) {
  QStringList lines;
  const QFont font = TestFont();
  VxLabelStringUtil::SplitMultiLineStrings(width, font, QFontMetrics(font), text, lines, indent);
  return lines;
}

// The largest count of leading characters of `text` that `fm` measures within `width`.
int LongestFit(const QFontMetrics& fm, const QString& text, int width) {
  int count = 0;
  while (count < text.size() && fm.horizontalAdvance(text.left(count + 1)) <= width) ++count;
  return count;
}

// The settings of the rectangle tables: an indented first line, later lines at x 2, 3 px apart.
RectsCall TableCall(int width) {
  RectsCall call;
  call.origin = QPoint(10, 5);
  call.x = 2;
  call.spacing = 3;
  call.max_width = width;
  call.line_height = call.fm.height();
  return call;
}

void AddSampleRows() {
  QTest::addColumn<QString>("text");
  QTest::addColumn<int>("width");
  for (const SampleText& sample : SampleTexts()) {
    for (int width : kSampleWidths) {
      QTest::addRow("%s @%d", sample.name, width) << sample.text << width;
    }
  }
}

enum class Operation { kAnywhere, kByWord, kWholeWord, kRects };

// Runs one of the four line-producing operations with the test font, origin (0, 0) and a
// maxLines of 2. Returns what SplitLineByWholeWord returns, true for the others.
bool RunOperation(Operation operation, const QString& text, int width, QStringList& lines,
                  std::vector<QRect>& rects, bool& elided) {
  const QFont font = TestFont();
  const QFontMetrics fm(font);
  switch (operation) {
    case Operation::kAnywhere:
      VxLabelStringUtil::SplitMultiLineStrings(width, font, fm, text, lines, 0);
      break;
    case Operation::kByWord:
      VxLabelStringUtil::SplitMultiLineStringsByWord(font, text, width, lines);
      break;
    case Operation::kWholeWord:
      return VxLabelStringUtil::SplitLineByWholeWord(font, text, width, lines);
    case Operation::kRects:
      VxLabelStringUtil::CalculateMultiLineStringRects(QPoint(0, 0), 0, 0, width, 17, font, fm,
                                                       text, lines, rects, elided, 2);
      break;
  }
  return true;
}

}  // namespace

Q_DECLARE_METATYPE(Operation)

class tst_LabelStringUtil : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase() {
    const QFontInfo info(TestFont());
    QVERIFY2(info.family() == QLatin1String(kFamily),
             qPrintable(QStringLiteral("test font resolved to %1; run scripts/install-deps")
                            .arg(info.family())));
    QCOMPARE(info.pixelSize(), kPixelSize);
  }

  // --- Empty input and widths below one ---------------------------------------------------

  void emptyTextOrWidthBelowOne_leavesOutputsUntouched_data() {
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("width");
    const std::pair<const char*, Operation> operations[] = {{"anywhere", Operation::kAnywhere},
                                                            {"by word", Operation::kByWord},
                                                            {"whole word", Operation::kWholeWord},
                                                            {"rects", Operation::kRects}};
    for (const auto& [name, operation] : operations) {
      QTest::addRow("%s, empty text", name) << operation << QString() << 200;
      QTest::addRow("%s, width 0", name) << operation << QStringLiteral("some text") << 0;
      QTest::addRow("%s, width -7", name) << operation << QStringLiteral("some text") << -7;
    }
  }
  void emptyTextOrWidthBelowOne_leavesOutputsUntouched() {
    QFETCH(Operation, operation);
    QFETCH(QString, text);
    QFETCH(int, width);
    const QStringList before{QStringLiteral("earlier line")};
    const std::vector<QRect> rects_before{QRect(1, 2, 3, 4)};

    for (bool elided_before : {false, true}) {
      QStringList lines = before;
      std::vector<QRect> rects = rects_before;
      bool elided = elided_before;
      const bool result = RunOperation(operation, text, width, lines, rects, elided);
      QCOMPARE(result, operation != Operation::kWholeWord);
      QCOMPARE(lines, before);
      QCOMPARE(rects, rects_before);
      QCOMPARE(elided, elided_before);
    }
  }

  void everyOperation_appendsWithoutClearing_data() {
    QTest::addColumn<Operation>("operation");
    QTest::newRow("anywhere") << Operation::kAnywhere;
    QTest::newRow("by word") << Operation::kByWord;
    QTest::newRow("whole word") << Operation::kWholeWord;
    QTest::newRow("rects") << Operation::kRects;
  }
  void everyOperation_appendsWithoutClearing() {
    QFETCH(Operation, operation);
    const QString text = SampleTexts().front().text;
    const int width = 120;
    // Each run gets its own rectangles, so the line limit counts this text's lines only, and at
    // origin x 0 an earlier line does not change the first line's width either.
    const auto run = [&](QStringList& lines) {
      std::vector<QRect> rects;
      bool elided = false;
      QVERIFY(RunOperation(operation, text, width, lines, rects, elided));
    };
    QStringList fresh;
    run(fresh);
    QVERIFY(fresh.size() > 1);
    QStringList collected{QStringLiteral("earlier line")};
    run(collected);
    QCOMPARE(collected, QStringList{QStringLiteral("earlier line")} + fresh);
  }

  void noOperation_writesLogLines() {
    LogCapture capture(6);
    const QFont font = TestFont();
    const QString text = SampleTexts().front().text;
    QStringList lines;
    VxLabelStringUtil::SplitMultiLineStrings(60, font, QFontMetrics(font), text, lines, 0);
    VxLabelStringUtil::SplitMultiLineStringsByWord(font, text, 60, lines);
    VxLabelStringUtil::SplitLineByWholeWord(font, text, 60, lines);
    VxLabelStringUtil::SplitLineByWholeWord(font, QString(), 60, lines);
    RectsCall call;
    call.max_lines = 2;
    call.Run(text);
    VxLabelStringUtil::UpdateElidedText(nullptr, Qt::ElideRight);
    QVERIFY(!lines.isEmpty());
    QVERIFY(call.elided);
    QCOMPARE(capture.Records().size(), size_t(0));
  }

  // --- SplitMultiLineStrings --------------------------------------------------------------

  void splitMultiLineStrings_firstLineIndentNarrowsOnlyFirstLine() {
    const QFontMetrics fm(TestFont());
    const QString text(80, QLatin1Char('x'));
    const int width = 150;
    const int indent = 20;
    const int first_count = LongestFit(fm, text, width - indent);
    const int full_count = LongestFit(fm, text, width);
    QVERIFY(first_count < full_count);

    const QStringList lines = SplitAnywhere(text, width, indent);
    QVERIFY(lines.size() >= 3);
    QCOMPARE(lines.join(QString()), text);
    QCOMPARE(lines.first().size(), first_count);
    for (int i = 1; i < lines.size() - 1; ++i) QCOMPARE(lines[i].size(), full_count);
    QVERIFY(lines.last().size() <= full_count);

    const QStringList unindented = SplitAnywhere(text, width, 0);
    QCOMPARE(unindented.first().size(), full_count);
  }

  void splitMultiLineStrings_widthBelowOneCharacter_oneCharacterPerLine() {
    QCOMPARE(SplitAnywhere(QStringLiteral("Wide"), 1),
             (QStringList{QStringLiteral("W"), QStringLiteral("i"), QStringLiteral("d"),
                          QStringLiteral("e")}));
  }

  void splitMultiLineStrings_indentWiderThanWidth_stillProgresses() {
    const QString text = QStringLiteral("indented text");
    for (int indent : {500, INT_MAX, INT_MIN}) {
      const QStringList lines = SplitAnywhere(text, 100, indent);
      QVERIFY(!lines.isEmpty());
      QCOMPARE(lines.join(QString()), text);
      if (indent > 0) QCOMPARE(lines.first().size(), 1);
      if (indent < 0) QCOMPARE(lines.size(), 1);
    }
  }

  void splitMultiLineStrings_invariants_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("indent");
    for (const SampleText& sample : SampleTexts()) {
      for (int width : kSampleWidths) {
        for (int indent : {0, 12}) {
          QTest::addRow("%s @%d indent %d", sample.name, width, indent)
              << sample.text << width << indent;
        }
      }
    }
  }
  void splitMultiLineStrings_invariants() {
    QFETCH(QString, text);
    QFETCH(int, width);
    QFETCH(int, indent);
    const QFontMetricsF fm(TestFont());
    const QStringList lines = SplitAnywhere(text, width, indent);
    QVERIFY(!lines.isEmpty());
    QCOMPARE(lines.join(QString()), text);
    for (int i = 0; i < lines.size(); ++i) {
      const int line_width = i == 0 ? width - indent : width;
      // Blanks at the end of a line may hang past the width; what is visible must fit, unless
      // a single character is wider than the whole line.
      const QString visible = TrimmedRight(lines[i]);
      QVERIFY2(
          visible.size() <= 1 || fm.horizontalAdvance(visible) <= line_width,
          qPrintable(
              QStringLiteral("line %1 '%2' overflows %3").arg(i).arg(visible).arg(line_width)));
      // And each line is as long as fits: one more visible character would overflow.
      if (i + 1 < lines.size() && !visible.isEmpty()) {
        const QString longer = TrimmedRight(lines[i] + lines[i + 1].left(1));
        QVERIFY2(fm.horizontalAdvance(longer) > line_width,
                 qPrintable(QStringLiteral("line %1 '%2' ends early").arg(i).arg(lines[i])));
      }
    }
  }

  // --- SplitMultiLineStringsByWord --------------------------------------------------------

  void splitMultiLineStringsByWord_breaksBetweenWords() {
    const QFont font = TestFont();
    const QFontMetrics fm(font);
    QStringList lines;
    const int width = fm.horizontalAdvance(QStringLiteral("alpha beta")) + 1;
    VxLabelStringUtil::SplitMultiLineStringsByWord(font, QStringLiteral("alpha beta gamma"), width,
                                                   lines);
    QCOMPARE(lines, (QStringList{QStringLiteral("alpha beta "), QStringLiteral("gamma")}));
  }

  void splitMultiLineStringsByWord_longWordOverflowsWhole() {
    const QFont font = TestFont();
    QStringList lines;
    VxLabelStringUtil::SplitMultiLineStringsByWord(font, QStringLiteral("a Supercalifragilistic b"),
                                                   30, lines);
    QCOMPARE(lines, (QStringList{QStringLiteral("a "), QStringLiteral("Supercalifragilistic "),
                                 QStringLiteral("b")}));
  }

  void splitMultiLineStringsByWord_invariants_data() { AddSampleRows(); }
  void splitMultiLineStringsByWord_invariants() {
    QFETCH(QString, text);
    QFETCH(int, width);
    const QFont font = TestFont();
    const QFontMetricsF fm(font);
    QStringList lines;
    VxLabelStringUtil::SplitMultiLineStringsByWord(font, text, width, lines);
    QVERIFY(!lines.isEmpty());
    QCOMPARE(lines.join(QString()), text);
    for (const QString& line : lines) {
      const QString visible = TrimmedRight(line);
      const bool single_word = !visible.contains(QLatin1Char(' '));
      QVERIFY2(single_word || fm.horizontalAdvance(visible) <= width,
               qPrintable(QStringLiteral("'%1' overflows %2").arg(visible).arg(width)));
    }
  }

  // --- SplitLineByWholeWord ---------------------------------------------------------------

  void splitLineByWholeWord_fullLineKeepsTrailingBlank() {
    const QFont font = TestFont();
    const QFontMetrics fm(font);
    const int width = fm.horizontalAdvance(QStringLiteral("aa bb"));
    QVERIFY(fm.horizontalAdvance(QStringLiteral("aa bb cc")) > width);
    QStringList lines;
    QVERIFY(
        VxLabelStringUtil::SplitLineByWholeWord(font, QStringLiteral("aa bb cc"), width, lines));
    QCOMPARE(lines, (QStringList{QStringLiteral("aa bb "), QStringLiteral("cc")}));
  }

  void splitLineByWholeWord_firstWordTooWide_wrapsAnywhere() {
    const QFont font = TestFont();
    const QFontMetrics fm(font);
    const QString text = QStringLiteral("Supercalifragilistic is long");
    const int width = fm.horizontalAdvance(QStringLiteral("Super"));
    QStringList lines;
    QVERIFY(VxLabelStringUtil::SplitLineByWholeWord(font, text, width, lines));
    QCOMPARE(lines, SplitAnywhere(text, width));
    QVERIFY(lines.size() > 3);
    QCOMPARE(lines.join(QString()), text);
  }

  void splitLineByWholeWord_laterLongWordStaysWholeOnItsOwnLine() {
    const QFont font = TestFont();
    const QFontMetrics fm(font);
    const int width = fm.horizontalAdvance(QStringLiteral("ok ok"));
    QStringList lines;
    QVERIFY(VxLabelStringUtil::SplitLineByWholeWord(
        font, QStringLiteral("ok Supercalifragilistic ok"), width, lines));
    QCOMPARE(lines, (QStringList{QStringLiteral("ok "), QStringLiteral("Supercalifragilistic "),
                                 QStringLiteral("ok")}));
  }

  void splitLineByWholeWord_tabsInWordsBecomeBlanks() {
    QStringList lines;
    QVERIFY(
        VxLabelStringUtil::SplitLineByWholeWord(TestFont(), QStringLiteral("a\tb c"), 1000, lines));
    QCOMPARE(lines, QStringList{QStringLiteral("a b c")});
  }

  void splitLineByWholeWord_tabInFirstWordCountsAtItsTabStop() {
    // The first word is measured before its tabs become blanks, so a tab can send a text whose
    // words would pack to the anywhere-wrap, tab and all.
    const QFont font = TestFont();
    const QFontMetrics fm(font);
    const QString text = QStringLiteral("ab\tcd ef");
    const int width = 60;
    QVERIFY(fm.horizontalAdvance(QStringLiteral("ab cd")) < width);
    QVERIFY(fm.horizontalAdvance(QStringLiteral("ab\tcd")) > width);
    QStringList lines;
    QVERIFY(VxLabelStringUtil::SplitLineByWholeWord(font, text, width, lines));
    QCOMPARE(lines, SplitAnywhere(text, width));
    QCOMPARE(lines.join(QString()), text);
  }

  void splitLineByWholeWord_keepsRunsOfBlanks() {
    QStringList lines;
    QVERIFY(
        VxLabelStringUtil::SplitLineByWholeWord(TestFont(), QStringLiteral("a  b "), 1000, lines));
    QCOMPARE(lines, QStringList{QStringLiteral("a  b ")});
  }

  void splitLineByWholeWord_leadingBlanksAreDropped() {
    // A blank is only ever put between the current line and the next word, and an empty line
    // has nothing to separate, so blanks before the first word vanish; later runs stay.
    QStringList lines;
    QVERIFY(
        VxLabelStringUtil::SplitLineByWholeWord(TestFont(), QStringLiteral("  a  b"), 1000, lines));
    QCOMPARE(lines, QStringList{QStringLiteral("a  b")});
  }

  void splitLineByWholeWord_invariants_data() { AddSampleRows(); }
  void splitLineByWholeWord_invariants() {
    QFETCH(QString, text);
    QFETCH(int, width);
    const QFont font = TestFont();
    const QFontMetrics fm(font);
    QStringList lines;
    QVERIFY(VxLabelStringUtil::SplitLineByWholeWord(font, text, width, lines));
    QVERIFY(!lines.isEmpty());

    if (fm.horizontalAdvance(text.section(QLatin1Char(' '), 0, 0)) > width) {
      QCOMPARE(lines, SplitAnywhere(text, width));
      return;
    }

    QString untabbed = text;
    untabbed.replace(QLatin1Char('\t'), QLatin1Char(' '));
    const QStringList words = untabbed.split(QLatin1Char(' '));
    // Walk the words through the lines: each line holds whole words joined by one blank, every
    // line but the last ends in a blank, and the next word would not have fitted.
    int next = 0;
    for (int i = 0; i < lines.size(); ++i) {
      QString packed = lines[i];
      const bool last = i + 1 == lines.size();
      if (!last) {
        QVERIFY2(packed.endsWith(QLatin1Char(' ')), qPrintable(packed));
        packed.chop(1);
      }
      QString rebuilt;
      const int first = next;
      while (next < words.size() && rebuilt.size() < packed.size()) {
        if (next > first) rebuilt += QLatin1Char(' ');
        rebuilt += words[next++];
      }
      QCOMPARE(rebuilt, packed);
      const bool one_word = next - first == 1;
      QVERIFY2(one_word || fm.horizontalAdvance(packed) <= width,
               qPrintable(QStringLiteral("'%1' overflows %2").arg(packed).arg(width)));
      if (!last) {
        QVERIFY(next < words.size());
        QVERIFY2(fm.horizontalAdvance(packed + QLatin1Char(' ') + words[next]) > width,
                 qPrintable(QStringLiteral("'%1' had room for '%2'").arg(packed, words[next])));
      }
    }
    QCOMPARE(next, words.size());
  }

  // --- CalculateMultiLineStringRects ------------------------------------------------------

  void calculateRects_maxLinesTwoOnThreeLines_elidesSecondLine() {
    RectsCall probe;
    const QString text = ThreeLineText(probe);
    RectsCall full = probe;
    full.Run(text);
    QCOMPARE(full.lines.size(), 3);

    RectsCall call = probe;
    call.max_lines = 2;
    call.Run(text);
    QCOMPARE(call.lines.size(), 2);
    QCOMPARE(call.rects.size(), size_t(2));
    QCOMPARE(call.lines[0], full.lines[0]);
    const QString rest = text.mid(full.lines[0].size());
    QCOMPARE(call.lines[1], call.fm.elidedText(rest, Qt::ElideRight, call.max_width));
    QVERIFY(call.lines[1].endsWith(QChar(0x2026)));
    QVERIFY(call.elided);
    QCOMPARE(call.rects[0], full.rects[0]);
    QCOMPARE(call.rects[1], full.rects[1]);
  }

  void calculateRects_maxLinesZeroOrEnough_yieldsEveryLine_data() {
    QTest::addColumn<int>("maxLines");
    QTest::newRow("0") << 0;
    QTest::newRow("-1") << -1;
    QTest::newRow("exactly 3") << 3;
    QTest::newRow("4") << 4;
  }
  void calculateRects_maxLinesZeroOrEnough_yieldsEveryLine() {
    QFETCH(int, maxLines);
    RectsCall call;
    const QString text = ThreeLineText(call);
    call.max_lines = maxLines;
    call.Run(text);
    QCOMPARE(call.lines.size(), 3);
    QCOMPARE(call.rects.size(), size_t(3));
    QCOMPARE(call.lines.join(QString()), text);
    QVERIFY(!call.elided);
  }

  void calculateRects_noElision_leavesElidedFlagUntouched() {
    for (bool initial : {false, true}) {
      for (int max_lines : {0, 1, 3}) {
        RectsCall call;
        call.elided = initial;
        call.max_lines = max_lines;
        call.Run(QStringLiteral("short"));  // one line, nothing left to elide
        QCOMPARE(call.lines, QStringList{QStringLiteral("short")});
        QCOMPARE(call.elided, initial);
      }
    }
  }

  void calculateRects_maxLinesOne_elidesToIndentedWidth() {
    RectsCall call;
    call.origin = QPoint(30, 4);
    call.max_width = 150;
    call.max_lines = 1;
    const QString text = SampleTexts().front().text;
    call.Run(text);
    QCOMPARE(call.lines, QStringList{call.fm.elidedText(text, Qt::ElideRight, 150 - 30)});
    QCOMPARE(call.rects.size(), size_t(1));
    QCOMPARE(call.rects[0].topLeft(), call.origin);
    QVERIFY(call.elided);
  }

  void calculateRects_linesAlreadyCollected_shareTheLineBudget() {
    // Outputs accumulate across calls, and so does the line count that maxLines limits; a line
    // already in the list also means the new text is no longer the indented first line.
    RectsCall call;
    call.origin = QPoint(30, 0);
    call.max_width = 150;
    call.max_lines = 2;
    call.lines = QStringList{QStringLiteral("earlier")};
    call.rects = {QRect(0, 0, 10, 17)};
    const QString text = SampleTexts().front().text;
    call.Run(text);
    QCOMPARE(call.lines, (QStringList{QStringLiteral("earlier"),
                                      call.fm.elidedText(text, Qt::ElideRight, 150)}));
    QVERIFY(call.elided);

    RectsCall unindented;
    unindented.origin = QPoint(30, 0);
    unindented.max_width = 150;
    unindented.lines = QStringList{QStringLiteral("earlier")};
    unindented.Run(text);
    QCOMPARE(unindented.lines[1].size(), LongestFit(unindented.fm, text, 150));
  }

  void calculateRects_firstCharacterWiderThanWidth_yieldsOneCharacterLine() {
    RectsCall call;
    call.max_width = 5;
    call.Run(QStringLiteral("W"));
    QCOMPARE(call.lines, QStringList{QStringLiteral("W")});
    QCOMPARE(call.rects.size(), size_t(1));
    QCOMPARE(call.rects[0], QRect(0, 0, call.fm.horizontalAdvance(QStringLiteral("W")), 17));

    RectsCall several;
    several.max_width = 5;
    several.Run(QStringLiteral("WMW"));
    QCOMPARE(several.lines,
             (QStringList{QStringLiteral("W"), QStringLiteral("M"), QStringLiteral("W")}));
  }

  void calculateRects_oneCharacterLine_rectIsTheCharactersOwnAdvance_data() {
    QTest::addColumn<QChar>("first");
    QTest::newRow("tab") << QChar(QLatin1Char('\t'));
    QTest::newRow("line feed") << QChar(QLatin1Char('\n'));
    QTest::newRow("soft hyphen") << QChar(0x00AD);
  }
  void calculateRects_oneCharacterLine_rectIsTheCharactersOwnAdvance() {
    // Characters that text layout measures differently on their own than the font advances
    // them: the forced one-character line gets the font's advance.
    QFETCH(QChar, first);
    RectsCall call;
    call.max_width = 5;
    QVERIFY(call.fm.horizontalAdvance(first) != call.fm.horizontalAdvance(QString(first)));
    call.Run(QString(first) + QStringLiteral("x"));
    QCOMPARE(call.lines, (QStringList{QString(first), QStringLiteral("x")}));
    QCOMPARE(call.rects.size(), size_t(2));
    QCOMPARE(call.rects[0].width(), call.fm.horizontalAdvance(first));
    QCOMPARE(call.rects[1].width(), call.fm.horizontalAdvance(QLatin1Char('x')));
  }

  void calculateRects_guessBeyondTheText_takesTheWholeTextUnsearched() {
    // The first guess counts characters of the font's size. A short text of wider characters
    // (here tab stops) whose guess already covers all of it goes on one line as it is, even
    // though it overflows; one character more and the search runs and cuts the line.
    RectsCall call;
    call.max_width = 100;
    const QString text = QStringLiteral("a\t\tb");
    QVERIFY(call.max_width / kPixelSize > text.size());
    QVERIFY(call.fm.horizontalAdvance(text) > call.max_width);
    call.Run(text);
    QCOMPARE(call.lines, QStringList{text});
    QCOMPARE(call.rects.size(), size_t(1));
    QCOMPARE(call.rects[0].width(), call.fm.horizontalAdvance(text));

    RectsCall longer;
    longer.max_width = 100;
    const QString longer_text = QStringLiteral("a\t\tbcdefgh");
    QVERIFY(longer.max_width / kPixelSize <= longer_text.size());
    longer.Run(longer_text);
    QVERIFY(longer.lines.size() > 1);
    QCOMPARE(longer.lines.first(), longer_text.left(LongestFit(longer.fm, longer_text, 100)));
    QCOMPARE(longer.lines.join(QString()), longer_text);
  }

  void calculateRects_indentBeyondWidth_firstLineTakesOneCharacter() {
    RectsCall call;
    call.origin = QPoint(200, 0);
    call.max_width = 100;
    call.Run(QStringLiteral("abcdef"));
    QCOMPARE(call.lines, (QStringList{QStringLiteral("a"), QStringLiteral("bcdef")}));
  }

  void calculateRects_growingPastTheWidth_endsOneCharacterShort() {
    // Characters narrower than the pixel-size guess make the search grow; on overshooting it
    // backs off one character further than the last count that fitted, and the rectangle keeps
    // the overshooting width.
    RectsCall call;
    const QString text(60, QLatin1Char('i'));
    const int fitting = 20;
    call.max_width = call.fm.horizontalAdvance(text.left(fitting)) + 1;
    QVERIFY(call.max_width / kPixelSize < fitting);
    QCOMPARE(LongestFit(call.fm, text, call.max_width), fitting);
    for (int n = 1; n <= text.size(); ++n) {
      QVERIFY(call.fm.horizontalAdvance(text.left(n)) != call.max_width);
    }
    call.Run(text);
    QCOMPARE(call.lines.first(), text.left(fitting - 1));
    QCOMPARE(call.rects.front().width(), call.fm.horizontalAdvance(text.left(fitting + 1)));
    QVERIFY(call.rects.front().width() > call.max_width);
    QCOMPARE(call.lines.join(QString()), text);
  }

  void calculateRects_growingToAnExactFit_endsThere() {
    RectsCall call;
    const QString text(60, QLatin1Char('i'));
    call.max_width = call.fm.horizontalAdvance(text.left(20));
    call.Run(text);
    QCOMPARE(call.lines.first(), text.left(20));
    QCOMPARE(call.rects.front().width(), call.max_width);
  }

  void calculateRects_guessTooLong_shrinksToLongestFit() {
    // Metrics of a font twice the size of the one that gives the guess: the guess is too long.
    RectsCall call;
    call.fm = QFontMetrics(TestFont(2 * kPixelSize));
    call.max_width = 200;
    const QString text(60, QLatin1Char('x'));
    QVERIFY(call.fm.horizontalAdvance(text.left(200 / kPixelSize)) > 200);
    const int fitting = LongestFit(call.fm, text, 200);
    call.Run(text);
    QCOMPARE(call.lines.first(), text.left(fitting));
    QCOMPARE(call.rects.front().width(), call.fm.horizontalAdvance(text.left(fitting)));
  }

  void calculateRects_zeroWidthRun_growsInDoublingSteps() {
    // Over characters that add no width the search doubles its step (1, 2, 4); when the long
    // step overshoots it goes back to where that step started and stops there, even though a
    // few more zero-width characters would still have fitted.
    RectsCall call;
    const QString zero_width(6, QChar(0x200B));
    const QString text = QStringLiteral("iiii") + zero_width + QStringLiteral("WWWW");
    const int base = call.fm.horizontalAdvance(QStringLiteral("iiii"));
    call.max_width = base + 1;
    QCOMPARE(call.max_width / kPixelSize, 1);
    for (int n = 1; n < 4; ++n) QVERIFY(call.fm.horizontalAdvance(text.left(n)) < base);
    QCOMPARE(call.fm.horizontalAdvance(text.left(10)), base);
    QVERIFY(call.fm.horizontalAdvance(text.left(11)) > call.max_width);

    call.Run(text);
    QCOMPARE(call.lines.first(), QStringLiteral("iiii") + zero_width.left(3));
    QCOMPARE(call.rects.front().width(), base);
    QCOMPARE(call.lines.join(QString()), text);
  }

  void calculateRects_widthBelowTheGuess_takesOneCharacterPerLine() {
    // When the width is below the font's size the first guess is zero characters, and the line
    // takes exactly one character, even if narrow characters would have fitted.
    RectsCall call;
    const QString text = QStringLiteral("iii");
    call.max_width = kPixelSize - 1;
    QVERIFY(call.fm.horizontalAdvance(text) <= call.max_width);
    call.Run(text);
    QCOMPARE(call.lines,
             (QStringList{QStringLiteral("i"), QStringLiteral("i"), QStringLiteral("i")}));
  }

  void calculateRects_lastLineElisionThatChangesNothing_clearsElided() {
    // The last permitted line is elided whenever text is left over; if the whole rest fits after
    // all (see the test above), the text comes back unchanged and `elided` is written false.
    RectsCall call;
    call.max_width = kPixelSize - 1;
    call.max_lines = 1;
    call.elided = true;
    call.Run(QStringLiteral("iii"));
    QCOMPARE(call.lines, QStringList{QStringLiteral("iii")});
    QCOMPARE(call.rects.size(), size_t(1));
    QCOMPARE(call.rects[0].width(), call.fm.horizontalAdvance(QStringLiteral("i")));
    QCOMPARE(call.elided, false);
  }

  void calculateRects_pointSizedFont_layoutStillFits() {
    RectsCall call;
    call.font = QFont(QString::fromLatin1(kFamily));
    call.font.setPointSizeF(10.5);
    call.fm = QFontMetrics(call.font);
    call.max_width = 160;
    const QString text = SampleTexts().front().text;
    call.Run(text);
    QVERIFY(call.lines.size() > 1);
    QCOMPARE(call.lines.join(QString()), text);
    for (const QString& line : call.lines) QVERIFY(call.fm.horizontalAdvance(line) <= 160);
  }

  void calculateRects_tinyWidthOnLongText_finishesOneCharacterPerLine() {
    RectsCall call;
    call.max_width = 1;
    call.spacing = 2;
    const QString text(20000, QLatin1Char('w'));
    call.Run(text);
    QCOMPARE(call.lines.size(), text.size());
    QCOMPARE(call.lines.join(QString()), text);
    QCOMPARE(call.rects.back().top(), (text.size() - 1) * (17 + 2));
  }

  void calculateRects_extremeGeometry_givesDefinedAnswer() {
    const QString text = QStringLiteral("abcdef");

    RectsCall far_out;
    far_out.origin = QPoint(INT_MAX - 3, INT_MAX - 3);
    far_out.x = INT_MAX;
    far_out.spacing = INT_MAX;
    far_out.line_height = INT_MAX;
    far_out.max_width = INT_MAX;
    far_out.Run(text);
    QCOMPARE(far_out.lines, (QStringList{QStringLiteral("a"), QStringLiteral("bcdef")}));
    QCOMPARE(far_out.rects.size(), size_t(2));
    QCOMPARE(far_out.rects[0].topLeft(), far_out.origin);
    QCOMPARE(far_out.rects[1].topLeft(), QPoint(INT_MAX, INT_MAX));
    for (const QRect& rect : far_out.rects) QCOMPARE(rect.bottom(), INT_MAX);

    RectsCall far_left;
    far_left.origin = QPoint(INT_MIN, INT_MIN);
    far_left.max_width = INT_MAX;
    far_left.line_height = INT_MIN;
    far_left.max_lines = 1;
    far_left.Run(text);
    QCOMPARE(far_left.lines, QStringList{text});
    QCOMPARE(far_left.rects.size(), size_t(1));
    QCOMPARE(far_left.rects[0].top(), INT_MIN);
    QVERIFY(!far_left.elided);
  }

  void calculateRects_invariants_data() { AddSampleRows(); }
  void calculateRects_invariants() {
    QFETCH(QString, text);
    QFETCH(int, width);
    RectsCall call = TableCall(width);
    call.Run(text);
    const QFontMetrics& fm = call.fm;

    QVERIFY(!call.lines.isEmpty());
    QCOMPARE(call.rects.size(), size_t(call.lines.size()));
    QCOMPARE(call.lines.join(QString()), text);
    QVERIFY(!call.elided);

    int consumed = 0;
    for (int i = 0; i < call.lines.size(); ++i) {
      const QString& line = call.lines[i];
      const QRect& rect = call.rects[size_t(i)];
      consumed += line.size();
      const QString next_two = text.mid(consumed, 2);
      const int available = i == 0 ? width - call.origin.x() : width;

      const QPoint expected_corner =
          i == 0 ? call.origin
                 : QPoint(call.x, call.origin.y() + i * (call.line_height + call.spacing));
      QCOMPARE(rect.topLeft(), expected_corner);
      QCOMPARE(rect.height(), call.line_height);

      // A line fits unless it is the single character that every line takes at least.
      QVERIFY2(
          line.size() == 1 || fm.horizontalAdvance(line) <= available,
          qPrintable(QStringLiteral("line %1 '%2' overflows %3").arg(i).arg(line).arg(available)));
      // The rectangle is the line's own width, the width measured when the search overshot, or
      // for a character that had to be taken although it did not fit, that character's advance.
      QVERIFY2(rect.width() == fm.horizontalAdvance(line) ||
                   rect.width() == fm.horizontalAdvance(line + next_two) ||
                   (line.size() == 1 && rect.width() == fm.horizontalAdvance(line.at(0))),
               qPrintable(QStringLiteral("line %1 rect width %2").arg(i).arg(rect.width())));
      // Nothing but the overshoot slack is left on a line.
      if (!next_two.isEmpty()) QVERIFY(fm.horizontalAdvance(line + next_two) > available);
    }
  }

  void calculateRects_maxLinesTwo_invariants_data() { AddSampleRows(); }
  void calculateRects_maxLinesTwo_invariants() {
    QFETCH(QString, text);
    QFETCH(int, width);
    RectsCall full = TableCall(width);
    RectsCall call = full;
    full.Run(text);
    call.max_lines = 2;
    call.Run(text);

    if (full.lines.size() <= 2) {
      QCOMPARE(call.lines, full.lines);
      QVERIFY(!call.elided);
      return;
    }
    QCOMPARE(call.lines.size(), 2);
    QCOMPARE(call.lines[0], full.lines[0]);
    QCOMPARE(call.rects[0], full.rects[0]);
    QCOMPARE(call.rects[1], full.rects[1]);
    const QString rest = text.mid(full.lines[0].size());
    QCOMPARE(call.lines[1], call.fm.elidedText(rest, Qt::ElideRight, width));
    QVERIFY(call.elided);
  }

  // --- UpdateElidedText -------------------------------------------------------------------

  void updateElidedText_hiddenLabel_doesNothing() {
    const QString text = SampleTexts().front().text;
    QLabel label;
    label.setFont(TestFont());
    label.setText(text);
    label.resize(60, 20);
    QVERIFY(!label.isVisible());
    VxLabelStringUtil::UpdateElidedText(&label, Qt::ElideRight);
    QCOMPARE(label.text(), text);

    // A hidden child of a shown window is not visible either.
    QWidget window;
    window.resize(300, 100);
    QLabel child(text, &window);
    child.setFont(TestFont());
    child.resize(60, 20);
    child.hide();
    window.show();
    VxLabelStringUtil::UpdateElidedText(&child, Qt::ElideRight);
    QCOMPARE(child.text(), text);

    VxLabelStringUtil::UpdateElidedText(nullptr, Qt::ElideRight);  // tolerated, no effect
  }

  void updateElidedText_narrowVisibleLabel_elidesAndStaysElided_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<Qt::TextElideMode>("mode");
    QTest::addColumn<int>("width");
    const std::pair<const char*, Qt::TextElideMode> modes[] = {
        {"left", Qt::ElideLeft}, {"middle", Qt::ElideMiddle}, {"right", Qt::ElideRight}};
    for (const SampleText& sample : SampleTexts()) {
      for (const auto& [mode_name, mode] : modes) {
        for (int width : {60, 140}) {
          QTest::addRow("%s, %s @%d", sample.name, mode_name, width)
              << sample.text << mode << width;
        }
      }
    }
  }
  void updateElidedText_narrowVisibleLabel_elidesAndStaysElided() {
    QFETCH(QString, text);
    QFETCH(Qt::TextElideMode, mode);
    QFETCH(int, width);
    QLabel label;
    label.setFont(TestFont());
    label.setText(text);
    label.show();
    label.resize(width, 24);
    QCOMPARE(label.width(), width);
    const QFontMetrics fm(label.font());
    QVERIFY(fm.horizontalAdvance(text) > width);

    VxLabelStringUtil::UpdateElidedText(&label, mode);
    const QString expected = fm.elidedText(text, mode, width, 0);
    QCOMPARE(label.text(), expected);
    QVERIFY(label.text() != text);

    label.resize(fm.horizontalAdvance(text) + 50, 24);
    VxLabelStringUtil::UpdateElidedText(&label, mode);
    QCOMPARE(label.text(), expected);
  }

  void updateElidedText_labelWideEnough_keepsText() {
    const QString text = QStringLiteral("fits");
    QLabel label;
    label.setFont(TestFont());
    label.setText(text);
    label.show();
    label.resize(QFontMetrics(label.font()).horizontalAdvance(text), 24);
    VxLabelStringUtil::UpdateElidedText(&label, Qt::ElideRight);
    QCOMPARE(label.text(), text);
    label.resize(label.width() - 1, 24);
    VxLabelStringUtil::UpdateElidedText(&label, Qt::ElideRight);
    QVERIFY(label.text() != text);
  }

 private:
  // The longest prefix of a sample sentence that `call`'s settings lay out in exactly three
  // lines, so that a limit of two lines must elide.
  static QString ThreeLineText(RectsCall& call) {
    call.max_width = 120;
    call.line_height = call.fm.height();
    call.spacing = 2;
    const QString sentence = SampleTexts().front().text;
    QString best;
    for (int length = 1; length <= sentence.size(); ++length) {
      RectsCall probe = call;
      probe.Run(sentence.left(length));
      if (probe.lines.size() == 3) best = sentence.left(length);
    }
    return best;
  }
};

QTEST_MAIN(tst_LabelStringUtil)
#include "tst_label_string_util.moc"
