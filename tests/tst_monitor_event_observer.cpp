#include <QGuiApplication>
#include <QSignalSpy>
#include <QtTest>

#include "qt_util/event_handler/monitor_event_observer.h"
#include "support/virtual_screen.h"

class tst_MonitorEventObserver : public QObject {
  Q_OBJECT

 private slots:
  void madeObserver_isAsyncWithoutDelay() {
    MonitorEventObserver observer;
    QVERIFY(observer.IsAsync());
    QCOMPARE(observer.Delay(), 0);
  }

  void enableAsyn_storesBothAndReturnsAsync_data() {
    QTest::addColumn<bool>("async");
    QTest::addColumn<int>("delay");
    QTest::newRow("sync") << false << 0;
    QTest::newRow("async, 250 ms") << true << 250;
    QTest::newRow("sync with a delay") << false << 1000;
    QTest::newRow("negative delay kept") << true << -5;
  }
  void enableAsyn_storesBothAndReturnsAsync() {
    QFETCH(bool, async);
    QFETCH(int, delay);
    MonitorEventObserver observer;
    QCOMPARE(observer.EnableAsyn(async, delay), async);
    QCOMPARE(observer.IsAsync(), async);
    QCOMPARE(observer.Delay(), delay);
  }

  // Deciding when to announce a change is the platform layer's job: the observer itself never
  // emits, not even when the screens really change.
  void screenChanges_emitNothingOnTheirOwn() {
    MonitorEventObserver observer;
    observer.EnableAsyn(false, 0);
    QSignalSpy display(&observer, &MonitorEventObserver::NotifyDisplayChange);
    QSignalSpy dpi(&observer, &MonitorEventObserver::NotifyDpiChanged);
    QSignalSpy work_area(&observer, &MonitorEventObserver::NotifySettingWorkAreaChange);
    QScreen* screen = test_support::AddVirtualScreen(QRect(0, 0, 1280, 800), 2.0);
    test_support::SetVirtualScreenAvailableGeometry(screen, QRect(0, 0, 1280, 760));
    test_support::RemoveVirtualScreen(screen);
    QCoreApplication::processEvents();
    QCOMPARE(display.count() + dpi.count() + work_area.count(), 0);
  }
};

QTEST_MAIN(tst_MonitorEventObserver)
#include "tst_monitor_event_observer.moc"
