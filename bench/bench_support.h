#pragma once

// Ratios against a baseline measured in the same run.
//
//   static void BM_Baseline(benchmark::State& state) {
//     bench::LoopTimer timer(state);
//     for (auto _ : state) { ... }
//     timer.RecordBaseline("snprintf");
//   }
//   static void BM_Subject(benchmark::State& state) {
//     bench::LoopTimer timer(state);
//     for (auto _ : state) { ... }
//     timer.ReportRatio("snprintf");   // adds the counter "x_snprintf" = subject / baseline
//   }
//   BENCHMARK(BM_Baseline); BENCHMARK(BM_Subject);   // baseline registered first
//
// The timer measures wall time per iteration of the loop it brackets, the same quantity
// Google Benchmark reports as real time.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QEvent>
#include <chrono>
#include <map>
#include <string>

namespace bench {

inline std::map<std::string, double>& Baselines() {
  static std::map<std::string, double> baselines;
  return baselines;
}

class LoopTimer {
 public:
  explicit LoopTimer(benchmark::State& state)
      : state_(state), start_(std::chrono::steady_clock::now()) {}

  double NanosecondsPerIteration() const {
    const auto elapsed = std::chrono::steady_clock::now() - start_;
    const double iterations = state_.iterations() > 0 ? double(state_.iterations()) : 1.0;
    return std::chrono::duration<double, std::nano>(elapsed).count() / iterations;
  }

  void RecordBaseline(const std::string& key) { Baselines()[key] = NanosecondsPerIteration(); }

  // Per-item ratio: `items_per_iteration` lets a subject that does N units of work per
  // iteration compare against a baseline that does M (pass N / M).
  void ReportRatio(const std::string& key, double items_per_iteration = 1.0) {
    const auto it = Baselines().find(key);
    if (it == Baselines().end() || it->second <= 0) return;
    state_.counters["x_" + key] = NanosecondsPerIteration() / items_per_iteration / it->second;
  }

 private:
  benchmark::State& state_;
  std::chrono::steady_clock::time_point start_;
};

// Sends one event of `type` to `target` per iteration, as a client's delivery would.
inline void SendLoop(benchmark::State& state, QObject* target, QEvent::Type type) {
  QEvent event(type);
  for (auto _ : state) {
    QCoreApplication::sendEvent(target, &event);
    benchmark::ClobberMemory();
  }
}

// main() of a benchmark program that needs a QApplication: runs the registered benchmarks on
// the offscreen platform (unless QT_QPA_PLATFORM names another). `prepare` runs once the
// application exists; when it returns false nothing is measured and the program fails.
inline int RunWithApplication(int argc, char** argv, bool (*prepare)() = nullptr) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  if (prepare && !prepare()) return 1;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace bench
