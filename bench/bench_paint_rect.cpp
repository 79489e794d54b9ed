// What the paint-rect helpers and the UI monitor helper cost the rest of the process: both
// filter the application object, so every event of every object passes through them. Measured
// against the same delivery with no helper, in the same run; and the cost of the recomputations
// a move of a meeting window with 25 bound tiles sets off.
#include <QEvent>
#include <QWidget>
#include <memory>
#include <vector>

#include "base/singleton/scope_singleton.h"
#include "bench_support.h"
#include "qt_util/paint_rect_helper.h"
#include "qt_util/qt_ui_monitor_helper.h"

namespace {

const QEvent::Type kForeign = static_cast<QEvent::Type>(QEvent::registerEventType());

// A shown meeting window with `count` tiles, each bound to its own helper with the default
// rules; the callbacks count their reports.
class Meeting {
 public:
  explicit Meeting(int count) {
    window_.setGeometry(40, 40, 1280, 720);
    auto* grid = new QWidget(&window_);
    grid->setGeometry(0, 0, 1280, 720);
    for (int i = 0; i < count; ++i) {
      auto* tile = new QWidget(grid);
      tile->setGeometry(256 * (i % 5), 144 * (i / 5), 250, 140);
      helpers_.push_back(std::make_unique<QTPaintRectHelper>());
      helpers_.back()->BindWidget(
          tile, [this](QWidget*, bool, QRect) { ++reports; },
          QTPaintRectHelper::BindType(QTPaintRectHelper::CheckParentVisible |
                                      QTPaintRectHelper::CheckTopWindowState));
    }
    window_.show();
    QCoreApplication::processEvents();
  }

  QWidget& window() { return window_; }
  int reports = 0;

 private:
  QWidget window_;
  std::vector<std::unique_ptr<QTPaintRectHelper>> helpers_;
};

void BM_ForeignEvent_NoHelper(benchmark::State& state) {
  QObject unrelated;
  bench::LoopTimer timer(state);
  bench::SendLoop(state, &unrelated, kForeign);
  timer.RecordBaseline("no_helper");
}

// What Qt itself charges for application filters: 25 filters that pass everything on.
class PassingFilter : public QObject {
 public:
  bool eventFilter(QObject* watched, QEvent* event) override {
    return QObject::eventFilter(watched, event);
  }
};

void BM_ForeignEvent_25PassingAppFilters(benchmark::State& state) {
  std::vector<std::unique_ptr<PassingFilter>> filters;
  for (int i = 0; i < 25; ++i) {
    filters.push_back(std::make_unique<PassingFilter>());
    QCoreApplication::instance()->installEventFilter(filters.back().get());
  }
  QObject unrelated;
  bench::LoopTimer timer(state);
  bench::SendLoop(state, &unrelated, kForeign);
  timer.ReportRatio("no_helper");
  timer.RecordBaseline("passing_filters_25");
}

// A foreign event of a type no helper acts on, with 1 or 25 helpers bound.
void BM_ForeignEvent_PaintRectHelpers(benchmark::State& state) {
  const int count = int(state.range(0));
  Meeting meeting(count);
  QObject unrelated;
  bench::LoopTimer timer(state);
  bench::SendLoop(state, &unrelated, kForeign);
  timer.ReportRatio("no_helper");
  if (count == 25) timer.ReportRatio("passing_filters_25");
  timer.RecordBaseline("helpers_" + std::to_string(count));
}

// A move of an unrelated object: a type the helpers act on for what they watch, so each one
// looks the object up in its watched list (three entries here) before letting it pass.
void BM_ForeignMove_25PaintRectHelpers(benchmark::State& state) {
  Meeting meeting(25);
  QObject unrelated;
  bench::LoopTimer timer(state);
  bench::SendLoop(state, &unrelated, QEvent::Move);
  timer.ReportRatio("no_helper");
  timer.ReportRatio("helpers_25");
}

void BM_ForeignEvent_MonitorHelper(benchmark::State& state) {
  QWidget toolbar;
  QTUIMonitorHelper::SharedInstance()->AddMonitorRectWidget(&toolbar);
  QObject unrelated;
  bench::LoopTimer timer(state);
  bench::SendLoop(state, &unrelated, kForeign);
  timer.ReportRatio("no_helper");
  base::EndSingletonScope();  // the helper would otherwise filter the benchmarks after this one
}

// One iteration moves the meeting window to the other of two positions and lets the platform's
// answer through; every tile's helper recomputes and reports a new rectangle. The baseline is
// the same move with no helper bound.
void MoveLoop(benchmark::State& state, Meeting& meeting) {
  const QPoint positions[] = {QPoint(40, 40), QPoint(41, 40)};
  int next = 1;
  for (auto _ : state) {
    meeting.window().move(positions[next]);
    QCoreApplication::processEvents();
    next = 1 - next;
  }
}

void BM_WindowMove_NoHelper(benchmark::State& state) {
  Meeting meeting(0);
  bench::LoopTimer timer(state);
  MoveLoop(state, meeting);
  timer.RecordBaseline("move_no_helper");
}

void BM_WindowMove_25Tiles(benchmark::State& state) {
  Meeting meeting(25);
  const int reports_before = meeting.reports;
  bench::LoopTimer timer(state);
  MoveLoop(state, meeting);
  timer.ReportRatio("move_no_helper");
  // Each move must have been seen by every tile, or the figure measures nothing.
  if (meeting.reports - reports_before < 25 * int(state.iterations())) {
    state.SkipWithError("a move was not reported by every tile");
  }
}

BENCHMARK(BM_ForeignEvent_NoHelper);
BENCHMARK(BM_ForeignEvent_25PassingAppFilters);
BENCHMARK(BM_ForeignEvent_PaintRectHelpers)->Arg(1)->Arg(25);
BENCHMARK(BM_ForeignMove_25PaintRectHelpers);
BENCHMARK(BM_ForeignEvent_MonitorHelper);
BENCHMARK(BM_WindowMove_NoHelper);
BENCHMARK(BM_WindowMove_25Tiles);

}  // namespace

int main(int argc, char** argv) {
  return bench::RunWithApplication(argc, argv);
}
