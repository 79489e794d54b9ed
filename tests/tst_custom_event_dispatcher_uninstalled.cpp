// The deferred-work dispatcher before InitCustomEventHandler has succeeded. Its own executable:
// installing the dispatcher cannot be undone, so nothing in this process ever installs it.
#include <QPointer>
#include <QWidget>
#include <QtTest>
#include <functional>

#include "qt_util/custom_event_util.h"
#include "support/log_capture.h"
#include "support/notify_hook_recorder.h"

using test_support::Drain;
using test_support::HookCount;

namespace {

const char kNotInit[] = "custom event handler didn't init";

}  // namespace

class tst_CustomEventDispatcherUninstalled : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();
  void cleanupTestCase();
  void init();

  void deleteObjectLater_logsAndObjectSurvives();
  void activateWidgetLater_logsAndPostsNothing();
  void delayAction_logsAndNeverRuns();
  void delayActionEmptyOrNoContext_logsNothing();
  void nullArguments_nullCheckComesFirst();
  void init_refusedByQt_logsFailureAndStaysUninstalled();

 private:
  // Shared by the cases above and by the check after a refused installation.
  void VerifyDelayActionOnlyLogs();
};

void tst_CustomEventDispatcherUninstalled::initTestCase() {
  QVERIFY(
      QInternal::registerCallback(QInternal::EventNotifyCallback, &test_support::RecordingHook));
}

void tst_CustomEventDispatcherUninstalled::cleanupTestCase() {
  QInternal::unregisterCallback(QInternal::EventNotifyCallback, &test_support::RecordingHook);
}

void tst_CustomEventDispatcherUninstalled::init() {
  test_support::g_hook_seen.clear();
}

void tst_CustomEventDispatcherUninstalled::deleteObjectLater_logsAndObjectSurvives() {
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

void tst_CustomEventDispatcherUninstalled::activateWidgetLater_logsAndPostsNothing() {
  LogCapture capture(6);
  QWidget widget;
  CustomEventUtils::ActivateWidgetLater(&widget);
  QCOMPARE(capture.Texts(), std::vector<std::string>{kNotInit});
  QCOMPARE(capture.Records()[0].level, 1);
  Drain();
  QCOMPARE(HookCount(&widget, ActivateWidgetEvent::EventType), 0);
}

void tst_CustomEventDispatcherUninstalled::VerifyDelayActionOnlyLogs() {
  LogCapture capture(6);
  QObject context;
  int runs = 0;
  CustomEventUtils::DelayAction(&context, [&runs] { ++runs; });
  QCOMPARE(capture.Texts(), std::vector<std::string>{kNotInit});
  Drain();
  QCOMPARE(runs, 0);
  QCOMPARE(HookCount(&context, DelayActionEvent::EventType), 0);
}

void tst_CustomEventDispatcherUninstalled::delayAction_logsAndNeverRuns() {
  VerifyDelayActionOnlyLogs();
}

void tst_CustomEventDispatcherUninstalled::delayActionEmptyOrNoContext_logsNothing() {
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

void tst_CustomEventDispatcherUninstalled::nullArguments_nullCheckComesFirst() {
  LogCapture capture(6);
  CustomEventUtils::DeleteObjectLater(nullptr);
  QCOMPARE(capture.Size(), size_t(0));
  CustomEventUtils::ActivateWidgetLater(nullptr);
  QCOMPARE(capture.Texts(), std::vector<std::string>{"widget is nullptr"});
  QCOMPARE(capture.Records()[0].level, 1);
}

void tst_CustomEventDispatcherUninstalled::init_refusedByQt_logsFailureAndStaysUninstalled() {
  LogCapture capture(6);
  const int requests_before = test_support::g_registration_requests;
  test_support::g_refuse_registration = true;
  const bool first = CustomEventUtils::InitCustomEventHandler();
  const bool second = CustomEventUtils::InitCustomEventHandler();
  test_support::g_refuse_registration = false;
  // Each call asked Qt: had the library bypassed the seam, the asking would not show here.
  QCOMPARE(test_support::g_registration_requests - requests_before, 2);
  QVERIFY(!first);
  QVERIFY(!second);
  QCOMPARE(capture.Count(1, "custom event handler init failed"), 2);
  QCOMPARE(capture.Size(), size_t(2));

  // Still uninstalled: deferring behaves as it did before the attempt, and nothing of ours is
  // in Qt's list.
  VerifyDelayActionOnlyLogs();
  if (QTest::currentTestFailed()) return;
  QVERIFY(!QInternal::unregisterCallback(QInternal::EventNotifyCallback,
                                         &CustomEventUtils::CustomEventHandler));
}

QTEST_MAIN(tst_CustomEventDispatcherUninstalled)
#include "tst_custom_event_dispatcher_uninstalled.moc"
