// The screen observers on Qt's Wayland platform, under a real compositor (scripts/weston-run).
//
// A Wayland client can neither plug outputs in nor change their work area: the compositor owns
// both, and a headless compositor changes neither during a run. What the client does meet is
// its connection announcing the outputs and a window being mapped on one; neither may come out
// as a change. A change Qt does report for the compositor's screen is passed on as on X11.
// Wayland has no work area: the available geometry is the whole output.
#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QWidget>
#include <QtTest>

#include "qt_util/event_handler/monitor_event_observer.h"
#include "qt_util/event_handler/screen_observer.h"

namespace {

// The platform layer announces display changes; on Wayland as elsewhere the monitor event
// observer never emits on its own.
struct MonitorSpies {
  MonitorEventObserver observer;
  QSignalSpy display{&observer, &MonitorEventObserver::NotifyDisplayChange};
  QSignalSpy dpi{&observer, &MonitorEventObserver::NotifyDpiChanged};
  QSignalSpy work_area{&observer, &MonitorEventObserver::NotifySettingWorkAreaChange};

  MonitorSpies() { observer.EnableAsyn(false, 0); }
  int Count() const { return int(display.count() + dpi.count() + work_area.count()); }
};

}  // namespace

class tst_ScreenObserverWayland : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase() {
    qRegisterMetaType<QScreen*>();
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("wayland"));
    QCOMPARE(QGuiApplication::screens().size(), 1);
    QCOMPARE(QGuiApplication::primaryScreen(), QGuiApplication::screens().constFirst());
  }

  void mappingAWindow_emitsNothing_fromEitherObserver() {
    QtScreenObserver observer;
    QSignalSpy list(&observer, &QtScreenObserver::OnScreenListChanged);
    QSignalSpy geometry(&observer, &QtScreenObserver::OnScreenGeometryChanged);
    QSignalSpy primary(&observer, &QtScreenObserver::OnPrimaryScreenChanged);
    MonitorSpies monitor;
    QWidget window;
    window.resize(300, 200);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCoreApplication::processEvents();
    QCOMPARE(list.count(), 0);
    QCOMPARE(geometry.count(), 0);
    QCOMPARE(primary.count(), 0);
    QCOMPARE(monitor.Count(), 0);
  }

  void workArea_isTheWholeOutput() {
    QScreen* screen = QGuiApplication::primaryScreen();
    QVERIFY(screen);
    QCOMPARE(screen->availableGeometry(), screen->geometry());
  }

  void compositorScreensChange_isRelayedWithThatScreen() {
    QScreen* screen = QGuiApplication::primaryScreen();
    QtScreenObserver observer;
    QSignalSpy geometry(&observer, &QtScreenObserver::OnScreenGeometryChanged);
    MonitorSpies monitor;
    // The compositor cannot be told to change its output from here; this is the signal Qt
    // emits when it does.
    const QRect changed(0, 0, 1280, 984);
    emit screen->availableGeometryChanged(changed);
    QCOMPARE(geometry.count(), 1);
    QCOMPARE(geometry.at(0).at(0).value<QScreen*>(), screen);
    QCOMPARE(geometry.at(0).at(1).toRect(), changed);
    QCOMPARE(monitor.Count(), 0);
  }

  void destroyedObserver_isNoLongerCalled() {
    QScreen* screen = QGuiApplication::primaryScreen();
    auto* observer = new QtScreenObserver;
    int calls = 0;
    connect(observer, &QtScreenObserver::OnScreenGeometryChanged, [&] { ++calls; });
    emit screen->availableGeometryChanged(screen->geometry());
    QCOMPARE(calls, 1);
    delete observer;
    emit screen->availableGeometryChanged(screen->geometry());
    QCOMPARE(calls, 1);
  }
};

QTEST_MAIN(tst_ScreenObserverWayland)
#include "tst_screen_observer_wayland.moc"
