// The event path of the whole application: what the library adds to every event Qt delivers,
// and what deferred work costs next to Qt's own way of deferring it. Each section registers its
// benchmarks with their baselines first; main at the end is shared by all sections.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QEvent>
#include <QMessageLogContext>
#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <QString>
#include <memory>
#include <set>
#include <vector>

#include "base/log/log.h"
#include "bench_support.h"
#include "qt_util/custom_event_util.h"
#include "qt_util/event_handler/event_hooker.h"
#include "qt_util/qt_log_hooker.h"

namespace {

// ---------------------------------------------------------------------------------------------
// Shared set-up
// ---------------------------------------------------------------------------------------------

// Makes `callback` (or nothing) the only notify hook of the library's while it lives, so every
// case measures the hook it names whatever ran before it. The dispatcher, installed by main,
// comes back afterwards.
class NotifyHookScope {
 public:
  explicit NotifyHookScope(qInternalCallback callback) : callback_(callback) {
    dispatcher_was_hooked_ = QInternal::unregisterCallback(QInternal::EventNotifyCallback,
                                                           &CustomEventUtils::CustomEventHandler);
    if (callback_) QInternal::registerCallback(QInternal::EventNotifyCallback, callback_);
  }
  ~NotifyHookScope() {
    if (callback_) QInternal::unregisterCallback(QInternal::EventNotifyCallback, callback_);
    if (dispatcher_was_hooked_) {
      QInternal::registerCallback(QInternal::EventNotifyCallback,
                                  &CustomEventUtils::CustomEventHandler);
    }
  }
  NotifyHookScope(const NotifyHookScope&) = delete;
  NotifyHookScope& operator=(const NotifyHookScope&) = delete;

 private:
  qInternalCallback callback_;
  bool dispatcher_was_hooked_ = false;
};

// ---------------------------------------------------------------------------------------------
// Event-notify path: a foreign event sent to a plain object
// ---------------------------------------------------------------------------------------------

// What a hand-written hook doing the dispatcher's three comparisons costs: the floor for the
// library's own hook.
bool MinimalNotifyHook(void** data) {
  const int type = static_cast<QEvent*>(data[1])->type();
  if (type == CustomDeleteEvent::EventType || type == ActivateWidgetEvent::EventType ||
      type == DelayActionEvent::EventType) {
    *static_cast<bool*>(data[2]) = true;
    return true;
  }
  return false;
}

void SendForeignEvents(benchmark::State& state) {
  QObject receiver;
  QEvent event(QEvent::User);
  for (auto _ : state) {
    bool handled = QCoreApplication::sendEvent(&receiver, &event);
    benchmark::DoNotOptimize(handled);
  }
}

void BM_SendEvent_NoHook(benchmark::State& state) {
  NotifyHookScope hooks(nullptr);
  bench::LoopTimer timer(state);
  SendForeignEvents(state);
  timer.RecordBaseline("no_hook");
}

void BM_SendEvent_MinimalHook(benchmark::State& state) {
  NotifyHookScope hooks(&MinimalNotifyHook);
  bench::LoopTimer timer(state);
  SendForeignEvents(state);
  timer.RecordBaseline("minimal_hook");
  timer.ReportRatio("no_hook");
}

void BM_SendEvent_Dispatcher(benchmark::State& state) {
  NotifyHookScope hooks(&CustomEventUtils::CustomEventHandler);
  bench::LoopTimer timer(state);
  SendForeignEvents(state);
  timer.ReportRatio("minimal_hook");
  timer.ReportRatio("no_hook");
}

BENCHMARK(BM_SendEvent_NoHook);
BENCHMARK(BM_SendEvent_MinimalHook);
BENCHMARK(BM_SendEvent_Dispatcher);

// ---------------------------------------------------------------------------------------------
// Posted work: deferred actions and deletions, 100,000 per iteration, posted then delivered
// ---------------------------------------------------------------------------------------------

constexpr int kPostedBatch = 100000;

void BM_InvokeMethodQueued(benchmark::State& state) {
  QObject context;
  int runs = 0;
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    for (int i = 0; i < kPostedBatch; ++i) {
      QMetaObject::invokeMethod(
          &context, [&runs] { ++runs; }, Qt::QueuedConnection);
    }
    QCoreApplication::sendPostedEvents(nullptr, 0);
  }
  timer.RecordBaseline("invokeMethod");
  state.SetItemsProcessed(state.iterations() * kPostedBatch);
  if (runs != kPostedBatch * int(state.iterations())) state.SkipWithError("actions lost");
}

void BM_DelayAction(benchmark::State& state) {
  QObject context;
  int runs = 0;
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    for (int i = 0; i < kPostedBatch; ++i)
      CustomEventUtils::DelayAction(&context, [&runs] { ++runs; });
    QCoreApplication::sendPostedEvents(nullptr, 0);
  }
  timer.ReportRatio("invokeMethod");
  state.SetItemsProcessed(state.iterations() * kPostedBatch);
  if (runs != kPostedBatch * int(state.iterations())) state.SkipWithError("actions lost");
}

// Both deletion cases create their objects inside the timed loop, the same way, so the ratio
// compares the whole life of a deferred deletion.
std::vector<QObject*> MakeObjects() {
  std::vector<QObject*> objects(kPostedBatch);
  for (auto& object : objects) object = new QObject;
  return objects;
}

void BM_DeleteLater(benchmark::State& state) {
  bench::LoopTimer timer(state);
  QPointer<QObject> last;  // proves the deletions are delivered here, at almost no cost
  for (auto _ : state) {
    const std::vector<QObject*> objects = MakeObjects();
    last = objects.back();
    for (QObject* object : objects) object->deleteLater();
    // Outside a running loop Qt delivers deferred deletions only when asked for them by type.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  timer.RecordBaseline("deleteLater");
  state.SetItemsProcessed(state.iterations() * kPostedBatch);
  if (last) state.SkipWithError("not deleted");
}

// What a deletion that must never happen twice costs at the least: Qt's deleteLater plus the
// pending entry and the destroyed connection that take it out again, written by hand. The
// library's deletion does this much work too, so this is its floor, not deleteLater alone.
void BM_DeleteLaterWithEntryAndConnection(benchmark::State& state) {
  std::set<QObject*> pending;
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    for (QObject* object : MakeObjects()) {
      pending.insert(object);
      QObject::connect(object, &QObject::destroyed, qApp,
                       [&pending, object] { pending.erase(object); });
      object->deleteLater();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  timer.RecordBaseline("deleteLater_entry_connection");
  timer.ReportRatio("deleteLater");
  state.SetItemsProcessed(state.iterations() * kPostedBatch);
  if (!pending.empty()) state.SkipWithError("not deleted");
}

void BM_DeleteObjectLater(benchmark::State& state) {
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    for (QObject* object : MakeObjects()) CustomEventUtils::DeleteObjectLater(object);
    QCoreApplication::sendPostedEvents(nullptr, 0);
  }
  timer.ReportRatio("deleteLater");
  timer.ReportRatio("deleteLater_entry_connection");
  state.SetItemsProcessed(state.iterations() * kPostedBatch);
  if (!CustomEventUtils::PendingDeleteListInstance()->empty()) state.SkipWithError("not deleted");
}

BENCHMARK(BM_InvokeMethodQueued)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DelayAction)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DeleteLater)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DeleteLaterWithEntryAndConnection)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DeleteObjectLater)->Unit(benchmark::kMillisecond);

}  // namespace

// =============================================================================================
// Event hooks: the application-wide event filter and the Qt message hook
// =============================================================================================

namespace {

// ---------------------------------------------------------------------------------------------
// Application event filter: a foreign event sent to a plain object, past a filter on the
// application object that switches on the hooker's four event types
// ---------------------------------------------------------------------------------------------

// The hand-written filter a client would otherwise install: one switch on the type, the four
// types counted so that the switch cannot fold away.
class FourTypeFilter : public QObject {
 public:
  int hits = 0;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    switch (event->type()) {
      case QEvent::MouseButtonRelease:
      case QEvent::MouseButtonPress:
      case QEvent::Show:
      case QEvent::ContextMenu:
        ++hits;
        return false;
      default:
        return QObject::eventFilter(watched, event);
    }
  }
};

void BM_AppFilter_FourTypeSwitch(benchmark::State& state) {
  NotifyHookScope hooks(nullptr);  // the dispatcher's cost is not what is compared here
  FourTypeFilter filter;
  qApp->installEventFilter(&filter);
  bench::LoopTimer timer(state);
  SendForeignEvents(state);
  timer.RecordBaseline("four_type_filter");
  timer.ReportRatio("no_hook");
  qApp->removeEventFilter(&filter);
}

// The global hooker cannot be removed once installed, so this case runs after every case that
// must not see it (cases run in registration order, and this section is registered last).
void BM_AppFilter_GlobalEventHooker(benchmark::State& state) {
  NotifyHookScope hooks(nullptr);
  EventHooker::InitGlobalEventHooker();
  bench::LoopTimer timer(state);
  SendForeignEvents(state);
  timer.ReportRatio("four_type_filter");
  timer.ReportRatio("no_hook");
}

BENCHMARK(BM_AppFilter_FourTypeSwitch);
BENCHMARK(BM_AppFilter_GlobalEventHooker);

// ---------------------------------------------------------------------------------------------
// Qt message hook: one warning with a file context, dropped by the log level or printed into a
// sink that discards it
// ---------------------------------------------------------------------------------------------

// Sets a log level and a sink that discards records while it lives.
class DroppingLog {
 public:
  explicit DroppingLog(int level) : previous_level_(base::log::GetLogLevel()) {
    base::log::SetLogLevel(level);
    previous_sink_ = base::log::SetLogSink([this](const base::log::LogRecord&) { ++records; });
  }
  ~DroppingLog() {
    base::log::SetLogSink(std::move(previous_sink_));
    base::log::SetLogLevel(previous_level_);
  }
  DroppingLog(const DroppingLog&) = delete;
  DroppingLog& operator=(const DroppingLog&) = delete;

  long records = 0;

 private:
  int previous_level_;
  base::log::LogSink previous_sink_;
};

void RelayWarnings(benchmark::State& state) {
  const QMessageLogContext context("src\\ui\\view.cc", 12, "void View::Load()", "default");
  const QString message = QStringLiteral("camera 2 not found");
  for (auto _ : state) QtLogHooker::HandleGlobalMessage(QtWarningMsg, context, message);
}

void BM_QtWarning_DroppedByLevel(benchmark::State& state) {
  DroppingLog log(3);  // warnings are level 4
  bench::LoopTimer timer(state);
  RelayWarnings(state);
  timer.RecordBaseline("warning_dropped");
  if (log.records != 0) state.SkipWithError("a dropped warning was printed");
}

void BM_QtWarning_PrintedToDroppingSink(benchmark::State& state) {
  DroppingLog log(4);
  bench::LoopTimer timer(state);
  RelayWarnings(state);
  timer.ReportRatio("warning_dropped");
  if (log.records != long(state.iterations())) state.SkipWithError("warnings lost");
}

BENCHMARK(BM_QtWarning_DroppedByLevel);
BENCHMARK(BM_QtWarning_PrintedToDroppingSink);

}  // namespace

// One offscreen application for every section, with the dispatcher installed as a client would
// install it.
int main(int argc, char** argv) {
  return bench::RunWithApplication(argc, argv,
                                   [] { return CustomEventUtils::InitCustomEventHandler(); });
}
