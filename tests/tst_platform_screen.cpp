// The screen and geometry operations of ui_util_screen.h and ui_util_home.h on the platform the
// suite runs on: offscreen, and on Wayland at output scale 1 and 2 (QT_UTIL_WESTON_SCALE). Each
// function states what the library answers there (docs/platforms.md has the same answers).
// Wayland tells a client neither where its top-level windows are, nor where the cursor is, nor
// which part of the output panels cover: Qt reports each top level at 0,0, the cursor at 0,0 and
// the whole output as available, and the library's answers follow from that.
#include <QApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <QtTest>
#include <memory>

#include "base/variant/variant.h"
#include "qt_util/scheme_controller.h"
#include "qt_util/ui_util_home.h"
#include "qt_util/ui_util_screen.h"
#include "scheme/controller_manager.h"
#include "support/platform_lane.h"
#include "talvex_common/utils/home_page.h"
#include "ui/dpi_helper.h"
#include "ui/ui_helper.h"

namespace {

// The output weston-run gives the compositor (logical pixels, at every scale), and the screen of
// the offscreen platform (tests/data/offscreen_qt6.json; Qt 5's default is the same).
const QRect kWaylandOutput(0, 0, 1280, 1024);
const QRect kOffscreenScreen(0, 0, 800, 600);

// Where a top level asked to be.
const QRect kAsked(40, 30, 300, 200);

// The home page's host controller, answering "get_qt_window" with the home widget.
class HomeHost : public framework::Controller {
 public:
  explicit HomeHost(QWidget* home) : home_(home) {}
  std::unique_ptr<base::variant::Variant> CallHasResult(
      const std::string& method, std::unique_ptr<base::variant::Variant>) override {
    if (method != "get_qt_window") return nullptr;
    return std::make_unique<base::variant::Variant>(static_cast<void*>(home_));
  }

 private:
  QWidget* home_;
};

}  // namespace

class tst_PlatformScreen : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();
  void screens_wholeOutputIsAvailable();
  void dpi_isTheOutputScale();
  void translatePoint_scalesFromTheScreenOrigin();
  void shownWindow_positionIsTheWindowSystems();
  void windowPixelRect_sizeScaledPositionAsReported();
  void centerWidgetToRect_recordsTheRequestOnly();
  void centerToWidget_topLevels_targetTakenWhereQtReportsIt();
  void centerToWidget_insideOneWindow_works();
  void correctRect_keepsTheRectOnTheCursorScreen();
  void pointNearestScreen_offEveryScreen_isTheOutput();
  void companionPositions_fromTheReportedPosition();
  void homeRects_reportedGeometryAndWholeOutput();

 private:
  bool wayland() const { return IsWaylandLane(lane_); }
  QRect screen() const { return wayland() ? kWaylandOutput : kOffscreenScreen; }
  // Where the window system put a shown top level that asked for kAsked: Wayland reports 0,0,
  // the offscreen platform grants the request.
  QPoint placed() const { return wayland() ? QPoint(0, 0) : kAsked.topLeft(); }
  bool showAsked(QWidget& window) const {
    window.setGeometry(kAsked);
    window.show();
    return QTest::qWaitForWindowExposed(&window);
  }

  PlatformLane lane_ = PlatformLane::kOther;
  int scale_ = 1;
};

void tst_PlatformScreen::initTestCase() {
  lane_ = CurrentPlatformLane();
  QVERIFY2(lane_ == PlatformLane::kOffscreen || lane_ == PlatformLane::kWayland,
           "registered for offscreen and Wayland only");
  scale_ = ExpectedOutputScale(lane_);
  QCOMPARE(QGuiApplication::screens().size(), 1);
}

// No work area on Wayland: the available rect is the whole output, panels included.
void tst_PlatformScreen::screens_wholeOutputIsAvailable() {
  QWidget window;
  QVERIFY(showAsked(window));
  for (QWidget* widget : {static_cast<QWidget*>(nullptr), &window}) {
    QCOMPARE(VxQtUiUtil::GetScreen(widget), QGuiApplication::primaryScreen());
    QCOMPARE(VxQtUiUtil::GetScreenRect(widget), screen());
    QCOMPARE(VxQtUiUtil::GetScreenAvailableRect(widget), screen());
    QCOMPARE(VxQtUiUtil::GetWorkingScreenRect(widget), screen());
    QCOMPARE(VxQtUiUtil::GetWidgetFitScreenRect(widget), screen().adjusted(0, 0, 0, -40));
  }
}

void tst_PlatformScreen::dpi_isTheOutputScale() {
  QWidget window;
  QVERIFY(showAsked(window));
  QCOMPARE(VxQtUiUtil::GetDPIScale(), float(scale_));
  QCOMPARE(VxQtUiUtil::GetWidgetScreenDPI(&window), float(scale_));
  QCOMPARE(VxQtUiUtil::GetWidgetScreenDPI(nullptr), float(scale_));
  // The framework's own answers, which the client may call directly.
  QCOMPARE(DPIHelper::GetStartUpDPI(), float(scale_));
  QCOMPARE(DPIHelper::GetWidgetScreenDPI(&window), float(scale_));
}

void tst_PlatformScreen::translatePoint_scalesFromTheScreenOrigin() {
  const QPoint native = VxQtUiUtil::TranslatePointFromQt(QPoint(100, 50));
  QCOMPARE(native, QPoint(100 * scale_, 50 * scale_));
  QCOMPARE(VxQtUiUtil::QPointFromNative(native), QPoint(100, 50));
  QCOMPARE(UIHelper::QPointFromNative(native), QPoint(100, 50));
  QCOMPARE(VxQtUiUtil::TranslatePointFromQt(screen().bottomRight() + QPoint(1, 1)), QPoint(0, 0));
}

// Not possible on Wayland: a client cannot place its top levels or learn where they are. The
// compositor ignores the request and Qt reports the window at 0,0.
void tst_PlatformScreen::shownWindow_positionIsTheWindowSystems() {
  QWidget window;
  QVERIFY(showAsked(window));
  QCOMPARE(window.geometry(), QRect(placed(), kAsked.size()));
  QCOMPARE(window.mapToGlobal(QPoint(0, 0)), placed());
}

// The size is exact at every scale; the position is the one Qt reports (0,0 on Wayland).
void tst_PlatformScreen::windowPixelRect_sizeScaledPositionAsReported() {
  QWidget window;
  QVERIFY(showAsked(window));
  QCOMPARE(VxQtUiUtil::GetWindowPixelRect(&window),
           QRect(placed() * scale_, kAsked.size() * scale_));
}

// The widget records the position asked for (pos() answers it), but on Wayland the compositor
// does not move the window: its native window stays where the compositor put it.
void tst_PlatformScreen::centerWidgetToRect_recordsTheRequestOnly() {
  QWidget window;
  QVERIFY(showAsked(window));
  const QPoint native_before = window.windowHandle()->position();
  VxQtUiUtil::CenterWidgetToRect(&window, QRect(0, 0, 1000, 800));
  QCOMPARE(window.pos(), QPoint(350, 300));
  if (wayland()) {
    QVERIFY(
        !QTest::qWaitFor([&] { return window.windowHandle()->position() != native_before; }, 300));
  } else {
    // The native window follows (its position is the client area's, inside the frame).
    QTRY_VERIFY(window.windowHandle()->position() != native_before);
    QCOMPARE(window.windowHandle()->position(), window.geometry().topLeft());
  }
}

// Centring one top level over another uses the target's global position, which is 0,0 for every
// top level on Wayland: the request is as if the target sat at the output's origin (and the
// compositor does not act on it anyway).
void tst_PlatformScreen::centerToWidget_topLevels_targetTakenWhereQtReportsIt() {
  QWidget target;
  QVERIFY(showAsked(target));
  QWidget window;
  window.resize(100, 50);
  window.show();
  QVERIFY(QTest::qWaitForWindowExposed(&window));
  VxQtUiUtil::CenterToWidget(&window, &target);
  QCOMPARE(window.pos(), placed() + QPoint(100, 75));
  VxQtUiUtil::HorizontalCenterToWidget(&window, &target);
  QCOMPARE(window.pos().x(), placed().x() + 100);
  VxQtUiUtil::VerticalCenterToWidget(&window, &target);
  QCOMPARE(window.pos().y(), placed().y() + 75);
}

// Inside one window positions are the client's own, so centring children works everywhere.
void tst_PlatformScreen::centerToWidget_insideOneWindow_works() {
  QWidget window;
  auto* target = new QWidget(&window);
  target->setGeometry(20, 10, 200, 100);
  auto* child = new QWidget(&window);
  child->setGeometry(0, 0, 50, 30);
  QVERIFY(showAsked(window));
  VxQtUiUtil::CenterToWidget(child, target);
  QCOMPARE(child->pos(), QPoint(95, 45));
}

// The cursor's screen decides; Wayland gives no cursor position outside the client's surfaces,
// Qt reports 0,0, and the rect is kept on the output that holds 0,0 (the only one here).
void tst_PlatformScreen::correctRect_keepsTheRectOnTheCursorScreen() {
  const QRect area = screen();
  const QMargins margins(10, 10, 10, 10);
  const QRect overhanging(area.right() - 100, area.bottom() - 50, 200, 100);
  const QRect corrected = VxQtUiUtil::CorrectRect(overhanging, margins);
  QCOMPARE(corrected, QRect(area.right() - 10 - 199, area.bottom() - 10 - 99, 200, 100));
  const QRect centred = VxQtUiUtil::CenterRect(overhanging, QSize(100, 60), margins);
  QCOMPARE(centred.size(), QSize(100, 60));
  QVERIFY(area.marginsRemoved(margins).contains(centred));
}

void tst_PlatformScreen::pointNearestScreen_offEveryScreen_isTheOutput() {
  QCOMPARE(VxQtUiUtil::GetPointNearestScreen(QPoint(5000, 5000)), QGuiApplication::primaryScreen());
  QCOMPARE(VxQtUiUtil::GetPointNearestScreen(QPoint(10, 10)), QGuiApplication::primaryScreen());
}

// The companion's reference point counts a top level's position twice; on Wayland that position
// is 0,0, so the point is the window's size alone.
void tst_PlatformScreen::companionPositions_fromTheReportedPosition() {
  QWidget window;
  QVERIFY(showAsked(window));
  const QPoint reference = placed() * 2;
  QCOMPARE(VxTransQtUiUtil::GetCommonPosToDravik(&window), reference + QPoint(150, 100));
  // Right of the window (it fits), y measured up from the bottom of the screen.
  QCOMPARE(VxTransQtUiUtil::GetRealPosToDravik(&window),
           QPoint(reference.x() + 300, screen().height() - reference.y()));
}

void tst_PlatformScreen::homeRects_reportedGeometryAndWholeOutput() {
  QWidget home;
  QVERIFY(showAsked(home));
  talvex_common::utils::SetNxHomePage(true);
  const char* const host_scheme = "talvex://page/nxui/host";
  ControllerManager::Instance()->IocRegister(host_scheme, std::make_shared<HomeHost>(&home));
  const QRect window_rect = VxQtUiUtil::GetHomeWindowRect();
  const QRect screen_rect = VxQtUiUtil::GetHomeScreenRect();
  ControllerManager::Instance()->IocUnregister(host_scheme);
  talvex_common::utils::SetNxHomePage(false);
  QCOMPARE(window_rect, QRect(placed(), kAsked.size()));
  QCOMPARE(screen_rect, screen());
}

QTEST_MAIN(tst_PlatformScreen)
#include "tst_platform_screen.moc"
