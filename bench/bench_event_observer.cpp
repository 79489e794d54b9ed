// Cost of an object event observer on every event its target receives, against the same
// delivery with no filter and with a hand-written QObject event filter doing the same work.
#include <QEvent>
#include <memory>

#include "bench_support.h"
#include "qt_util/event_handler/event_observer.h"

namespace {

const QEvent::Type kProbe = static_cast<QEvent::Type>(QEvent::registerEventType());

// What a client would write by hand: a filter object that looks at one event type.
class PlainFilter : public QObject {
 public:
  int seen = 0;
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == kProbe) ++seen;
    return QObject::eventFilter(watched, event);
  }
};

void BM_Send_NoFilter(benchmark::State& state) {
  QObject target;
  bench::LoopTimer timer(state);
  bench::SendLoop(state, &target, kProbe);
  timer.RecordBaseline("no_filter");
}

void BM_Send_PlainFilter(benchmark::State& state) {
  QObject target;
  PlainFilter filter;
  target.installEventFilter(&filter);
  bench::LoopTimer timer(state);
  bench::SendLoop(state, &target, kProbe);
  timer.RecordBaseline("plain_filter");
  benchmark::DoNotOptimize(filter.seen);
}

void BM_Send_EventObserver(benchmark::State& state) {
  auto target = std::make_unique<QObject>();
  QObject listener;
  int seen = 0;
  QtEventObserver::ListenEvent(target.get(), &listener, [&seen](QObject*, QEvent* event) {
    if (event->type() == kProbe) ++seen;
    return false;
  });
  bench::LoopTimer timer(state);
  bench::SendLoop(state, target.get(), kProbe);
  timer.ReportRatio("no_filter");
  timer.ReportRatio("plain_filter");
  benchmark::DoNotOptimize(seen);
  target.reset();  // ends the listening before `seen` goes away
}

BENCHMARK(BM_Send_NoFilter);
BENCHMARK(BM_Send_PlainFilter);
BENCHMARK(BM_Send_EventObserver);

}  // namespace

int main(int argc, char** argv) {
  return bench::RunWithApplication(argc, argv);
}
