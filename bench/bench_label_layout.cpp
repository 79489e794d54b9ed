// Line layout of a 2,000-character paragraph at 300 px with VxLabelStringUtil, beside Qt's own
// tools for the same job in the same run: a word-wrapping QTextLayout that collects its lines
// (the baseline for the full layouts) and QFontMetrics::elidedText (the baseline for a layout cut
// to two lines, whose last line is one such elision).
//
// Counters: x_textLayout = time / QTextLayout word-wrap time; x_elidedText = time / elidedText
// time (below 1 is faster). Fonts: DejaVu Sans at 14 px, as in the tests.
//
// The line rectangles cost a large multiple of one word-wrap by their nature: each line starts
// from a guess of one font size per character (about 21 characters here, where 40 fit) and grows
// a character at a time, shaping every prefix it tries afresh, about 20 measurements per line.
// A prefix cannot be measured as the previous one plus a character without changing results,
// since kerning and shaping depend on the neighbouring character.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QFontMetrics>
#include <QTextLayout>
#include <vector>

#include "bench_support.h"
#include "qt_util/label_string_util.h"

namespace {

constexpr int kWidth = 300;
constexpr int kLength = 2000;

QFont BenchFont() {
  QFont font(QStringLiteral("DejaVu Sans"));
  font.setPixelSize(14);
  return font;
}

const QString& Paragraph() {
  static const QString paragraph = [] {
    const QString sentence = QStringLiteral(
        "The host has started the meeting; check that your microphone and camera work, then "
        "join from this window or from the link in your invitation. ");
    QString text;
    while (text.size() < kLength) text += sentence;
    return text.left(kLength);
  }();
  return paragraph;
}

void BM_Baseline_TextLayoutWordWrap(benchmark::State& state) {
  const QFont font = BenchFont();
  const QString& text = Paragraph();
  QTextOption option;
  option.setWrapMode(QTextOption::WordWrap);
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QStringList lines;
    QTextLayout layout(text, font);
    layout.setTextOption(option);
    layout.beginLayout();
    qreal y = 0;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
      line.setLineWidth(kWidth);
      line.setPosition(QPointF(0, y));
      y += line.height();
      lines.append(text.mid(line.textStart(), line.textLength()));
    }
    layout.endLayout();
    benchmark::DoNotOptimize(lines);
  }
  timer.RecordBaseline("textLayout");
}

void BM_Baseline_ElidedText(benchmark::State& state) {
  const QFontMetrics fm(BenchFont());
  const QString& text = Paragraph();
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QString elided = fm.elidedText(text, Qt::ElideRight, kWidth);
    benchmark::DoNotOptimize(elided);
  }
  timer.RecordBaseline("elidedText");
}

// state.range(0): the line limit (0 for none).
void BM_CalculateMultiLineStringRects(benchmark::State& state) {
  const QFont font = BenchFont();
  const QFontMetrics fm(font);
  const QString& text = Paragraph();
  const int max_lines = int(state.range(0));
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QStringList lines;
    std::vector<QRect> rects;
    bool elided = false;
    VxLabelStringUtil::CalculateMultiLineStringRects(QPoint(0, 0), 0, 2, kWidth, fm.height(), font,
                                                     fm, text, lines, rects, elided, max_lines);
    benchmark::DoNotOptimize(lines);
    benchmark::DoNotOptimize(elided);
  }
  timer.ReportRatio("textLayout");
  if (max_lines > 0) timer.ReportRatio("elidedText");
}

void BM_SplitMultiLineStrings(benchmark::State& state) {
  const QFont font = BenchFont();
  const QFontMetrics fm(font);
  const QString& text = Paragraph();
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QStringList lines;
    VxLabelStringUtil::SplitMultiLineStrings(kWidth, font, fm, text, lines, 0);
    benchmark::DoNotOptimize(lines);
  }
  timer.ReportRatio("textLayout");
}

void BM_SplitLineByWholeWord(benchmark::State& state) {
  const QFont font = BenchFont();
  const QString& text = Paragraph();
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QStringList lines;
    VxLabelStringUtil::SplitLineByWholeWord(font, text, kWidth, lines);
    benchmark::DoNotOptimize(lines);
  }
  timer.ReportRatio("textLayout");
}

}  // namespace

BENCHMARK(BM_Baseline_TextLayoutWordWrap)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_Baseline_ElidedText)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_CalculateMultiLineStringRects)
    ->ArgName("maxLines")
    ->Arg(0)
    ->Arg(2)
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime();
BENCHMARK(BM_SplitMultiLineStrings)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_SplitLineByWholeWord)->Unit(benchmark::kMicrosecond)->UseRealTime();

// Layout needs real fonts.
int main(int argc, char** argv) {
  return bench::RunWithApplication(argc, argv);
}
