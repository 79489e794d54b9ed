// The deferred-work dispatcher once installed; tst_custom_event_dispatcher_uninstalled covers
// the time before (installation cannot be undone, hence the two executables).
#include <QApplication>
#include <QEventLoop>
#include <QPointer>
#include <QThread>
#include <QTimer>
#include <QWidget>
#include <QtTest>
#include <functional>
#include <new>
#include <vector>

#include "base/variant/variant.h"
#include "qt_util/custom_event_util.h"
#include "support/log_capture.h"
#include "support/notify_hook_recorder.h"

using base::variant::Variant;
using test_support::Count;
using test_support::Delivery;
using test_support::Drain;
using test_support::HookCount;

namespace {

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

// Built in caller-provided storage; counts destructions, and deletions through its own
// operator delete, which frees nothing (the storage is the caller's).
class PlacedObject : public QObject {
 public:
  PlacedObject() { ++alive; }
  ~PlacedObject() override { --alive; }
  static void operator delete(void*) { ++deletions; }
  static inline int alive = 0;
  static inline int deletions = 0;
};

// Answers every event with a chosen result.
class AnsweringObject : public QObject {
 public:
  bool event(QEvent*) override { return answer; }
  bool answer = false;
};

}  // namespace

class tst_CustomEventDispatcher : public QObject {
  Q_OBJECT

 private slots:
  // Installs the dispatcher for the whole suite, behind the recording hook. The first attempt is
  // refused: a refusal is not remembered, the next call asks Qt again.
  void initTestCase() {
    QVERIFY(
        QInternal::registerCallback(QInternal::EventNotifyCallback, &test_support::RecordingHook));
    test_support::g_refuse_registration = true;
    const bool refused = CustomEventUtils::InitCustomEventHandler();
    test_support::g_refuse_registration = false;
    QVERIFY(!refused);
    const int requests_before = test_support::g_registration_requests;
    QVERIFY(CustomEventUtils::InitCustomEventHandler());
    QCOMPARE(test_support::g_registration_requests - requests_before, 1);
  }
  void cleanupTestCase() {
    QInternal::unregisterCallback(QInternal::EventNotifyCallback, &test_support::RecordingHook);
  }
  void init() { test_support::g_hook_seen.clear(); }

  // ---- installation ----

  void init_laterCalls_registerNothingAndReturnTrue() {
    LogCapture capture(6);
    const int requests_before = test_support::g_registration_requests;
    QVERIFY(CustomEventUtils::InitCustomEventHandler());
    QVERIFY(CustomEventUtils::InitCustomEventHandler());
    QCOMPARE(test_support::g_registration_requests - requests_before, 0);
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

  void deleteEvent_staleEntryAtReusedAddress_deletesNothing() {
    alignas(PlacedObject) unsigned char storage[sizeof(PlacedObject)];
    auto* first = new (storage) PlacedObject;
    CustomEventUtils::DeleteObjectLater(first);
    // The client cuts every connection of the object, the library's own included, and then
    // destroys it: its entry cannot hear of it and stays behind.
    first->disconnect();
    first->~PlacedObject();
    QCOMPARE(CustomEventUtils::PendingDeleteListInstance()->count(first), size_t(1));

    auto* second = new (storage) PlacedObject;
    QCOMPARE(static_cast<void*>(second), static_cast<void*>(first));
    CustomDeleteEvent stray;
    QVERIFY(QCoreApplication::sendEvent(second, &stray));
    QCOMPARE(PlacedObject::deletions, 0);
    QCOMPARE(PlacedObject::alive, 1);
    QCOMPARE(CustomEventUtils::PendingDeleteListInstance()->count(second), size_t(0));

    // A request made for the new object itself is honoured.
    CustomEventUtils::DeleteObjectLater(second);
    Drain();
    QCOMPARE(PlacedObject::deletions, 1);
    QCOMPARE(PlacedObject::alive, 0);
    QVERIFY(CustomEventUtils::PendingDeleteListInstance()->empty());
    PlacedObject::deletions = 0;
  }

  // Kept as documented in the header: the deletion happens in whatever loop delivers the event,
  // a nested one inside the object's own method included. The guard the header recommends sees it.
  void deleteObjectLater_thenNestedLoop_deletesUnderTheMethod() {
    class Panel : public QObject {
     public:
      // Touches nothing of the object after the nested loop unless the guard says it lives.
      bool DeleteSelfAndRunNestedLoop(int* touched_after) {
        QPointer<Panel> self(this);
        CustomEventUtils::DeleteObjectLater(this);
        QEventLoop nested;
        QTimer::singleShot(0, &nested, &QEventLoop::quit);
        nested.exec();
        if (!self) return false;
        *touched_after = ++touches_;
        return true;
      }

     private:
      int touches_ = 0;
    };
    auto* panel = new Panel;
    QPointer<Panel> watch = panel;
    int touched_after = 0;
    QVERIFY(!panel->DeleteSelfAndRunNestedLoop(&touched_after));
    QVERIFY(!watch);
    QCOMPARE(touched_after, 0);
  }

  void customEventHandler_incompleteData_isNotOurs() {
    RecordingObject receiver;
    DelayActionEvent delayed([] {});
    bool result = false;
    QVERIFY(!CustomEventUtils::CustomEventHandler(nullptr));
    void* no_receiver[] = {nullptr, &delayed, &result};
    QVERIFY(!CustomEventUtils::CustomEventHandler(no_receiver));
    void* no_event[] = {&receiver, nullptr, &result};
    QVERIFY(!CustomEventUtils::CustomEventHandler(no_event));
    QVERIFY(!result);
  }

  void customEventHandler_withoutResultPointer_stillHandles() {
    RecordingObject receiver;
    int runs = 0;
    DelayActionEvent delayed([&runs] { ++runs; });
    void* data[] = {&receiver, &delayed, nullptr};
    QVERIFY(CustomEventUtils::CustomEventHandler(data));
    QCOMPARE(runs, 1);
    CustomDeleteEvent stray;
    void* delete_data[] = {&receiver, &stray, nullptr};
    QVERIFY(CustomEventUtils::CustomEventHandler(delete_data));
    QVERIFY(receiver.types.isEmpty());
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
