// Feeds arbitrary bytes, read once as UTF-8 and once as Latin-1, through CHTMLParser into a
// sink that checks every promise the parser makes about its calls, and through the html2rtf
// writer, whose document must stay well-formed whatever comes in. Short inputs are also
// converted by the literal step-by-step parser of the tests, whose calls and final formatting
// fields the parser must reproduce exactly. A broken promise aborts, and libFuzzer keeps the
// input that did it.
#include <QMap>
#include <QString>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "examples/html2rtf/rtf_writer.h"
#include "qt_util/html_parser.h"
#include "tests/support/literal_html_parser.h"
#include "tests/support/recording_sink.h"

namespace {

[[noreturn]] void Fail(const char* what, const QString& detail) {
  std::fprintf(stderr, "fuzz_html_parser: broken promise: %s [%s]\n", what,
               detail.left(200).toUtf8().constData());
  std::abort();
}

#define FUZZ_CHECK(condition, detail)             \
  do {                                            \
    if (!(condition)) Fail(#condition, (detail)); \
  } while (0)

// The text the parser actually walks: `html` without its comments.
QString WithoutComments(const QString& html) {
  QString simplified = html;
  CHTMLParser(QString(), nullptr).SimplifyHTML(simplified);
  // ReferenceSimplify removes the first "<!--" up to the first "-->" and searches again from the
  // start; the parser does the same in one pass. The reference is quadratic in the number of
  // comments; longer inputs (which libFuzzer's default length limit never makes) only get the
  // other checks.
  if (html.size() <= (1 << 16)) {
    const QString expected = ReferenceSimplify(html);
    FUZZ_CHECK(simplified == expected, expected);
  }
  return simplified;
}

// What the input allows the parser to produce, counted before the conversion.
struct InputFacts {
  qsizetype length;
  qsizetype tagStarts;
  qsizetype semicolons;
  qsizetype equalsSigns;
  bool outputAlwaysOn;
};

// Counted on the text that the parser walks, so that a tag name joined by removing a comment
// ("<he<!---->ad>") counts.
InputFacts FactsOf(const QString& html) {
  const QString text = WithoutComments(html);
  const QString lower = text.toLower();
  // Output can only be switched off by a "head" or "body" tag, whose lower-cased name is a piece
  // of the lower-cased text; without either name the list promises below hold for every call the
  // sink sees.
  return {text.size(), text.count(QLatin1Char('<')), text.count(QLatin1Char(';')),
          text.count(QLatin1Char('=')),
          !lower.contains(QLatin1String("head")) && !lower.contains(QLatin1String("body"))};
}

bool StartsOrEndsWithQuote(const QString& value) {
  if (value.isEmpty()) return false;
  const auto isQuote = [](QChar c) { return c == QLatin1Char('"') || c == QLatin1Char('\''); };
  return isQuote(value.front()) || isQuote(value.back());
}

class CheckingSink : public CParserOut {
 public:
  explicit CheckingSink(const InputFacts& facts) : facts_(facts) {}

  void BeginBulletList() override {
    Count();
    bulletListOpen_ = true;
  }
  void EndBulletList() override {
    Count();
    bulletListOpen_ = false;
  }
  void BulletItem() override {
    Count();
    // A bullet item needs an open <ul>; the parser's flag follows the same tags as these calls.
    if (facts_.outputAlwaysOn) FUZZ_CHECK(bulletListOpen_, QStringLiteral("BulletItem"));
  }
  void NumberedItem(int number) override {
    Count();
    FUZZ_CHECK(number == 1, QString::number(number));
    // Inside an unordered list an item is always a bullet.
    if (facts_.outputAlwaysOn) FUZZ_CHECK(!bulletListOpen_, QStringLiteral("NumberedItem"));
  }
  void EndNumberedList() override { Count(); }
  void SetAlignment(const QString& alignment) override {
    Count();
    FUZZ_CHECK(alignment == QLatin1String("Left") || alignment == QLatin1String("Right") ||
                   alignment == QLatin1String("Center") || alignment == QLatin1String("Justify"),
               alignment);
  }
  void NewParagraph() override { Count(); }
  void ResetParagraph() override { Count(); }
  void LineBreak() override { Count(); }
  void BeginRow() override { Count(); }
  void EndRow() override { Count(); }
  void BeginCell(int span) override {
    Count();
    FUZZ_CHECK(span == 1, QString::number(span));
  }
  void EndCell() override { Count(); }
  void AddColumn(int width) override {
    // "tr cols" is reached only through the self-closing form, which leaves no argument text,
    // so its column count is always 0.
    Fail("AddColumn is never called", QString::number(width));
  }
  void Reserved() override { Fail("the reserved operation is never called", QString()); }

  void WriteText(const QString& text) override {
    Count();
    FUZZ_CHECK(!inScript, text);
    FUZZ_CHECK(!text.isEmpty(), text);
    FUZZ_CHECK(!text.contains(QLatin1Char('\r')) && !text.contains(QLatin1Char('\n')), text);
    // These entities are decoded after "&amp;", so none can survive the decoding.
    for (const char* entity : {"&lt;", "&gt;", "&quot;", "&#39;"}) {
      FUZZ_CHECK(!text.contains(QLatin1String(entity)), text);
    }
    // Decoding only shrinks the text, and each character of the input is text at most once.
    textLength_ += text.size();
    FUZZ_CHECK(textLength_ <= facts_.length, text);
    // A raw "<" always starts a tag, so every "<" in text is a decoded "&lt;", which used up
    // one ";" of the input.
    lessThans_ += text.count(QLatin1Char('<'));
    FUZZ_CHECK(lessThans_ <= facts_.semicolons, text);
    CheckFormatting(text);
  }

  void InsertImage(const QString& source, const QMap<QString, QString>& attributes) override {
    Count();
    FUZZ_CHECK(attributes.contains(QStringLiteral("src")), source);
    FUZZ_CHECK(attributes.value(QStringLiteral("src")) == source, source);
    // Each stored attribute came from its own "=" of the input; "src" may be added empty.
    FUZZ_CHECK(attributes.size() <= facts_.equalsSigns + 1, QString::number(attributes.size()));
    for (auto it = attributes.cbegin(); it != attributes.cend(); ++it) {
      const QString& key = it.key();
      const QString& value = it.value();
      FUZZ_CHECK(key == key.toLower() && key == key.trimmed(), key);
      FUZZ_CHECK(value == value.toLower(), value);
      FUZZ_CHECK(!StartsOrEndsWithQuote(value), value);
      FUZZ_CHECK(!key.contains(QLatin1String("\r\n")) && !value.contains(QLatin1String("\r\n")),
                 key + QLatin1Char('=') + value);
    }
    CheckFormatting(source);
  }

  void InsertObject(const QString& classId, const QMap<QString, QString>&) override {
    Fail("InsertObject is unreachable: <object> is handled as a table cell", classId);
  }

 private:
  // Count() guards against output that grows faster than the input: at most one text run
  // before each tag, one call for the tag itself (no column follows a row), and the last run.
  void Count() {
    ++calls_;
    FUZZ_CHECK(calls_ <= 2LL * facts_.tagStarts + 1, QString::number(calls_));
  }

  // The formatting values that the parser can write: font size and name from argument text
  // that is always empty, colours that always parse as black, and the defaults of </font>.
  void CheckFormatting(const QString& where) {
    FUZZ_CHECK(fontSize == 9 || fontSize == 0, where);
    FUZZ_CHECK(fontName == QLatin1String("Tahoma") || fontName.isEmpty(), fontName);
    FUZZ_CHECK(textColor == QColor(Qt::black), textColor.name());
    FUZZ_CHECK(backgroundColor == QColor(Qt::white) || backgroundColor == QColor(Qt::black),
               backgroundColor.name());
  }

  const InputFacts& facts_;
  bool bulletListOpen_ = false;
  long long calls_ = 0;
  long long textLength_ = 0;
  long long lessThans_ = 0;
};

bool ReferenceIsValidParser(const QString& html) {
  for (const char* needle :
       {"<IMG", "<img", "<image", "<IMAGE", "<object", "<OBJECT", "<embed", "<EMBED"}) {
    if (html.contains(QLatin1String(needle))) return true;
  }
  return false;
}

// The writer's document: ASCII only, one group that opens first and closes last, every brace
// in between matched (escaped ones skipped).
void CheckRtf(const QByteArray& rtf) {
  const QString head = QString::fromLatin1(rtf.left(60));
  FUZZ_CHECK(rtf.startsWith("{\\rtf1"), head);
  int depth = 0;
  int i = 0;
  for (; i < rtf.size(); ++i) {
    const char c = rtf[i];
    FUZZ_CHECK(static_cast<unsigned char>(c) < 0x80, QString::number(i));
    if (c == '\\') {
      ++i;
    } else if (c == '{') {
      ++depth;
    } else if (c == '}') {
      --depth;
      FUZZ_CHECK(depth >= 0, QString::number(i));
      if (depth == 0) break;
    }
  }
  FUZZ_CHECK(depth == 0 && rtf.mid(i + 1) == "\n", QString::number(i));
}

// The first entry at which two call logs differ, with its neighbours, or "<end>" past the end.
QString FirstDifference(const QStringList& expected, const QStringList& actual) {
  int i = 0;
  while (i < expected.size() && i < actual.size() && expected.at(i) == actual.at(i)) ++i;
  const auto around = [i](const QStringList& calls) {
    QStringList shown;
    for (int k = std::max(0, i - 1); k <= i + 1; ++k) {
      shown << (k < calls.size() ? calls.at(k).left(120) : QStringLiteral("<end>"));
      if (k >= calls.size()) break;
    }
    return shown.join(QLatin1String(" | "));
  };
  return QStringLiteral("call %1 of %2/%3\n  literal: %4\n  parser:  %5")
      .arg(i)
      .arg(expected.size())
      .arg(actual.size())
      .arg(around(expected), around(actual));
}

// The literal parser searches for comments from the start again after each removal and strips
// trailing quotes with a pattern that rescans a run of quotes from each of its characters, so
// it is quadratic in places. 4096 characters is libFuzzer's default length limit when the
// corpus holds nothing longer, so every input it makes is compared while one input still takes
// milliseconds; longer inputs (large seeds) only get the other checks.
constexpr int kLiteralCompareLimit = 4096;

// `anyLength` compares a text longer than the limit, which the caller knows to be cheap.
void CompareWithLiteral(const QString& html, bool anyLength = false) {
  if (html.size() > kLiteralCompareLimit && !anyLength) return;
  RecordingSink expected;
  LiteralParser(&expected).Convert(html);
  RecordingSink actual;
  CHTMLParser parser(html, &actual);
  if (actual.calls == expected.calls && actual.FormatFields() == expected.FormatFields()) return;
  std::fprintf(stderr,
               "fuzz_html_parser: the parser differs from the literal parser\n%s\n"
               "  fields, literal: [%s]\n  fields, parser:  [%s]\n",
               FirstDifference(expected.calls, actual.calls).toUtf8().constData(),
               expected.FormatFields().toUtf8().constData(),
               actual.FormatFields().toUtf8().constData());
  std::abort();
}

// Text with comments goes through a buffer of 16K characters that the conversion fills again
// and again. Behind a comment and a plain run long enough, the first edge of that buffer falls in
// the middle of the input, with tags, runs and comments across it; the literal parser takes a
// few milliseconds there, its comment removal being only once quadratic in the input's comments.
void CompareAtBufferEdge(const QString& html) {
  constexpr int kBufferEdge = 16 * 1024;
  if (html.size() > kLiteralCompareLimit) return;
  CompareWithLiteral("<!---->" + QString(kBufferEdge - html.size() / 2, QLatin1Char('a')) + html,
                     true);
}

void Convert(const QString& html) {
  CompareWithLiteral(html);
  CompareAtBufferEdge(html);
  const InputFacts facts = FactsOf(html);
  CheckingSink sink(facts);
  CHTMLParser parser(html, &sink);
  FUZZ_CHECK(CHTMLParser::IsValidParser(html) == ReferenceIsValidParser(html), html);

  html2rtf::RtfWriterOptions options;
  options.loadImages = false;  // arbitrary input must not choose files to read
  CheckRtf(html2rtf::HtmlToRtf(html, options));

  CHTMLParser nullSink(html, nullptr);  // must read nothing and do nothing
}

// Hands the text over as raw data in a heap buffer of exactly its length, without the NUL that
// a QString keeps after its end: a read one past the end, which an ordinary QString would answer
// with that NUL, becomes a heap overflow that ASan reports.
void ConvertWithoutTerminator(const QString& decoded) {
  const qsizetype length = decoded.size();
  std::unique_ptr<QChar[]> buffer(new QChar[static_cast<size_t>(length)]);
  std::copy(decoded.cbegin(), decoded.cend(), buffer.get());
  Convert(QString::fromRawData(buffer.get(), length));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  const char* bytes = reinterpret_cast<const char*>(data);
  const int length = static_cast<int>(size);
  ConvertWithoutTerminator(QString::fromUtf8(bytes, length));
  ConvertWithoutTerminator(QString::fromLatin1(bytes, length));
  return 0;
}
