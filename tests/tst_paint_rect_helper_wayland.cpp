// The paint-rect helper on Qt's Wayland platform, under a real compositor (scripts/weston-run).
//
// Two things differ from X11, and both come from the protocol, not from the helper:
// - A client cannot activate its own window; the compositor decides. Run without a seat
//   (no keyboard), weston never activates anything, so with CheckTopWindowState every tile is
//   reported not paintable. Run with a seat (scripts/weston-run --seat, which sets
//   QT_UTIL_WESTON_SEAT=1), its desktop shell activates the window it maps and the tile is
//   paintable, as on X11.
// - A client never learns where its window is on the screen: mapToGlobal() maps through the
//   window's origin, which stays at (0, 0). The reported rectangle is therefore the widget's
//   position inside its window, and moving the window changes nothing the helper can see.
// Rectangles are logical pixels, so the numbers are the same at output scale 1 and 2.
#include <QGuiApplication>
#include <QMouseEvent>
#include <QWidget>
#include <QtTest>
#include <memory>

#include "qt_util/paint_rect_helper.h"
#include "support/paint_rect_meeting.h"
#include "support/platform_lane.h"

namespace {

// Whether the compositor of this run has a seat and so activates the windows it maps.
bool CompositorHasSeat() {
  return CurrentPlatformLane() == PlatformLane::kWaylandSeat;
}

// The meeting window shown, and its tile bound to a recording helper once Show() returned.
struct Meeting : test_support::MeetingTile {
  test_support::PaintRecorder recorder;
  QTPaintRectHelper helper;

  // Shows the window and asks for activation, which only a compositor with a seat grants.
  // Returns whether the window ended up active.
  bool Show() {
    window->show();
    if (!QTest::qWaitForWindowExposed(window.get())) return false;
    window->activateWindow();
    // Not qWaitForWindowActive, which on a platform without the activation capability only
    // waits for the window to be exposed.
    QWidget* top = window.get();
    return QTest::qWaitFor([top] { return top->isActiveWindow(); },
                           CompositorHasSeat() ? 5000 : 500);
  }

  void Bind(QTPaintRectHelper::BindType type) {
    helper.BindWidget(tile, recorder.Callback(), type);
  }
};

// The tile's rectangle inside its window: panel (20, 30) + tile (5, 6), 160x90. Wayland gives
// the client no global window position, so this is what the helper reports.
const QRect kTileInWindow(25, 36, 160, 90);

constexpr auto kDefault = QTPaintRectHelper::BindType(QTPaintRectHelper::CheckParentVisible |
                                                      QTPaintRectHelper::CheckTopWindowState);

void SendLeftPress(QWidget* widget) {
  QMouseEvent press(QEvent::MouseButtonPress, QPointF(2, 2), widget->mapToGlobal(QPoint(2, 2)),
                    Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(widget, &press);
}

}  // namespace

class tst_PaintRectHelperWayland : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();
  void activation_isTheCompositorsDecision();
  void defaultRules_paintableOnlyInAnActivatedWindow();
  void withoutTopWindowState_followsTheWidgetsAlone();
  void topLevelMove_reportsNothingNew();
  void ancestorMove_reportsTheNewRect();
  void mousePress_withHideOnMousePress();
  void hiddenAndShownAgain_reportsBoth();
  void minimised_isNotPaintable();
  void anotherWindowActivated_clientCannotTakeActivationBack();
  void boundWidgetDestroyed_reportsFalseOnce();
};

void tst_PaintRectHelperWayland::initTestCase() {
  QCOMPARE(QGuiApplication::platformName(), QStringLiteral("wayland"));
}

void tst_PaintRectHelperWayland::activation_isTheCompositorsDecision() {
  Meeting meeting;
  // activateWindow() is only a request: with a seat the compositor has already activated the
  // window it mapped, without one nothing ever activates it.
  QCOMPARE(meeting.Show(), CompositorHasSeat());
  QCOMPARE(meeting.window->isActiveWindow(), CompositorHasSeat());
}

void tst_PaintRectHelperWayland::defaultRules_paintableOnlyInAnActivatedWindow() {
  Meeting meeting;
  QCOMPARE(meeting.Show(), CompositorHasSeat());
  meeting.Bind(kDefault);
  QCOMPARE(meeting.recorder.Count(), 1);
  // In an inactive window the helper asks whether the tile's centre is inside the native
  // window, which on Linux is never so: not paintable, as for an inactive window on X11.
  QCOMPARE(meeting.recorder.Last().visible, CompositorHasSeat());
  QCOMPARE(meeting.helper.EverVisible(), CompositorHasSeat());
  QCOMPARE(meeting.recorder.Last().rect, kTileInWindow);
}

void tst_PaintRectHelperWayland::withoutTopWindowState_followsTheWidgetsAlone() {
  Meeting meeting;
  QCOMPARE(meeting.Show(), CompositorHasSeat());
  meeting.Bind(QTPaintRectHelper::CheckParentVisible);
  QCOMPARE(meeting.recorder.Count(), 1);
  QVERIFY(meeting.recorder.Last().visible);  // activation does not matter to this rule
  QCOMPARE(meeting.recorder.Last().rect, kTileInWindow);
  meeting.panel->hide();
  QCOMPARE(meeting.recorder.Count(), 2);
  QVERIFY(!meeting.recorder.Last().visible);
}

void tst_PaintRectHelperWayland::topLevelMove_reportsNothingNew() {
  Meeting meeting;
  meeting.Show();
  meeting.Bind(QTPaintRectHelper::CheckParentVisible);
  const QPoint asked = meeting.window->pos() + QPoint(37, 21);
  meeting.window->move(asked);
  QCoreApplication::processEvents();
  meeting.helper.ReUpdate();
  // On X11 the rectangle moves with the window. Here the compositor places the window and
  // tells the client nothing, so the tile keeps its rectangle and nothing is reported.
  QCOMPARE(meeting.recorder.Count(), 1);
  QCOMPARE(meeting.recorder.Last().rect, kTileInWindow);
  QCOMPARE(meeting.tile->mapToGlobal(QPoint(0, 0)), kTileInWindow.topLeft());
}

void tst_PaintRectHelperWayland::ancestorMove_reportsTheNewRect() {
  Meeting meeting;
  QCOMPARE(meeting.Show(), CompositorHasSeat());
  meeting.Bind(kDefault);
  meeting.panel->move(meeting.panel->pos() + QPoint(-7, 12));
  // The rectangle follows the panel; the flag stays what activation made it.
  QCOMPARE(meeting.recorder.Count(), 2);
  QCOMPARE(meeting.recorder.Last().visible, CompositorHasSeat());
  QCOMPARE(meeting.recorder.Last().rect, kTileInWindow.translated(-7, 12));
}

void tst_PaintRectHelperWayland::mousePress_withHideOnMousePress() {
  Meeting meeting;
  QCOMPARE(meeting.Show(), CompositorHasSeat());
  meeting.Bind(kDefault | QTPaintRectHelper::HideOnMousePress);
  SendLeftPress(meeting.panel);
  if (CompositorHasSeat()) {
    // As on X11: a press in the active window hides the tile until the next recomputation.
    QCOMPARE(meeting.recorder.Count(), 2);
    QVERIFY(!meeting.recorder.Last().visible);
    meeting.panel->move(meeting.panel->pos() + QPoint(1, 0));
    QCOMPARE(meeting.recorder.Count(), 3);
    QVERIFY(meeting.recorder.Last().visible);
  } else {
    // The inactive window's tile is not paintable already; the press changes nothing.
    QCOMPARE(meeting.recorder.Count(), 1);
    QVERIFY(!meeting.recorder.Last().visible);
  }
}

void tst_PaintRectHelperWayland::hiddenAndShownAgain_reportsBoth() {
  Meeting meeting;
  QCOMPARE(meeting.Show(), CompositorHasSeat());
  meeting.Bind(QTPaintRectHelper::CheckParentVisible);
  meeting.window->hide();
  QTRY_COMPARE(meeting.recorder.Count(), 2);
  QVERIFY(!meeting.recorder.Last().visible);
  meeting.window->show();
  QVERIFY(QTest::qWaitForWindowExposed(meeting.window.get()));
  QTRY_COMPARE(meeting.recorder.Count(), 3);
  QVERIFY(meeting.recorder.Last().visible);
  QCOMPARE(meeting.recorder.Last().rect, kTileInWindow);
}

void tst_PaintRectHelperWayland::minimised_isNotPaintable() {
  Meeting meeting;
  QCOMPARE(meeting.Show(), CompositorHasSeat());
  meeting.Bind(QTPaintRectHelper::CheckTopWindowState);
  meeting.window->showMinimized();
  QTRY_VERIFY(meeting.window->isMinimized());
  QVERIFY(!meeting.recorder.Last().visible);
  QCOMPARE(meeting.recorder.Last().rect, kTileInWindow);
  // Only a tile that was paintable has something to report.
  QCOMPARE(meeting.recorder.Count(), CompositorHasSeat() ? 2 : 1);
}

void tst_PaintRectHelperWayland::anotherWindowActivated_clientCannotTakeActivationBack() {
  Meeting meeting;
  QCOMPARE(meeting.Show(), CompositorHasSeat());
  meeting.Bind(kDefault);
  auto other = std::make_unique<QWidget>();
  other->resize(200, 100);
  other->show();
  QVERIFY(QTest::qWaitForWindowExposed(other.get()));
  QWidget* top = meeting.window.get();
  // With a seat the compositor activates the new window, and the tile goes as it does on X11.
  QTRY_COMPARE(meeting.recorder.Count(), CompositorHasSeat() ? 2 : 1);
  QVERIFY(!top->isActiveWindow());
  QVERIFY(!meeting.recorder.Last().visible);

  // On X11 this brings the window back and the tile with it. Here it is a request the
  // compositor does not grant: the tile stays not paintable.
  meeting.window->activateWindow();
  QVERIFY(!QTest::qWaitFor([top] { return top->isActiveWindow(); }, 500));
  QCOMPARE(meeting.recorder.Count(), CompositorHasSeat() ? 2 : 1);
  QVERIFY(!meeting.recorder.Last().visible);

  // Closing the other window: a compositor with a seat gives the focus back to the meeting.
  other.reset();
  if (CompositorHasSeat()) {
    QTRY_VERIFY(top->isActiveWindow());
    QTRY_COMPARE(meeting.recorder.Count(), 3);
    QVERIFY(meeting.recorder.Last().visible);
  } else {
    QVERIFY(!QTest::qWaitFor([top] { return top->isActiveWindow(); }, 500));
    QCOMPARE(meeting.recorder.Count(), 1);
  }
}

void tst_PaintRectHelperWayland::boundWidgetDestroyed_reportsFalseOnce() {
  Meeting meeting;
  meeting.Show();
  meeting.Bind(QTPaintRectHelper::CheckParentVisible);
  delete meeting.tile;
  QCOMPARE(meeting.recorder.Count(), 2);
  QVERIFY(!meeting.recorder.Last().visible);
  QCOMPARE(meeting.recorder.Last().rect, QRect(0, 0, 0, 0));
  QVERIFY(meeting.helper.WatchedObjects().isEmpty());
}

QTEST_MAIN(tst_PaintRectHelperWayland)
#include "tst_paint_rect_helper_wayland.moc"
