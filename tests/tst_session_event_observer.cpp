#include <QtTest>
#include <vector>

#include "qt_util/event_handler/session_event_observer.h"
#include "support/log_capture.h"

class tst_SessionEventObserver : public QObject {
  Q_OBJECT

 private slots:
  void instance_isStable() {
    SessionEventObserver* first = SessionEventObserver::Instance();
    QVERIFY(first);
    QCOMPARE(SessionEventObserver::Instance(), first);
    QCOMPARE(SessionEventObserver::Instance(), first);
    QVERIFY(!first->parent());
  }

  void lockAndUnlock_reachHandler() {
    QObject receiver;
    std::vector<bool> states;
    SessionEventObserver::Instance()->ConnectSessionChangeEvent(
        &receiver, [&](bool is_locked) { states.push_back(is_locked); });
    emit SessionEventObserver::Instance()->NotifySessionChange(true);
    emit SessionEventObserver::Instance()->NotifySessionChange(false);
    QCOMPARE(states, (std::vector<bool>{true, false}));
  }

  void destroyedReceiver_isNoLongerCalled() {
    int calls = 0;
    auto* receiver = new QObject;
    SessionEventObserver::Instance()->ConnectSessionChangeEvent(receiver, [&](bool) { ++calls; });
    emit SessionEventObserver::Instance()->NotifySessionChange(true);
    QCOMPARE(calls, 1);
    delete receiver;
    emit SessionEventObserver::Instance()->NotifySessionChange(false);
    QCOMPARE(calls, 1);
  }

  void disconnect_endsOnlyThatReceiversHandlers() {
    QObject gone;
    QObject stays;
    int gone_calls = 0;
    int stays_calls = 0;
    SessionEventObserver* observer = SessionEventObserver::Instance();
    observer->ConnectSessionChangeEvent(&gone, [&](bool) { ++gone_calls; });
    observer->ConnectSessionChangeEvent(&gone, [&](bool) { ++gone_calls; });
    observer->ConnectSessionChangeEvent(&stays, [&](bool) { ++stays_calls; });
    emit observer->NotifySessionChange(true);
    QCOMPARE(gone_calls, 2);
    QCOMPARE(stays_calls, 1);

    observer->DisconnectSessionChangeEvent(&gone);
    emit observer->NotifySessionChange(false);
    QCOMPARE(gone_calls, 2);
    QCOMPARE(stays_calls, 2);
  }

  void nullReceiverOrEmptyHandler_logsAndConnectsNothing() {
    LogCapture capture(6);
    SessionEventObserver* observer = SessionEventObserver::Instance();
    QObject receiver;
    int calls = 0;
    observer->ConnectSessionChangeEvent(nullptr, [&](bool) { ++calls; });
    observer->ConnectSessionChangeEvent(&receiver, {});
    emit observer->NotifySessionChange(true);  // an empty handler would throw here
    QCOMPARE(calls, 0);
    QVERIFY(capture.Contains(1, "ConnectSessionChangeEvent: null receiver"));
    QVERIFY(capture.Contains(1, "ConnectSessionChangeEvent: empty handler"));
  }

  void disconnectNull_keepsEveryConnection() {
    LogCapture capture(6);
    QObject receiver;
    int calls = 0;
    SessionEventObserver* observer = SessionEventObserver::Instance();
    observer->ConnectSessionChangeEvent(&receiver, [&](bool) { ++calls; });
    observer->DisconnectSessionChangeEvent(nullptr);
    emit observer->NotifySessionChange(true);
    QCOMPARE(calls, 1);
    QVERIFY(capture.Contains(1, "DisconnectSessionChangeEvent: null receiver"));
  }
};

QTEST_MAIN(tst_SessionEventObserver)
#include "tst_session_event_observer.moc"
