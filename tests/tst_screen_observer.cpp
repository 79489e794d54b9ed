#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QtTest>

#include "qt_util/event_handler/screen_observer.h"
#include "support/virtual_screen.h"

using test_support::AddVirtualScreen;
using test_support::RemoveVirtualScreen;
using test_support::SetPrimaryVirtualScreen;
using test_support::SetVirtualScreenAvailableGeometry;

namespace {

// Every screen any recorded signal of the observer named.
QList<QScreen*> NamedScreens(const QSignalSpy& geometry, const QSignalSpy& primary) {
  QList<QScreen*> named;
  for (const auto& args : geometry) named << args.at(0).value<QScreen*>();
  for (const auto& args : primary) named << args.at(0).value<QScreen*>();
  return named;
}

}  // namespace

class tst_ScreenObserver : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase() {
    qRegisterMetaType<QScreen*>();
    platform_screens_ = QGuiApplication::screens();
  }

  void cleanup() {
    const auto screens = QGuiApplication::screens();
    for (QScreen* screen : screens) {
      if (!platform_screens_.contains(screen)) RemoveVirtualScreen(screen);
    }
  }

  void addedScreen_emitsOneListChange_thenItsWorkAreaChanges() {
    QtScreenObserver observer;
    QSignalSpy list(&observer, &QtScreenObserver::OnScreenListChanged);
    QSignalSpy geometry(&observer, &QtScreenObserver::OnScreenGeometryChanged);

    const QRect full(1920, 0, 1280, 1024);
    QScreen* screen = AddVirtualScreen(full, 1.0, QStringLiteral("second"));
    QCOMPARE(list.count(), 1);
    QCOMPARE(geometry.count(), 0);

    const QRect work_area(1920, 0, 1280, 984);
    SetVirtualScreenAvailableGeometry(screen, work_area);
    QCOMPARE(geometry.count(), 1);
    QCOMPARE(geometry.at(0).at(0).value<QScreen*>(), screen);
    // The work area is passed on, not the full geometry.
    QCOMPARE(geometry.at(0).at(1).toRect(), work_area);
    QCOMPARE(screen->geometry(), full);
    QCOMPARE(list.count(), 1);
  }

  void screensPresentAtConstruction_areHooked() {
    QScreen* screen = AddVirtualScreen(QRect(0, 0, 800, 600), 1.0, QStringLiteral("early"));
    QtScreenObserver observer;
    QSignalSpy geometry(&observer, &QtScreenObserver::OnScreenGeometryChanged);
    SetVirtualScreenAvailableGeometry(screen, QRect(0, 30, 800, 570));
    QCOMPARE(geometry.count(), 1);
    QCOMPARE(geometry.at(0).at(0).value<QScreen*>(), screen);
    QCOMPARE(geometry.at(0).at(1).toRect(), QRect(0, 30, 800, 570));
  }

  void removedScreen_emitsOneListChange_andIsNeverNamedAgain() {
    QScreen* stays = AddVirtualScreen(QRect(0, 0, 1000, 800), 1.0, QStringLiteral("stays"));
    QScreen* goes = AddVirtualScreen(QRect(1000, 0, 1000, 800), 1.0, QStringLiteral("goes"));
    QtScreenObserver observer;
    QSignalSpy list(&observer, &QtScreenObserver::OnScreenListChanged);
    QSignalSpy geometry(&observer, &QtScreenObserver::OnScreenGeometryChanged);
    QSignalSpy primary(&observer, &QtScreenObserver::OnPrimaryScreenChanged);
    SetPrimaryVirtualScreen(goes);
    QCOMPARE(primary.count(), 1);
    primary.clear();

    RemoveVirtualScreen(goes);
    QCOMPARE(list.count(), 1);
    // The removed screen was primary: the relay names its successor, not the screen itself.
    QVERIFY(!NamedScreens(geometry, primary).contains(goes));

    SetVirtualScreenAvailableGeometry(stays, QRect(0, 0, 1000, 760));
    SetPrimaryVirtualScreen(stays);
    QCOMPARE(list.count(), 1);
    QVERIFY(geometry.count() >= 1);
    QVERIFY(!NamedScreens(geometry, primary).contains(goes));
  }

  void primaryScreenChange_isRelayed() {
    QtScreenObserver observer;
    QSignalSpy primary(&observer, &QtScreenObserver::OnPrimaryScreenChanged);
    QScreen* screen = AddVirtualScreen(QRect(0, 0, 640, 480), 1.0, QStringLiteral("primary"));
    QCOMPARE(primary.count(), 0);
    SetPrimaryVirtualScreen(screen);
    QCOMPARE(primary.count(), 1);
    QCOMPARE(primary.at(0).at(0).value<QScreen*>(), screen);
  }

  void destroyedObserver_isNoLongerCalled() {
    QScreen* screen = AddVirtualScreen(QRect(0, 0, 640, 480), 1.0, QStringLiteral("late"));
    auto* observer = new QtScreenObserver;
    int calls = 0;
    connect(observer, &QtScreenObserver::OnScreenGeometryChanged, [&] { ++calls; });
    connect(observer, &QtScreenObserver::OnScreenListChanged, [&] { ++calls; });
    SetVirtualScreenAvailableGeometry(screen, QRect(0, 0, 640, 440));
    QCOMPARE(calls, 1);
    delete observer;
    SetVirtualScreenAvailableGeometry(screen, QRect(0, 0, 640, 400));
    RemoveVirtualScreen(screen);
    AddVirtualScreen(QRect(0, 0, 320, 240));
    QCOMPARE(calls, 1);
  }

 private:
  QList<QScreen*> platform_screens_;
};

QTEST_MAIN(tst_ScreenObserver)
#include "tst_screen_observer.moc"
