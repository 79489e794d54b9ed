// Cost of a log record: disabled, enabled into a sink that drops it, and enabled with a
// message longer than the buffer, each beside its natural baseline.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "base/common/include/logger.h"
#include "bench_support.h"

namespace {

const std::string kName = "meeting-panel";
const std::string kLong(2000, 'x');

void DroppingSink() {
  base::log::SetLogSink(
      [](const base::log::LogRecord& record) { benchmark::DoNotOptimize(record.text.data()); });
}

void BM_Baseline_GetLogLevel(benchmark::State& state) {
  base::log::SetLogLevel(base::log::kLevelWarning);
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    int level = base::log::GetLogLevel();
    benchmark::DoNotOptimize(level);
  }
  timer.RecordBaseline("GetLogLevel");
}

void BM_DisabledRecord(benchmark::State& state) {
  base::log::SetLogLevel(base::log::kLevelWarning);
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QTU_LOG(base::log::kLevelInfo) << "widget " << kName << " shown at " << 42;
    benchmark::ClobberMemory();
  }
  timer.ReportRatio("GetLogLevel");
}

void BM_Baseline_Snprintf(benchmark::State& state) {
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    char buffer[1025];
    int n = std::snprintf(buffer, sizeof buffer, "widget %s shown at %d", kName.c_str(), 42);
    benchmark::DoNotOptimize(buffer);
    benchmark::DoNotOptimize(n);
  }
  timer.RecordBaseline("snprintf");
}

void BM_EnabledRecord_DroppingSink(benchmark::State& state) {
  base::log::SetLogLevel(base::log::kLevelInfo);
  DroppingSink();
  bench::LoopTimer timer(state);
  for (auto _ : state) QTU_LOG(base::log::kLevelInfo) << "widget " << kName << " shown at " << 42;
  timer.ReportRatio("snprintf");
  base::log::SetLogSink({});
}

void BM_Baseline_SnprintfLong(benchmark::State& state) {
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    char buffer[1025];
    int n = std::snprintf(buffer, sizeof buffer, "long: %s", kLong.c_str());
    benchmark::DoNotOptimize(buffer);
    benchmark::DoNotOptimize(n);
  }
  timer.RecordBaseline("snprintf_long");
}

void BM_EnabledRecord_Long_Truncated(benchmark::State& state) {
  base::log::SetLogLevel(base::log::kLevelInfo);
  DroppingSink();
  bench::LoopTimer timer(state);
  for (auto _ : state) QTU_LOG(base::log::kLevelInfo) << "long: " << kLong;
  timer.ReportRatio("snprintf_long");
  base::log::SetLogSink({});
}

}  // namespace

BENCHMARK(BM_Baseline_GetLogLevel);
BENCHMARK(BM_DisabledRecord);
BENCHMARK(BM_Baseline_Snprintf);
BENCHMARK(BM_EnabledRecord_DroppingSink);
BENCHMARK(BM_Baseline_SnprintfLong);
BENCHMARK(BM_EnabledRecord_Long_Truncated);

BENCHMARK_MAIN();
