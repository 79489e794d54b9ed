// The event classes and their type numbers. This executable never installs the dispatcher and
// registers no event type of its own before the numbers are checked, so the numbers it sees are
// those of a fresh process.
#include <sys/wait.h>
#include <unistd.h>

#include <QtTest>
#include <functional>
#include <stdexcept>

#include "base/variant/variant.h"
#include "qt_util/custom_event_util.h"

using base::variant::Variant;

namespace {

// Records the types of the events delivered to it, and when.
class RecordingObject : public QObject {
 public:
  bool event(QEvent* event) override {
    delivered.append(event->type());
    return QObject::event(event);
  }
  QList<int> delivered;
};

}  // namespace

class tst_CustomEventTypes : public QObject {
  Q_OBJECT

 private slots:
  // The numbers were taken while the library loaded, before any test could register one.
  void typeNumbers_freshProcess_data() {
    QTest::addColumn<int>("actual");
    QTest::addColumn<int>("expected");
    QTest::newRow("CustomDeleteEvent") << CustomDeleteEvent::EventType << 1001;
    QTest::newRow("ActivateWidgetEvent") << ActivateWidgetEvent::EventType << 1002;
    QTest::newRow("ApplicationDeactiveEvent") << ApplicationDeactiveEvent::EventType << 1003;
    QTest::newRow("DelayActionEvent") << DelayActionEvent::EventType << 1004;
    QTest::newRow("CompressCustomEvent") << CompressCustomEvent::EventType << 1005;
    QTest::newRow("NativeMouseDownEvent") << NativeMouseDownEvent::EventType << 1006;
    QTest::newRow("DisableLayoutEvent") << DisableLayoutEvent::EventType << 1007;
    QTest::newRow("InmeetingAddImageToInput") << InmeetingAddImageToInput::EventType << 1008;
    QTest::newRow("MagnifyWithEvent") << MagnifyWithEvent::EventType << 1009;
    QTest::newRow("NativeKeyBroadReleaseEvent") << NativeKeyBroadReleaseEvent::EventType << 1010;
    QTest::newRow("FloatSwitchBarVisibleChangeBeginEndEvent")
        << FloatSwitchBarVisibleChangeBeginEndEvent::EventType << 1011;
    QTest::newRow("WindowWillMiniaturizeEvent") << WindowWillMiniaturizeEvent::EventType << 1013;
  }
  void typeNumbers_freshProcess() {
    QFETCH(int, actual);
    QFETCH(int, expected);
    QCOMPARE(actual, expected);
  }

  void hint1012_staysUnregistered() {
    // A free hint is handed out as is; a taken one would give some other number.
    QCOMPARE(QEvent::registerEventType(1012), 1012);
  }

  void hints2001And2002_areAlreadyTaken() {
    const int first = QEvent::registerEventType(2001);
    const int second = QEvent::registerEventType(2002);
    QVERIFY(first != 2001 && first != 2002);
    QVERIFY(second != 2001 && second != 2002);
    QVERIFY(first != second);
    // And a free hint next to them is still handed out as asked, so the check above means
    // something.
    QCOMPARE(QEvent::registerEventType(2003), 2003);
  }

  void qEventTypeAccessors_returnTheNumbers() {
    QCOMPARE(int(ApplicationDeactiveEvent::QEventType()), ApplicationDeactiveEvent::EventType);
    QCOMPARE(int(NativeMouseDownEvent::QEventType()), NativeMouseDownEvent::EventType);
  }

  void subclasses_carryTheirOwnTypeAndStartEmpty() {
    CompressCustomEvent compress;
    CustomDeleteEvent deletion;
    ActivateWidgetEvent activation;
    QCOMPARE(int(compress.type()), CompressCustomEvent::EventType);
    QCOMPARE(int(deletion.type()), CustomDeleteEvent::EventType);
    QCOMPARE(int(activation.type()), ActivateWidgetEvent::EventType);
    for (CustomEvent* event :
         {static_cast<CustomEvent*>(&compress), static_cast<CustomEvent*>(&deletion),
          static_cast<CustomEvent*>(&activation)}) {
      QVERIFY(!event->callback);
      QVERIFY(!event->params);
    }
    DelayActionEvent delayed([] {});
    QCOMPARE(int(delayed.type()), DelayActionEvent::EventType);
  }

  void customEvent_keepsGivenType() {
    CustomEvent event(QEvent::User);
    QCOMPARE(event.type(), QEvent::User);
    QVERIFY(!event.callback);
    QVERIFY(!event.params);
  }

  void callback_runsOnceWhenDestroyed() {
    int calls = 0;
    auto* event = new CustomEvent(QEvent::User);
    event->callback = [&calls] { ++calls; };
    QCOMPARE(calls, 0);
    delete event;
    QCOMPARE(calls, 1);
  }

  void callback_runsWhileParamsAreStillThere() {
    bool had_params = false;
    auto* event = new CustomEvent(QEvent::User);
    Variant value("kept");
    event->SetParams(&value);
    event->callback = [event, &had_params] {
      had_params = event->params && std::string(event->params->AsCStr()) == "kept";
    };
    delete event;
    QVERIFY(had_params);
  }

  void callback_postedAndDelivered_runsOnceAfterDelivery() {
    RecordingObject receiver;
    int calls = 0;
    int delivered_before_callback = -1;
    auto* event = new CustomEvent(QEvent::User);
    event->callback = [&] {
      ++calls;
      delivered_before_callback = receiver.delivered.count(QEvent::User);
    };
    QCoreApplication::postEvent(&receiver, event);
    QCOMPARE(calls, 0);
    QCoreApplication::sendPostedEvents(&receiver, QEvent::User);
    QCOMPARE(calls, 1);
    QCOMPARE(delivered_before_callback, 1);
    QCoreApplication::processEvents();
    QCOMPARE(calls, 1);
  }

  void callback_postedThenReceiverDestroyed_runsOnceUndelivered() {
    int calls = 0;
    auto* receiver = new RecordingObject;
    auto* event = new CustomEvent(QEvent::User);
    event->callback = [&calls] { ++calls; };
    QCoreApplication::postEvent(receiver, event);
    delete receiver;  // Qt drops the receiver's pending events with it
    QCOMPARE(calls, 1);
    QCoreApplication::processEvents();
    QCOMPARE(calls, 1);
  }

  void callbackThrowing_endsTheProcess() {
    const pid_t child = fork();
    QVERIFY(child >= 0);
    if (child == 0) {
      auto* event = new CustomEvent(QEvent::User);
      event->callback = [] { throw std::runtime_error("out of a destroy callback"); };
      delete event;
      _exit(0);  // only reached when the exception was swallowed
    }
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY2(WIFSIGNALED(status), "the child process finished normally");
    QCOMPARE(WTERMSIG(status), SIGABRT);
  }

  void setParams_copiesTheValue() {
    CustomEvent event(QEvent::User);
    Variant value;
    value["count"] = Variant(3);
    event.SetParams(&value);
    value["count"] = Variant(4);
    value["other"] = Variant("added later");
    QVERIFY(event.params);
    QCOMPARE(event.params->GetInt32("count", -1), 3);
    QVERIFY(!event.params->Has("other"));
  }

  void setParams_againReplacesWithNewCopy() {
    CustomEvent event(QEvent::User);
    Variant first("first");
    Variant second("second");
    event.SetParams(&first);
    const std::shared_ptr<Variant> held = event.params;
    event.SetParams(&second);
    QCOMPARE(std::string(event.params->AsCStr()), std::string("second"));
    // Whoever shared the earlier parameters keeps them unchanged.
    QCOMPARE(std::string(held->AsCStr()), std::string("first"));
  }

  void setParamsNull_afterValue_leavesNoParams() {
    CustomEvent event(QEvent::User);
    Variant value(true);
    event.SetParams(&value);
    QVERIFY(event.params);
    event.SetParams(nullptr);
    QVERIFY(!event.params);
  }

  void delayActionEvent_destroyedUndelivered_doesNotRunAction() {
    int runs = 0;
    delete new DelayActionEvent([&runs] { ++runs; });
    QCOMPARE(runs, 0);

    // Nor when Qt throws it away together with its receiver.
    auto* receiver = new QObject;
    QCoreApplication::postEvent(receiver, new DelayActionEvent([&runs] { ++runs; }));
    delete receiver;
    QCoreApplication::processEvents();
    QCOMPARE(runs, 0);
  }

  void delayActionEvent_keepsItsAction() {
    int runs = 0;
    DelayActionEvent event([&runs] { ++runs; });
    QVERIFY(event.action);
    event.action();
    QCOMPARE(runs, 1);
  }
};

QTEST_MAIN(tst_CustomEventTypes)
#include "tst_custom_event_types.moc"
