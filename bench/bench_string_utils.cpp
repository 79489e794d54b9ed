// QTStringUtils::HtmlEncode on chat text of 1, 4 and 16 MB (UTF-16 bytes), beside the stepwise
// replacement it replaced (ten whole-text QString::replace passes, kept in
// tests/support/stepwise_html_encode.h) on the same text in the same run.
//
// Counters: x_stepwise = time / the stepwise replacement's time at the same size (below 1 is
// faster); x_1x = time per byte / the 1 MB run's time per byte (1 means linear).
#include <benchmark/benchmark.h>

#include <QString>
#include <string>

#include "bench_support.h"
#include "qt_util/string_utils.h"
#include "support/stepwise_html_encode.h"

namespace {

// A chat line with every character the encoder rewrites, at about one in six characters.
QString ChatText(int megabytes) {
  const QString line = QStringLiteral(
      "Anna: the slides are \"final\" now & we're <almost> done,\r\nsee you at 10:30 > ok?\n");
  const int characters = megabytes * 1024 * 1024 / 2;
  QString text;
  text.reserve(characters + line.size());
  while (text.size() < characters) text += line;
  return text;
}

std::string SizeKey(int megabytes) {
  return std::to_string(megabytes);
}

// Encodes a fresh copy of the chat text of state.range(0) MB per iteration with `encode`, then
// hands the timer and the size to `report` for the ratios.
template <typename Encode, typename Report>
void MeasureEncoding(benchmark::State& state, Encode encode, Report report) {
  const int megabytes = int(state.range(0));
  const QString input = ChatText(megabytes);
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QString text = input;
    encode(text);
    benchmark::DoNotOptimize(text.constData());
  }
  report(timer, megabytes);
  state.SetBytesProcessed(state.iterations() * int64_t(input.size()) * 2);
}

void BM_Baseline_StepwiseReplace(benchmark::State& state) {
  MeasureEncoding(state, test_support::StepwiseHtmlEncode,
                  [](bench::LoopTimer& timer, int megabytes) {
                    timer.RecordBaseline("stepwise_" + SizeKey(megabytes));
                  });
}

void BM_HtmlEncode(benchmark::State& state) {
  MeasureEncoding(state, QTStringUtils::HtmlEncode, [](bench::LoopTimer& timer, int megabytes) {
    timer.ReportRatio("stepwise_" + SizeKey(megabytes));
    if (megabytes == 1) {
      timer.RecordBaseline("1x");
    } else {
      timer.ReportRatio("1x", megabytes);
    }
  });
}

}  // namespace

BENCHMARK(BM_Baseline_StepwiseReplace)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HtmlEncode)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
