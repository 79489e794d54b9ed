// HTML conversion into a sink that only counts, beside Qt's own HTML import of chat text
// (QTextDocument::setHtml) and beside a floor: one plain pass over the same text that finds every
// tag (tracking quotes, so that a ">" inside one does not end the tag) and trims every text run,
// and does nothing else. The floor is what any conversion has to do at least; the gap to it is
// the work of the conversion proper. Chat, comment-heavy input and a few adversarial shapes (long
// attribute lists, long entity-laden text, deep nesting, many unknown tags, runs of quotes) are
// measured at 1x, 4x and 16x, each floor right before its conversion.
//
// Counters: x_floor = conversion time / floor time on the same text; x_setHtml = conversion time
// per byte / setHtml time per byte on the 1x chat text (below 1 is faster); x_<shape>_1x = time
// per byte at this size / time per byte at 1x (1.0 is perfectly linear).
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QTextDocument>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "bench_support.h"
#include "qt_util/html_parser.h"

namespace {

class CountingSink : public CParserOut {
 public:
  int64_t calls = 0;
  int64_t characters = 0;

  void BeginBulletList() override { ++calls; }
  void EndBulletList() override { ++calls; }
  void BulletItem() override { ++calls; }
  void NumberedItem(int) override { ++calls; }
  void EndNumberedList() override { ++calls; }
  void SetAlignment(const QString&) override { ++calls; }
  void NewParagraph() override { ++calls; }
  void ResetParagraph() override { ++calls; }
  void LineBreak() override { ++calls; }
  void BeginRow() override { ++calls; }
  void EndRow() override { ++calls; }
  void BeginCell(int) override { ++calls; }
  void EndCell() override { ++calls; }
  void AddColumn(int) override { ++calls; }
  void WriteText(const QString& text) override {
    ++calls;
    characters += text.size();
  }
  void InsertImage(const QString&, const QMap<QString, QString>&) override { ++calls; }
  void InsertObject(const QString&, const QMap<QString, QString>&) override { ++calls; }
};

// Small deterministic generator, so every run converts the same text.
class Random {
 public:
  explicit Random(uint32_t seed) : state_(seed) {}
  uint32_t Next(uint32_t bound) {
    state_ = state_ * 1664525u + 1013904223u;
    return (state_ >> 8) % bound;
  }

 private:
  uint32_t state_;
};

const char* const kWords[] = {"meeting", "agenda", "slides", "share", "screen", "audio",
                              "video",   "thanks", "team",   "notes", "review", "budget",
                              "launch",  "today",  "call",   "link",  "ok",     "next"};

QString Words(Random& random, int count) {
  QString text;
  for (int i = 0; i < count; ++i) {
    if (i) text += ' ';
    text += kWords[random.Next(sizeof kWords / sizeof *kWords)];
  }
  return text;
}

// One chat message the way the client's panel sends them: a paragraph with a sender, styled
// text, entities, and now and then a list, a table or an emoji image.
void AppendMessage(QString& html, Random& random, int index, bool withComments) {
  if (withComments) html += QString("<!-- message %1 from panel -->").arg(index);
  html += "<div align=\"left\"><font face=\"Segoe UI\" size=\"3\" color=\"#202020\"><b>";
  html += Words(random, 2);
  html += "</b>: ";
  switch (random.Next(6)) {
    case 0:
      html += "<ul><li>" + Words(random, 4) + "</li><li><i>" + Words(random, 3) +
              "</i> &amp; more</li></ul>";
      break;
    case 1:
      html += "<table><tr><td>" + Words(random, 2) + "</td><td>" + Words(random, 2) +
              "</td></tr></table>";
      break;
    case 2:
      html += Words(random, 5) + " <img src=\"emoji/smile.png\" width=\"16\" height=\"16\"> " +
              Words(random, 2);
      break;
    case 3:
      html += "<ol><li>" + Words(random, 3) + "</li><li>" + Words(random, 3) + "</li></ol>";
      break;
    default:
      html += Words(random, 8) + " &lt;" + Words(random, 1) + "&gt; &nbsp;<u>" + Words(random, 2) +
              "</u>";
      break;
  }
  if (withComments) html += "<!-- end -->";
  html += "</font></div><br>\r\n";
}

QString ChatHtml(int bytes, bool withComments) {
  QString html;
  html.reserve(bytes + 1024);
  html += "<html><head><title>chat</title></head><body>\r\n";
  Random random(7);
  for (int i = 0; html.size() < bytes; ++i) AppendMessage(html, random, i, withComments);
  html += "</body></html>";
  return html;
}

QString Repeat(const QString& unit, int bytes) {
  QString text;
  text.reserve(bytes + unit.size());
  while (text.size() < bytes) text += unit;
  return text;
}

constexpr int kChatBytes = 2 * 1024 * 1024;
constexpr int kShapeBytes = 1024 * 1024;

enum Shape {
  kChat,
  kComments,
  kLongAttributeList,
  kLongEntityText,
  kDeepNesting,
  kUnknownTags,
  kQuoteRuns
};

const char* ShapeName(int shape) {
  switch (shape) {
    case kChat:
      return "chat";
    case kComments:
      return "comments";
    case kLongAttributeList:
      return "attributes";
    case kLongEntityText:
      return "entities";
    case kDeepNesting:
      return "nesting";
    case kUnknownTags:
      return "unknown_tags";
    default:
      return "quotes";
  }
}

QString MakeInput(int shape, int scale) {
  switch (shape) {
    case kChat:
      return ChatHtml(kChatBytes * scale, false);
    case kComments:
      return ChatHtml(kChatBytes * scale, true);
    case kLongAttributeList:
      // One tag whose unquoted value swallows every following piece.
      return "<img src=a.png " + Repeat("data-x=Value ", kShapeBytes * scale) + ">";
    case kLongEntityText:
      return Repeat("a &amp;lt; b&nbsp;", kShapeBytes * scale);
    case kDeepNesting:
      return Repeat("<ul><li><b><font size />", kShapeBytes * scale / 2) + "x" +
             Repeat("</font></b></li></ul>", kShapeBytes * scale / 2);
    case kUnknownTags:
      return Repeat("<x-unknown-tag a=\"1\">t", kShapeBytes * scale);
    default:
      // An attribute value of alternating quotes: the quote stack grows with the input.
      return "<img alt=" + Repeat("\"'", kShapeBytes * scale / 2) + ">";
  }
}

const QString& Input(int shape, int scale) {
  static std::map<std::pair<int, int>, QString> cache;
  auto it = cache.find({shape, scale});
  if (it == cache.end())
    it = cache.emplace(std::make_pair(shape, scale), MakeInput(shape, scale)).first;
  return it->second;
}

void BM_Baseline_QTextDocumentSetHtml(benchmark::State& state) {
  const QString& html = Input(kChat, 1);
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QTextDocument document;
    document.setHtml(html);
    benchmark::DoNotOptimize(document.characterCount());
  }
  timer.RecordBaseline("setHtml");
  state.SetBytesProcessed(state.iterations() * html.size());
}

// The floor: text runs and tags in one pass, a character at a time. A quote opens inside a tag
// and the same quote closes it. Counts what it finds so that the pass cannot be left out. Never
// inlined, so that a profile shows it as one function.
Q_NEVER_INLINE int64_t ScanFloor(const QString& html) {
  const QChar* data = html.constData();
  const int size = html.size();
  int64_t found = 0;
  int i = 0;
  while (i < size) {
    int begin = i;
    while (i < size && data[i] != QLatin1Char('<')) ++i;
    int end = i;
    while (begin < end && data[begin].isSpace()) ++begin;
    while (end > begin && data[end - 1].isSpace()) --end;
    found += end - begin;
    if (i == size) break;
    QChar quote;
    for (++i; i < size; ++i) {
      const QChar c = data[i];
      if (quote.isNull()) {
        if (c == QLatin1Char('>')) break;
        if (c == QLatin1Char('"') || c == QLatin1Char('\'')) quote = c;
      } else if (c == quote) {
        quote = QChar();
      }
    }
    ++found;
    ++i;
  }
  return found;
}

std::string FloorKey(int shape, int scale) {
  return std::string("floor_") + ShapeName(shape) + "_" + std::to_string(scale) + "x";
}

void BM_Floor(benchmark::State& state) {
  const int shape = int(state.range(0));
  const int scale = int(state.range(1));
  const QString& html = Input(shape, scale);
  bench::LoopTimer timer(state);
  for (auto _ : state) benchmark::DoNotOptimize(ScanFloor(html));
  timer.RecordBaseline(FloorKey(shape, scale));
  state.SetBytesProcessed(state.iterations() * html.size());
  state.SetLabel(ShapeName(shape));
}

void BM_Parse(benchmark::State& state) {
  const int shape = int(state.range(0));
  const int scale = int(state.range(1));
  const QString& html = Input(shape, scale);
  CountingSink sink;
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    CHTMLParser parser(html, &sink);
    benchmark::DoNotOptimize(sink.calls);
  }
  const std::string key = std::string(ShapeName(shape)) + "_1x";
  // Named plainly rather than after its per-input baseline key, so that every row shows x_floor.
  const auto floor = bench::Baselines().find(FloorKey(shape, scale));
  if (floor != bench::Baselines().end() && floor->second > 0)
    state.counters["x_floor"] = timer.NanosecondsPerIteration() / floor->second;
  timer.ReportRatio("setHtml", double(html.size()) / double(Input(kChat, 1).size()));
  if (scale == 1) {
    timer.RecordBaseline(key);
  } else {
    timer.ReportRatio(key, double(html.size()) / double(Input(shape, 1).size()));
  }
  state.SetBytesProcessed(state.iterations() * html.size());
  state.counters["calls"] = double(sink.calls) / double(state.iterations());
  state.SetLabel(ShapeName(shape));
}

// Each floor runs right before its conversion, so that both see the same load on a shared machine.
void RegisterFloorsAndConversions() {
  for (int shape : {kChat, kComments, kLongAttributeList, kLongEntityText, kDeepNesting,
                    kUnknownTags, kQuoteRuns}) {
    for (int scale : {1, 4, 16}) {
      for (auto [name, function] :
           {std::make_pair("BM_Floor", &BM_Floor), std::make_pair("BM_Parse", &BM_Parse)}) {
        benchmark::RegisterBenchmark(name, function)
            ->Args({shape, scale})
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
      }
    }
  }
}

}  // namespace

BENCHMARK(BM_Baseline_QTextDocumentSetHtml)->Unit(benchmark::kMillisecond)->UseRealTime();

// QTextDocument lays out with real fonts.
int main(int argc, char** argv) {
  RegisterFloorsAndConversions();
  return bench::RunWithApplication(argc, argv);
}
