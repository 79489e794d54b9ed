// The deferred-work dispatcher. The first tests run before the dispatcher is installed (the
// installation cannot be undone), so the order of the slots matters.
#include <dlfcn.h>

#include <QApplication>
#include <QPointer>
#include <QThread>
#include <QWidget>
#include <QtTest>
#include <functional>
#include <vector>

#include "base/variant/variant.h"
#include "qt_util/custom_event_util.h"
#include "support/log_capture.h"

using base::variant::Variant;

namespace {

const char kNotInit[] = "custom event handler didn't init";

// Fault injection for the one failure Qt never produces on its own: a refused registration.
bool g_refuse_registration = false;
int g_registration_requests = 0;

}  // namespace

// This executable's definition of Qt's registration function takes the place of Qt's own for
// every caller in the process, the library included (the dynamic linker looks in the executable
// first). It counts the requests, refuses them while asked to, and otherwise hands them to Qt.
bool QInternal::registerCallback(QInternal::Callback cb, qInternalCallback callback) {
  ++g_registration_requests;
  if (g_refuse_registration) return false;
  using Register = bool (*)(QInternal::Callback, qInternalCallback);
  static const auto qt_register = reinterpret_cast<Register>(
      dlsym(RTLD_NEXT, "_ZN9QInternal16registerCallbackENS_8CallbackEPFbPPvE"));
  return qt_register && qt_register(cb, callback);
}

namespace {

struct Delivery {
  QObject* receiver;
  int type;
};

// Everything Qt hands to the notify hook, seen by a callback registered ahead of the
// dispatcher's: it observes and never handles.
std::vector<Delivery> g_hook_seen;

bool RecordingHook(void** data) {
  g_hook_seen.push_back({static_cast<QObject*>(data[0]), static_cast<QEvent*>(data[1])->type()});
  return false;
}

int Count(const std::vector<Delivery>& list, QObject* receiver, int type) {
  int n = 0;
  for (const Delivery& d : list) n += d.receiver == receiver && d.type == type;
  return n;
}

int HookCount(QObject* receiver, int type) {
  return Count(g_hook_seen, receiver, type);
}

// An application whose notify override records what reaches it.
class RecordingApplication : public QApplication {
 public:
  using QApplication::QApplication;
  bool notify(QObject* receiver, QEvent* event) override {
    if (event->type() >= QEvent::User) notified.push_back({receiver, event->type()});
    return QApplication::notify(receiver, event);
  }
  std::vector<Delivery> notified;
};

RecordingApplication* App() {
  return static_cast<RecordingApplication*>(qApp);
}

// An application-wide event filter that records the custom-range events passing it while it
// lives; it also starts a fresh record of the notify override.
class RecordingFilter : public QObject {
 public:
  RecordingFilter() {
    qApp->installEventFilter(this);
    App()->notified.clear();
  }
  ~RecordingFilter() override { qApp->removeEventFilter(this); }
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() >= QEvent::User) seen.push_back({watched, event->type()});
    return false;
  }
  std::vector<Delivery> seen;
};

// Records what its own event() receives and tells when it dies.
class RecordingObject : public QObject {
 public:
  explicit RecordingObject(QObject* parent = nullptr) : QObject(parent) {}
  bool event(QEvent* event) override {
    types.append(event->type());
    if (event->type() == CompressCustomEvent::EventType) {
      auto* compress = static_cast<CompressCustomEvent*>(event);
      compress_params.push_back(compress->params ? *compress->params : Variant());
    }
    return QObject::event(event);
  }
  QList<int> types;
  std::vector<Variant> compress_params;
};

// Answers every event with a chosen result.
class AnsweringObject : public QObject {
 public:
  bool event(QEvent*) override { return answer; }
  bool answer = false;
};

void Drain() {
  // Twice: a handler may post follow-up work.
  QCoreApplication::sendPostedEvents();
  QCoreApplication::processEvents();
}

}  // namespace

class tst_CustomEventDispatcher : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase() {
    QVERIFY(QInternal::registerCallback(QInternal::EventNotifyCallback, &RecordingHook));
  }
  void cleanupTestCase() {
    QInternal::unregisterCallback(QInternal::EventNotifyCallback, &RecordingHook);
  }
  void init() { g_hook_seen.clear(); }

  // ---- before InitCustomEventHandler ----

  void beforeInit_deleteObjectLater_logsAndObjectSurvives() {
    LogCapture capture(6);
    QPointer<QObject> object = new QObject;
    CustomEventUtils::DeleteObjectLater(object);
    QCOMPARE(capture.Count(1, kNotInit), 1);
    QCOMPARE(capture.Size(), size_t(1));
    Drain();
    QVERIFY(object);
    QVERIFY(CustomEventUtils::PendingDeleteListInstance()->empty());
    QCOMPARE(HookCount(object, CustomDeleteEvent::EventType), 0);
    delete object;
  }

  void beforeInit_activateWidgetLater_logsAndPostsNothing() {
    LogCapture capture(6);
    QWidget widget;
    CustomEventUtils::ActivateWidgetLater(&widget);
    QCOMPARE(capture.Texts(), std::vector<std::string>{kNotInit});
    QCOMPARE(capture.Records()[0].level, 1);
    Drain();
    QCOMPARE(HookCount(&widget, ActivateWidgetEvent::EventType), 0);
  }

  void beforeInit_delayAction_logsAndNeverRuns() {
    LogCapture capture(6);
    QObject context;
    int runs = 0;
    CustomEventUtils::DelayAction(&context, [&runs] { ++runs; });
    QCOMPARE(capture.Texts(), std::vector<std::string>{kNotInit});
    Drain();
    QCOMPARE(runs, 0);
    QCOMPARE(HookCount(&context, DelayActionEvent::EventType), 0);
  }

  void beforeInit_delayActionEmptyOrNoContext_logsNothing() {
    LogCapture capture(6);
    QObject context;
    int runs = 0;
    CustomEventUtils::DelayAction(&context, std::function<void()>());
    CustomEventUtils::DelayAction(nullptr, [&runs] { ++runs; });
    QCOMPARE(capture.Size(), size_t(0));
    Drain();
    QCOMPARE(runs, 0);
    QCOMPARE(HookCount(&context, DelayActionEvent::EventType), 0);
  }

  void nullArguments_beforeInit() {
    LogCapture capture(6);
    CustomEventUtils::DeleteObjectLater(nullptr);
    QCOMPARE(capture.Size(), size_t(0));
    // The null check comes before the installation check.
    CustomEventUtils::ActivateWidgetLater(nullptr);
    QCOMPARE(capture.Texts(), std::vector<std::string>{"widget is nullptr"});
    QCOMPARE(capture.Records()[0].level, 1);
  }

  // ---- installation ----

  void init_refusedByQt_logsFailureAndStaysUninstalled() {
    LogCapture capture(6);
    const int requests_before = g_registration_requests;
    g_refuse_registration = true;
    const bool first = CustomEventUtils::InitCustomEventHandler();
    const bool second = CustomEventUtils::InitCustomEventHandler();
    g_refuse_registration = false;
    // Each call asked Qt: had the library bypassed the seam, the asking would not show here.
    QCOMPARE(g_registration_requests - requests_before, 2);
    QVERIFY(!first);
    QVERIFY(!second);
    QCOMPARE(capture.Count(1, "custom event handler init failed"), 2);
    QCOMPARE(capture.Size(), size_t(2));

    // Still uninstalled: deferring behaves as it did before the attempt, and nothing of ours is
    // in Qt's list.
    beforeInit_delayAction_logsAndNeverRuns();
    if (QTest::currentTestFailed()) return;
    QVERIFY(!QInternal::unregisterCallback(QInternal::EventNotifyCallback,
                                           &CustomEventUtils::CustomEventHandler));
  }

  // Runs after a refused attempt: a refusal is not remembered, the next call tries again.
  void init_registersOnceAndReturnsTrue() {
    LogCapture capture(6);
    const int requests_before = g_registration_requests;
    QVERIFY(CustomEventUtils::InitCustomEventHandler());
    QVERIFY(CustomEventUtils::InitCustomEventHandler());
    QCOMPARE(g_registration_requests - requests_before, 1);
    QCOMPARE(capture.Size(), size_t(0));
    // Registered twice, the hook would run a delayed action twice.
    QObject context;
    int runs = 0;
    CustomEventUtils::DelayAction(&context, [&runs] { ++runs; });
    Drain();
    QCOMPARE(runs, 1);
    // Exactly one registration to take back: the second removal finds nothing.
    QVERIFY(QInternal::unregisterCallback(QInternal::EventNotifyCallback,
                                          &CustomEventUtils::CustomEventHandler));
    QVERIFY(!QInternal::unregisterCallback(QInternal::EventNotifyCallback,
                                           &CustomEventUtils::CustomEventHandler));
    QVERIFY(QInternal::registerCallback(QInternal::EventNotifyCallback,
                                        &CustomEventUtils::CustomEventHandler));
  }

  void pendingDeleteListInstance_isOneSet() {
    auto* set = CustomEventUtils::PendingDeleteListInstance();
    QVERIFY(set);
    QCOMPARE(CustomEventUtils::PendingDeleteListInstance(), set);
  }

  // ---- deleting later ----

  void deleteObjectLater_deletesFromTheLoop() {
    LogCapture capture(6);
    QPointer<QObject> object = new QObject;
    CustomEventUtils::DeleteObjectLater(object);
    QVERIFY(object);
    QCOMPARE(CustomEventUtils::PendingDeleteListInstance()->count(object), size_t(1));
    Drain();
    QVERIFY(!object);
    QVERIFY(CustomEventUtils::PendingDeleteListInstance()->empty());
    QCOMPARE(capture.Size(), size_t(0));
  }

  void deleteObjectLater_twice_deletesOnce() {
    int destroyed = 0;
    auto* object = new RecordingObject;
    connect(object, &QObject::destroyed, [&destroyed] { ++destroyed; });
    CustomEventUtils::DeleteObjectLater(object);
    CustomEventUtils::DeleteObjectLater(object);
    QCOMPARE(CustomEventUtils::PendingDeleteListInstance()->size(), size_t(1));
    Drain();
    QCOMPARE(destroyed, 1);
    QVERIFY(CustomEventUtils::PendingDeleteListInstance()->empty());
  }

  void deleteEvent_forObjectNotPending_isSwallowedWithoutEffect() {
    auto* object = new RecordingObject;
    CustomDeleteEvent stray;
    QVERIFY(QCoreApplication::sendEvent(object, &stray));
    QVERIFY(!object->types.contains(CustomDeleteEvent::EventType));
    QVERIFY(CustomEventUtils::PendingDeleteListInstance()->empty());
    delete object;  // still alive: the stray event deleted nothing
  }

  void deleteObjectLater_parentDeletesFirst_notDeletedAgain() {
    auto* parent = new QObject;
    auto* child = new RecordingObject(parent);
    int destroyed = 0;
    connect(child, &QObject::destroyed, [&destroyed] { ++destroyed; });
    CustomEventUtils::DeleteObjectLater(child);
    QCOMPARE(CustomEventUtils::PendingDeleteListInstance()->count(child), size_t(1));
    delete parent;
    // The entry leaves at once, not when the loop gets round to it.
    QVERIFY(CustomEventUtils::PendingDeleteListInstance()->empty());
    QCOMPARE(destroyed, 1);
    Drain();
    QCOMPARE(destroyed, 1);
  }

  void deleteObjectLater_parentAndChildrenAllPending_eachDeletedOnce() {
    // The parent's deletion comes first and takes its children, whose own deletions are on the
    // way too. Nothing may be deleted twice (ASan watches this one).
    auto* parent = new QObject;
    auto* first = new QObject(parent);
    auto* second = new QObject(parent);
    CustomEventUtils::DeleteObjectLater(parent);
    CustomEventUtils::DeleteObjectLater(first);
    CustomEventUtils::DeleteObjectLater(second);
    QCOMPARE(CustomEventUtils::PendingDeleteListInstance()->size(), size_t(3));
    QPointer<QObject> watch = parent;
    Drain();
    QVERIFY(!watch);
    QVERIFY(CustomEventUtils::PendingDeleteListInstance()->empty());
  }

  // ---- activating later ----

  void activateWidgetLater_activatesTheWindow() {
    QWidget first;
    QWidget second;
    first.setWindowTitle("first");
    second.setWindowTitle("second");
    first.show();
    second.show();
    QVERIFY(QTest::qWaitForWindowExposed(&first));
    QVERIFY(QTest::qWaitForWindowExposed(&second));
    second.activateWindow();
    QTRY_VERIFY(second.isActiveWindow());

    LogCapture capture(6);
    CustomEventUtils::ActivateWidgetLater(&first);
    QVERIFY(!first.isActiveWindow());  // deferred, not done on the spot
    QTRY_VERIFY(first.isActiveWindow());
    QCOMPARE(HookCount(&first, ActivateWidgetEvent::EventType), 1);
    QCOMPARE(capture.Size(), size_t(0));
  }

  void activateEvent_toNonWidget_logsAndIsDeliveredNormally() {
    LogCapture capture(6);
    RecordingObject receiver;
    QCoreApplication::postEvent(&receiver, new ActivateWidgetEvent);
    Drain();
    QCOMPARE(capture.Count(1, "receiver is not a qwidget"), 1);
    QCOMPARE(receiver.types.count(ActivateWidgetEvent::EventType), 1);
    QCOMPARE(Count(App()->notified, &receiver, ActivateWidgetEvent::EventType), 1);
  }

  // ---- delayed actions ----

  void delayAction_runsFromTheLoopNotOnTheSpot() {
    QObject context;
    int runs = 0;
    CustomEventUtils::DelayAction(&context, [&runs] { ++runs; });
    QCOMPARE(runs, 0);
    Drain();
    QCOMPARE(runs, 1);
    Drain();
    QCOMPARE(runs, 1);
  }

  void delayAction_keepsPostingOrder() {
    QObject context;
    QList<int> order;
    for (int i = 0; i < 3; ++i)
      CustomEventUtils::DelayAction(&context, [&order, i] { order << i; });
    Drain();
    QCOMPARE(order, (QList<int>{0, 1, 2}));
  }

  void delayAction_emptyAction_postsNothingLogsNothing() {
    LogCapture capture(6);
    QObject context;
    CustomEventUtils::DelayAction(&context, std::function<void()>());
    Drain();
    QCOMPARE(capture.Size(), size_t(0));
    QCOMPARE(HookCount(&context, DelayActionEvent::EventType), 0);
  }

  void delayAction_contextDestroyedFirst_neverRuns() {
    auto* context = new QObject;
    int runs = 0;
    CustomEventUtils::DelayAction(context, [&runs] { ++runs; });
    delete context;
    Drain();
    QCOMPARE(runs, 0);
  }

  void delayAction_runsOnTheContextsThread() {
    QThread worker;
    worker.start();
    QObject context;
    context.moveToThread(&worker);
    QThread* ran_on = nullptr;
    QAtomicInt done = 0;
    CustomEventUtils::DelayAction(&context, [&] {
      ran_on = QThread::currentThread();
      done.storeRelease(1);
    });
    QTRY_COMPARE(done.loadAcquire(), 1);
    QCOMPARE(ran_on, &worker);
    worker.quit();
    QVERIFY(worker.wait(5000));
  }

  void delayActionEvent_withoutAction_isSwallowed() {
    RecordingObject receiver;
    DelayActionEvent empty{std::function<void()>()};
    QVERIFY(QCoreApplication::sendEvent(&receiver, &empty));
    QVERIFY(!receiver.types.contains(DelayActionEvent::EventType));
  }

  void delayTypedPlainEvent_isSwallowedWithoutRunningAnything() {
    // An event that only borrows the number is not a DelayActionEvent: nothing to run.
    RecordingObject receiver;
    QEvent impostor(static_cast<QEvent::Type>(DelayActionEvent::EventType));
    QVERIFY(QCoreApplication::sendEvent(&receiver, &impostor));
    QVERIFY(receiver.types.isEmpty());
  }

  // ---- where the dispatcher acts ----

  void dispatcher_actsBeforeEventFilterAndNotify() {
    RecordingFilter filter;

    QWidget widget;
    auto* doomed = new RecordingObject;
    QObject context;
    int runs = 0;
    CustomEventUtils::DeleteObjectLater(doomed);
    CustomEventUtils::ActivateWidgetLater(&widget);
    CustomEventUtils::DelayAction(&context, [&runs] { ++runs; });
    Drain();

    // All three were delivered and handled...
    QCOMPARE(runs, 1);
    QVERIFY(CustomEventUtils::PendingDeleteListInstance()->empty());
    QCOMPARE(HookCount(doomed, CustomDeleteEvent::EventType), 1);
    QCOMPARE(HookCount(&widget, ActivateWidgetEvent::EventType), 1);
    QCOMPARE(HookCount(&context, DelayActionEvent::EventType), 1);
    // ...and none of them went on to the filter or the notify override.
    for (const auto* list : {&filter.seen, &App()->notified}) {
      for (const Delivery& d : *list) {
        QVERIFY(d.type != CustomDeleteEvent::EventType);
        QVERIFY(d.type != ActivateWidgetEvent::EventType);
        QVERIFY(d.type != DelayActionEvent::EventType);
      }
    }
  }

  void foreignEvents_passThroughUntouched() {
    RecordingFilter filter;
    RecordingObject receiver;
    const auto other = static_cast<QEvent::Type>(QEvent::registerEventType());
    QEvent sent(other);
    QCoreApplication::sendEvent(&receiver, &sent);
    QCoreApplication::postEvent(&receiver, new QEvent(QEvent::User));
    Drain();

    QCOMPARE(receiver.types.count(other), 1);
    QCOMPARE(receiver.types.count(QEvent::User), 1);
    QCOMPARE(Count(filter.seen, &receiver, other), 1);
    QCOMPARE(Count(filter.seen, &receiver, QEvent::User), 1);
    QCOMPARE(Count(App()->notified, &receiver, other), 1);
    QCOMPARE(Count(App()->notified, &receiver, QEvent::User), 1);
  }

  void foreignEvent_resultComesFromTheReceiver() {
    AnsweringObject receiver;
    const auto other = static_cast<QEvent::Type>(QEvent::registerEventType());
    for (bool answer : {false, true}) {
      receiver.answer = answer;
      QEvent event(other);
      QCOMPARE(QCoreApplication::sendEvent(&receiver, &event), answer);
    }
  }

  // ---- compress announcements ----

  void compressPostEvent_layoutRequest_sendsOneEventWithThreeKeys() {
    RecordingObject receiver;
    QEvent layout(QEvent::LayoutRequest);
    bool result = true;
    QVERIFY(!CustomEventUtils::CompressPostEvent(&layout, &receiver, result));
    QVERIFY(!result);
    QCOMPARE(receiver.types.count(CompressCustomEvent::EventType), 1);
    QCOMPARE(receiver.compress_params.size(), size_t(1));
    const Variant& params = receiver.compress_params[0];
    QCOMPARE(params.GetType(), base::variant::kMap);
    QCOMPARE(params.AsMap().size(), size_t(3));
    QVERIFY(params.Has("compress_event_type"));
    QVERIFY(params.Has("compress_event"));
    QVERIFY(params.Has("receiver"));
    QCOMPARE(params.AsMap().at("compress_event_type").AsUint64(), uint64_t(76));
    QCOMPARE(params.GetInt32("compress_event_type", -1), int(QEvent::LayoutRequest));
    QCOMPARE(params.AsMap().at("compress_event").AsPtr(), static_cast<void*>(&layout));
    QCOMPARE(params.AsMap().at("receiver").AsPtr(), static_cast<void*>(&receiver));
  }

  void compressPostEvent_otherType_sendsNothingResultFalse() {
    RecordingObject receiver;
    QEvent update(QEvent::UpdateRequest);
    bool result = true;
    QVERIFY(!CustomEventUtils::CompressPostEvent(&update, &receiver, result));
    QVERIFY(!result);
    QVERIFY(receiver.types.isEmpty());
    QCOMPARE(HookCount(&receiver, CompressCustomEvent::EventType), 0);
  }

  void compressPostEvent_nullArguments_leaveResultAlone() {
    RecordingObject receiver;
    QEvent layout(QEvent::LayoutRequest);
    bool result = true;
    QVERIFY(!CustomEventUtils::CompressPostEvent(nullptr, &receiver, result));
    QVERIFY(result);
    QVERIFY(!CustomEventUtils::CompressPostEvent(&layout, nullptr, result));
    QVERIFY(result);
    QVERIFY(receiver.types.isEmpty());
  }

  void compressEvent_passesFilterAndNotify() {
    // Unlike the deferred-work events, the announcement is for the receiver and everything on
    // its way to it.
    RecordingFilter filter;
    RecordingObject receiver;
    QEvent layout(QEvent::LayoutRequest);
    bool result = true;
    CustomEventUtils::CompressPostEvent(&layout, &receiver, result);
    QCOMPARE(Count(filter.seen, &receiver, CompressCustomEvent::EventType), 1);
    QCOMPARE(Count(App()->notified, &receiver, CompressCustomEvent::EventType), 1);
  }

  void nullArguments_afterInit() {
    LogCapture capture(6);
    CustomEventUtils::DeleteObjectLater(nullptr);
    CustomEventUtils::DelayAction(nullptr, [] {});
    QCOMPARE(capture.Size(), size_t(0));
    CustomEventUtils::ActivateWidgetLater(nullptr);
    QCOMPARE(capture.Texts(), std::vector<std::string>{"widget is nullptr"});
  }
};

int main(int argc, char** argv) {
  RecordingApplication app(argc, argv);
  app.setAttribute(Qt::AA_Use96Dpi, true);
  tst_CustomEventDispatcher test;
  QTEST_SET_MAIN_SOURCE_PATH
  return QTest::qExec(&test, argc, argv);
}

#include "tst_custom_event_dispatcher.moc"
