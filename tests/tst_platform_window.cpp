// The window operations of ui_util_window.h where the window system, not the library, has the
// last word: activation, keep-above, stacking and tool windows. One executable, registered on
// the offscreen platform and on Wayland with and without a seat; each function states what the
// library achieves on each (docs/platforms.md has the same answers in its table). On X11 the same
// operations are proven by tst_ui_util_window_x11 and tst_ui_util_window_wm.
//
// DISPLAY names a trap that counts X connections, as a Wayland session that also runs XWayland
// sets DISPLAY: after every function, nothing has talked to it.
#include <QApplication>
#include <QWidget>
#include <QWindow>
#include <QtTest>

#include "qt_util/custom_event_util.h"
#include "qt_util/ui_util_window.h"
#include "support/platform_lane.h"
#include "support/x11_display_trap.h"

namespace {

// How long a window that must not become active is watched: activation arrives within a few
// milliseconds of the compositor's configure event, which the exposure wait has already seen.
constexpr int kStaysInactiveMs = 400;

// Whether the window system activates a window when it maps it: the offscreen platform does;
// a Wayland compositor does only when it has a seat (keyboard focus to give).
bool ActivatesWhatItMaps(PlatformLane lane) {
  return lane != PlatformLane::kWayland;
}

// Qt 5's Wayland plugin answers every activation request with this warning and does nothing;
// Qt 6.4 does nothing silently, since weston 10 offers no xdg-activation protocol. The warning is
// expected here so that a Qt 5 build that stops giving it (and perhaps activates) is noticed.
void ExpectActivationRefusal(PlatformLane lane) {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
  if (IsWaylandLane(lane)) {
    QTest::ignoreMessage(QtWarningMsg, "Wayland does not support QWindow::requestActivate()");
  }
#else
  Q_UNUSED(lane);
#endif
}

bool StaysInactive(const QWidget& window) {
  return !QTest::qWaitFor([&window] { return window.isActiveWindow(); }, kStaysInactiveMs);
}

// With a seat, the compositor keeps one of the client's windows active, but which one is its
// choice: at output scale 2 weston sometimes hands activation back to the older of two windows
// on its own, with no request from the client. Only that one of them ends up active is asserted.
bool CompositorKeepsOneActive(const QWidget& first, const QWidget& second) {
  return QTest::qWaitFor([&] { return first.isActiveWindow() != second.isActiveWindow(); });
}

// Shows `window` as a plain 300x200 top level and waits until the window system has mapped it.
bool ShowPlain(QWidget& window) {
  window.resize(300, 200);
  window.show();
  return QTest::qWaitForWindowExposed(&window);
}

}  // namespace

class tst_PlatformWindow : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();
  void cleanup();
  void showWindow_newWindow_activeWhereTheWindowSystemActivates_data();
  void showWindow_newWindow_activeWhereTheWindowSystemActivates();
  void activationRequest_anotherWindowActive_honouredOnlyWhereTheClientMay_data();
  void activationRequest_anotherWindowActive_honouredOnlyWhereTheClientMay();
  void setupToolWindow_shown_framelessAndActivatedLikeAnyWindow();
  void setupTopMost_shownWindow_remappedWithTheHintOnly();
  void setupTopMost_withoutShow_hidesAShownWindow();
  void bringToFront_changesNeitherActivationNorVisibility_data();
  void bringToFront_changesNeitherActivationNorVisibility();

 private:
  PlatformLane lane_ = PlatformLane::kOther;
};

void tst_PlatformWindow::initTestCase() {
  lane_ = CurrentPlatformLane();
  QVERIFY2(lane_ != PlatformLane::kOther, "registered for offscreen and Wayland only");
  QVERIFY(CustomEventUtils::InitCustomEventHandler());
  QCOMPARE(qgetenv("DISPLAY"), CurrentX11DisplayTrap()->display());
}

void tst_PlatformWindow::cleanup() {
  QCOMPARE(CurrentX11DisplayTrap()->connections(), 0);
}

void tst_PlatformWindow::showWindow_newWindow_activeWhereTheWindowSystemActivates_data() {
  QTest::addColumn<bool>("activate");
  QTest::newRow("activate") << true;
  QTest::newRow("show only") << false;
}

// For a window shown for the first time, `activate` makes no difference anywhere but X11: the
// offscreen platform and a compositor with a seat activate what they map, a compositor without a
// seat activates nothing, and the client's own request is not what decides.
void tst_PlatformWindow::showWindow_newWindow_activeWhereTheWindowSystemActivates() {
  QFETCH(bool, activate);
  QWidget window;
  window.resize(300, 200);
  if (activate) ExpectActivationRefusal(lane_);
  VxQtUiUtil::ShowWindow(&window, activate);
  QVERIFY(window.isVisible());
  QVERIFY(QTest::qWaitForWindowExposed(&window));
  if (ActivatesWhatItMaps(lane_)) {
    QTRY_VERIFY(window.isActiveWindow());
  } else {
    QVERIFY(StaysInactive(window));
    QCOMPARE(QGuiApplication::focusWindow(), static_cast<QWindow*>(nullptr));
  }
}

// Bringing back a window behind another one, at once (ShowWindow) or from the event loop
// (ActivateWidgetLater): on Wayland the compositor decides (the client may not take activation):
// without a seat nothing is active, with one the compositor keeps one of the two active whatever
// the request. The request does reach Qt (Qt 5's Wayland plugin answers it with its warning).
// The offscreen platform honours it.
void tst_PlatformWindow::
    activationRequest_anotherWindowActive_honouredOnlyWhereTheClientMay_data() {
  QTest::addColumn<bool>("deferred");
  QTest::newRow("ShowWindow") << false;
  QTest::newRow("ActivateWidgetLater") << true;
}

void tst_PlatformWindow::activationRequest_anotherWindowActive_honouredOnlyWhereTheClientMay() {
  QFETCH(bool, deferred);
  QWidget first;
  QVERIFY(ShowPlain(first));
  QWidget second;
  QVERIFY(ShowPlain(second));
  if (ActivatesWhatItMaps(lane_)) QTRY_VERIFY(second.isActiveWindow());

  ExpectActivationRefusal(lane_);
  if (deferred) {
    CustomEventUtils::ActivateWidgetLater(&first);
    // Not done on the spot (where a compositor keeps one window active, it may be either).
    if (lane_ == PlatformLane::kOffscreen) QVERIFY(!first.isActiveWindow());
  } else {
    VxQtUiUtil::ShowWindow(&first, true);
  }
  QVERIFY(first.isVisible());
  switch (lane_) {
    case PlatformLane::kOffscreen:
      QTRY_VERIFY(first.isActiveWindow());
      QVERIFY(!second.isActiveWindow());
      break;
    case PlatformLane::kWaylandSeat:
      QVERIFY(CompositorKeepsOneActive(first, second));
      // Lets a deferred request through the event loop, whose warning the refusal expects.
      QTest::qWait(kStaysInactiveMs);
      break;
    default:
      QVERIFY(StaysInactive(first));
      QVERIFY(!second.isActiveWindow());
      break;
  }
}

// On Wayland the bypass and stay-on-top hints mean nothing to the compositor: the tool window is
// an ordinary top level without decoration, activated on map when there is a seat (on X11 the
// window manager never sees it and it takes no activation).
void tst_PlatformWindow::setupToolWindow_shown_framelessAndActivatedLikeAnyWindow() {
  QWidget tool;
  VxQtUiUtil::SetupToolWindow(&tool);
  tool.resize(120, 80);
  tool.show();
  QVERIFY(QTest::qWaitForWindowExposed(&tool));
  QVERIFY(tool.windowHandle()->flags().testFlag(Qt::FramelessWindowHint));
  // No client-side decoration: the frame is the window.
  QCOMPARE(tool.frameGeometry(), tool.geometry());
  QCOMPARE(tool.size(), QSize(120, 80));
  if (ActivatesWhatItMaps(lane_)) {
    QTRY_VERIFY(tool.isActiveWindow());
  } else {
    QVERIFY(StaysInactive(tool));
  }
}

// Keep-above has no Wayland request: the hint is set and Qt recreates the shown window for it,
// which the compositor maps again as a new window (activating it when it has a seat) and stacks
// as it likes. No X request is made (the trap stays untouched).
void tst_PlatformWindow::setupTopMost_shownWindow_remappedWithTheHintOnly() {
  QWidget window;
  QVERIFY(ShowPlain(window));
  QWidget other;
  QVERIFY(ShowPlain(other));
  if (ActivatesWhatItMaps(lane_)) QTRY_VERIFY(other.isActiveWindow());

  VxQtUiUtil::SetupTopMost(&window, true, true);
  QVERIFY(window.isVisible());
  QVERIFY(window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  QVERIFY(window.windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint));
  QVERIFY(QTest::qWaitForWindowExposed(&window));
  if (ActivatesWhatItMaps(lane_)) {
    QTRY_VERIFY(window.isActiveWindow());
  } else {
    QVERIFY(StaysInactive(window));
  }

  VxQtUiUtil::SetupTopMost(&window, false, true);
  QVERIFY(window.isVisible());
  QVERIFY(!window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  QVERIFY(QTest::qWaitForWindowExposed(&window));
}

void tst_PlatformWindow::setupTopMost_withoutShow_hidesAShownWindow() {
  QWidget window;
  QVERIFY(ShowPlain(window));
  VxQtUiUtil::SetupTopMost(&window, true, false);
  QVERIFY(window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  QVERIFY(!window.isVisible());
  // A hidden window is only given the hint: no native window is made for it.
  QWidget hidden;
  VxQtUiUtil::SetupTopMost(&hidden, true, false);
  QVERIFY(hidden.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  QVERIFY(!hidden.testAttribute(Qt::WA_WState_Created));
}

void tst_PlatformWindow::bringToFront_changesNeitherActivationNorVisibility_data() {
  QTest::addColumn<bool>("front");
  QTest::newRow("raise") << true;
  QTest::newRow("lower") << false;
}

// Wayland has no stacking request for a client's top levels (the compositor stacks), and raising
// or lowering never moves activation, on any platform.
void tst_PlatformWindow::bringToFront_changesNeitherActivationNorVisibility() {
  QFETCH(bool, front);
  QWidget first;
  QVERIFY(ShowPlain(first));
  QWidget second;
  QVERIFY(ShowPlain(second));
  if (ActivatesWhatItMaps(lane_)) QTRY_VERIFY(second.isActiveWindow());
  const QRect first_geometry = first.geometry();

  // The offscreen platform has no stacking either and says so.
  if (lane_ == PlatformLane::kOffscreen) {
    QTest::ignoreMessage(QtWarningMsg, front ? "This plugin does not support raise()"
                                             : "This plugin does not support lower()");
  }
  VxQtUiUtil::BringToFront(&first, front);
  QVERIFY(first.isVisible());
  QVERIFY(second.isVisible());
  QCOMPARE(first.geometry(), first_geometry);
  if (lane_ == PlatformLane::kWaylandSeat) {
    QVERIFY(CompositorKeepsOneActive(first, second));
  } else {
    QVERIFY(StaysInactive(first));
    QCOMPARE(second.isActiveWindow(), lane_ == PlatformLane::kOffscreen);
  }
}

QTU_TEST_MAIN_WITH_X11_TRAP(tst_PlatformWindow)

#include "tst_platform_window.moc"
