// Screen geometry of VxQtUiUtil on the offscreen platform. Its own screen is (0, 0, 800, 600) at
// ratio 1 and stays primary; the screens a test needs are added beside it and removed again in
// cleanup(). The cursor is placed with QCursor::setPos, which the offscreen platform keeps.
#include <QApplication>
#include <QCursor>
#include <QScreen>
#include <QWidget>
#include <QtTest>
#include <limits>
#include <vector>

#include "qt_util/ui_util.h"
#include "support/virtual_screen.h"
#include "ui/dpi_helper.h"
#include "ui/ui_helper.h"

using test_support::AddVirtualScreen;
using test_support::RemoveVirtualScreen;
using test_support::SetVirtualScreenAvailableGeometry;

namespace {

struct CorrectRectRow {
  const char* name;
  QRect rect;
  QMargins margins;
  QRect expected;
};

// Area (0, 0, 1920, 1040): right edge 1919, bottom edge 1039.
const CorrectRectRow kCorrectRectRows[] = {
    {"inside", QRect(100, 100, 200, 100), QMargins(10, 20, 30, 40), QRect(100, 100, 200, 100)},
    {"over the right margin", QRect(1800, 100, 200, 100), QMargins(10, 20, 30, 40),
     QRect(1690, 100, 200, 100)},
    {"right edge on the margin", QRect(1690, 100, 200, 100), QMargins(10, 20, 30, 40),
     QRect(1690, 100, 200, 100)},
    {"right edge one past the margin", QRect(1691, 100, 200, 100), QMargins(10, 20, 30, 40),
     QRect(1690, 100, 200, 100)},
    {"over the bottom margin", QRect(100, 1000, 200, 100), QMargins(10, 20, 30, 40),
     QRect(100, 900, 200, 100)},
    {"over the left margin", QRect(-50, 100, 200, 100), QMargins(10, 20, 30, 40),
     QRect(10, 100, 200, 100)},
    {"left edge on the margin", QRect(10, 100, 200, 100), QMargins(10, 20, 30, 40),
     QRect(10, 100, 200, 100)},
    {"over the top margin", QRect(100, 5, 200, 100), QMargins(10, 20, 30, 40),
     QRect(100, 20, 200, 100)},
    {"bottom right corner, one-pixel bottom margin", QRect(1900, 1000, 100, 100),
     QMargins(0, 0, 0, 1), QRect(1820, 939, 100, 100)},
    {"larger than the area", QRect(500, 500, 3000, 2000), QMargins(10, 20, 30, 40),
     QRect(10, 20, 3000, 2000)},
};

}  // namespace

class tst_UiUtilScreen : public QObject {
  Q_OBJECT

 private slots:
  void cleanup();

  void getScreen_ofAWidgetOnASecondScreen_isThatScreen();
  void getScreen_ofAWidgetAcrossTwoScreens_isTheOneWithTheLargerPart();
  void getScreen_equalParts_isTheEarlierScreen();
  void getScreen_ofAChildWidget_goesByItsGlobalPosition();
  void getScreen_ofAWidgetOnNoScreen_isThePrimaryScreen();
  void getScreenRect_ofANullWidget_isThePrimaryScreen();
  void getScreen_afterItsScreenIsRemoved_isThePrimaryScreen();
  void screenRects_withNoScreenAtAll_areNull();
  void workingAndFitRects_followTheAvailableRect();
  void correctRect_withZeroMargins_changesNothing();
  void correctRect_movesTheRectInsideTheArea_data();
  void correctRect_movesTheRectInsideTheArea();
  void correctRect_wideRect_endsAtTheLeftMargin();
  void correctRect_marginsNearTheIntLimits_stayDefined();
  void correctRect_usesTheScreenUnderTheCursor();
  void correctRect_cursorOnNoScreen_usesThePrimaryScreen();
  void centerRect_centresThenCorrects();
  void centerWidgetToRect_movesTheWidgetsCentre();
  void centerToWidget_truncatesHalvesAndMapsIntoTheParent();
  void verticalCenterToWidget_keepsX();
  void horizontalCenterToWidget_keepsY();
  void pointNearestScreen_insideAScreen_isThatScreen();
  void pointNearestScreen_equidistant_isTheEarlierScreen();
  void pointNearestScreen_usesIntegerHalfCentres();
  void translatePointFromQt_outsideEveryScreen_isTheOrigin();
  void translatePointFromQt_truncatesAndKeepsTheOriginUnscaled();
  void qPointFromNative_undoesTranslatePointFromQt_data();
  void qPointFromNative_undoesTranslatePointFromQt();
  void windowPixelRect_ofAChild_isNull();
  void windowPixelRect_roundsPositionAndSize();
  void dpiScales_comeFromTheFramework();

 private:
  // The area of kCorrectRectRows on a screen of its own, with the cursor on it.
  QScreen* addCorrectRectScreen();
  std::vector<QScreen*> added_;
  QScreen* add(const QRect& geometry, qreal ratio = 1.0) {
    QScreen* screen = AddVirtualScreen(geometry, ratio);
    added_.push_back(screen);
    return screen;
  }
};

void tst_UiUtilScreen::cleanup() {
  for (QScreen* screen : added_) {
    if (QGuiApplication::screens().contains(screen)) RemoveVirtualScreen(screen);
  }
  added_.clear();
  QCursor::setPos(0, 0);
}

QScreen* tst_UiUtilScreen::addCorrectRectScreen() {
  // Overlaps the platform's screen, which comes first in screens(); the cursor goes where only
  // the new one is.
  QScreen* screen = add(QRect(0, 0, 1920, 1080));
  SetVirtualScreenAvailableGeometry(screen, QRect(0, 0, 1920, 1040));
  QCursor::setPos(1000, 700);
  return screen;
}

void tst_UiUtilScreen::getScreen_ofAWidgetOnASecondScreen_isThatScreen() {
  QScreen* left = add(QRect(2000, 0, 1000, 800));
  QScreen* right = add(QRect(3000, 0, 1000, 800));
  QWidget widget;
  widget.setGeometry(3100, 100, 200, 100);
  QCOMPARE(VxQtUiUtil::GetScreen(&widget), right);
  QCOMPARE(VxQtUiUtil::GetScreenRect(&widget), QRect(3000, 0, 1000, 800));
  widget.move(2100, 100);
  QCOMPARE(VxQtUiUtil::GetScreen(&widget), left);
}

void tst_UiUtilScreen::getScreen_ofAWidgetAcrossTwoScreens_isTheOneWithTheLargerPart() {
  QScreen* left = add(QRect(2000, 0, 1000, 800));
  QScreen* right = add(QRect(3000, 0, 1000, 800));
  QWidget widget;
  widget.setGeometry(2900, 100, 300, 100);  // 100 columns on the left, 200 on the right
  QCOMPARE(VxQtUiUtil::GetScreen(&widget), right);
  widget.move(2800, 100);  // 200 on the left, 100 on the right
  QCOMPARE(VxQtUiUtil::GetScreen(&widget), left);
  // The part, not the corner: the top-left corner is on the left screen in both positions.
  widget.setGeometry(2990, 100, 300, 100);
  QCOMPARE(VxQtUiUtil::GetScreen(&widget), right);
}

void tst_UiUtilScreen::getScreen_equalParts_isTheEarlierScreen() {
  QScreen* left = add(QRect(2000, 0, 1000, 800));
  add(QRect(3000, 0, 1000, 800));
  QWidget widget;
  widget.setGeometry(2900, 100, 200, 100);
  QCOMPARE(VxQtUiUtil::GetScreen(&widget), left);
}

void tst_UiUtilScreen::getScreen_ofAChildWidget_goesByItsGlobalPosition() {
  QScreen* left = add(QRect(2000, 0, 1000, 800));
  QScreen* right = add(QRect(3000, 0, 1000, 800));
  QWidget window;
  window.setGeometry(2000, 0, 1500, 200);  // two thirds on the left screen
  QWidget* child = new QWidget(&window);
  child->setGeometry(1100, 10, 200, 50);  // at x 3100, on the right screen
  QCOMPARE(VxQtUiUtil::GetScreen(&window), left);
  QCOMPARE(VxQtUiUtil::GetScreen(child), right);
  QCOMPARE(VxQtUiUtil::GetScreenRect(child), QRect(3000, 0, 1000, 800));
}

void tst_UiUtilScreen::getScreen_ofAWidgetOnNoScreen_isThePrimaryScreen() {
  add(QRect(2000, 0, 1000, 800));
  QWidget widget;
  widget.setGeometry(-5000, -5000, 200, 100);
  QCOMPARE(VxQtUiUtil::GetScreen(&widget), QGuiApplication::primaryScreen());
  // Touching a screen's edge shares no area with it.
  widget.setGeometry(1800, 0, 200, 100);
  QCOMPARE(VxQtUiUtil::GetScreen(&widget), QGuiApplication::primaryScreen());
}

void tst_UiUtilScreen::getScreenRect_ofANullWidget_isThePrimaryScreen() {
  add(QRect(2000, 0, 1000, 800));
  QCOMPARE(VxQtUiUtil::GetScreen(nullptr), QGuiApplication::primaryScreen());
  QCOMPARE(VxQtUiUtil::GetScreenRect(nullptr), QGuiApplication::primaryScreen()->geometry());
  QCOMPARE(VxQtUiUtil::GetScreenAvailableRect(nullptr),
           QGuiApplication::primaryScreen()->availableGeometry());
}

void tst_UiUtilScreen::getScreen_afterItsScreenIsRemoved_isThePrimaryScreen() {
  QScreen* right = add(QRect(3000, 0, 1000, 800));
  QWidget widget;
  widget.setGeometry(3100, 100, 200, 100);
  QCOMPARE(VxQtUiUtil::GetScreen(&widget), right);
  RemoveVirtualScreen(right);
  QCOMPARE(VxQtUiUtil::GetScreen(&widget), QGuiApplication::primaryScreen());
  QCOMPARE(VxQtUiUtil::GetScreenRect(&widget), QRect(0, 0, 800, 600));
}

void tst_UiUtilScreen::screenRects_withNoScreenAtAll_areNull() {
  QWidget widget;
  widget.setGeometry(100, 100, 200, 100);
  test_support::ScopedNoScreens no_screens;
  QVERIFY(QGuiApplication::screens().isEmpty());
  QCOMPARE(VxQtUiUtil::GetScreen(&widget), static_cast<QScreen*>(nullptr));
  QVERIFY(VxQtUiUtil::GetScreenRect(&widget).isNull());
  QVERIFY(VxQtUiUtil::GetScreenAvailableRect(&widget).isNull());
  QVERIFY(VxQtUiUtil::GetScreenRect(nullptr).isNull());
  QVERIFY(VxQtUiUtil::GetScreenAvailableRect(nullptr).isNull());
  QVERIFY(VxQtUiUtil::GetWindowPixelRect(&widget).isNull());
  QCOMPARE(VxQtUiUtil::GetPointNearestScreen(QPoint(10, 10)), static_cast<QScreen*>(nullptr));
  QCOMPARE(VxQtUiUtil::TranslatePointFromQt(QPoint(10, 10)), QPoint(0, 0));
  // With nowhere to move it, a rect is left as it is.
  QCOMPARE(VxQtUiUtil::CorrectRect(QRect(5, 5, 10, 10), QMargins(1, 1, 1, 1)), QRect(5, 5, 10, 10));
}

void tst_UiUtilScreen::workingAndFitRects_followTheAvailableRect() {
  QScreen* screen = add(QRect(2000, 0, 1000, 800));
  SetVirtualScreenAvailableGeometry(screen, QRect(2000, 30, 1000, 700));
  QWidget widget;
  widget.setGeometry(2100, 100, 200, 100);
  QCOMPARE(VxQtUiUtil::GetScreenAvailableRect(&widget), QRect(2000, 30, 1000, 700));
  QCOMPARE(VxQtUiUtil::GetWorkingScreenRect(&widget), QRect(2000, 30, 1000, 700));
  QCOMPARE(VxQtUiUtil::GetWidgetFitScreenRect(&widget), QRect(2000, 30, 1000, 660));
}

void tst_UiUtilScreen::correctRect_withZeroMargins_changesNothing() {
  addCorrectRectScreen();
  QCOMPARE(VxQtUiUtil::CorrectRect(QRect(-5000, -5000, 100, 100), QMargins(0, 0, 0, 0)),
           QRect(-5000, -5000, 100, 100));
  QCOMPARE(VxQtUiUtil::CorrectRect(QRect(1900, 1000, 100, 100), QMargins()),
           QRect(1900, 1000, 100, 100));
}

void tst_UiUtilScreen::correctRect_movesTheRectInsideTheArea_data() {
  QTest::addColumn<int>("row");
  for (int i = 0; i < int(std::size(kCorrectRectRows)); ++i) {
    QTest::newRow(kCorrectRectRows[i].name) << i;
  }
}

void tst_UiUtilScreen::correctRect_movesTheRectInsideTheArea() {
  QFETCH(int, row);
  const CorrectRectRow& data = kCorrectRectRows[row];
  QScreen* screen = addCorrectRectScreen();
  QCOMPARE(QGuiApplication::screenAt(QCursor::pos()), screen);
  QCOMPARE(VxQtUiUtil::CorrectRect(data.rect, data.margins), data.expected);
}

void tst_UiUtilScreen::correctRect_wideRect_endsAtTheLeftMargin() {
  addCorrectRectScreen();
  const QRect corrected =
      VxQtUiUtil::CorrectRect(QRect(300, 100, 2500, 100), QMargins(15, 0, 25, 0));
  QCOMPARE(corrected.left(), 0 + 15);
  QCOMPARE(corrected.width(), 2500);
  QVERIFY(corrected.right() > 1919 - 25);  // overflows on the right
}

void tst_UiUtilScreen::correctRect_marginsNearTheIntLimits_stayDefined() {
  addCorrectRectScreen();
  constexpr int kMax = std::numeric_limits<int>::max();
  constexpr int kMin = std::numeric_limits<int>::min();
  // The left margin pushes the rect as far right as an int allows; the size is kept.
  const QRect pushed = VxQtUiUtil::CorrectRect(QRect(100, 100, 200, 100), QMargins(kMax, 0, 0, 0));
  QCOMPARE(pushed.right(), kMax);
  QCOMPARE(pushed.size(), QSize(200, 100));
  // Negative margins widen the area past the int range: nothing needs to move.
  QCOMPARE(VxQtUiUtil::CorrectRect(QRect(100, 100, 200, 100), QMargins(kMin, kMin, kMin, kMin)),
           QRect(100, 100, 200, 100));
  // A right margin of kMax moves the rect far left, and the left margin brings it back.
  const QRect back = VxQtUiUtil::CorrectRect(QRect(100, 100, 200, 100), QMargins(0, 0, kMax, 0));
  QCOMPARE(back, QRect(0, 100, 200, 100));
}

void tst_UiUtilScreen::correctRect_usesTheScreenUnderTheCursor() {
  add(QRect(2000, 0, 1000, 800));
  QScreen* right = add(QRect(3000, 0, 1000, 800));
  QCursor::setPos(3500, 400);
  QCOMPARE(QGuiApplication::screenAt(QCursor::pos()), right);
  // The rect lies on the left screen, but the cursor's screen is the one that counts.
  QCOMPARE(VxQtUiUtil::CorrectRect(QRect(2100, 100, 200, 100), QMargins(10, 10, 10, 10)),
           QRect(3010, 100, 200, 100));
}

void tst_UiUtilScreen::correctRect_cursorOnNoScreen_usesThePrimaryScreen() {
  add(QRect(2000, 0, 1000, 800));
  QCursor::setPos(-5000, -5000);
  QCOMPARE(QGuiApplication::screenAt(QCursor::pos()), static_cast<QScreen*>(nullptr));
  // The primary screen is (0, 0, 800, 600): right edge 799, less the margin.
  QCOMPARE(VxQtUiUtil::CorrectRect(QRect(2100, 100, 200, 100), QMargins(1, 1, 1, 1)),
           QRect(599, 100, 200, 100));
}

void tst_UiUtilScreen::centerRect_centresThenCorrects() {
  addCorrectRectScreen();
  // QRect::center() of (100, 100, 200, 100) is (199, 149).
  QCOMPARE(VxQtUiUtil::CenterRect(QRect(100, 100, 200, 100), QSize(50, 30), QMargins()),
           QRect(175, 135, 50, 30));
  QCOMPARE(VxQtUiUtil::CenterRect(QRect(1800, 0, 200, 100), QSize(400, 300), QMargins()),
           QRect(1700, -100, 400, 300));
  QCOMPARE(VxQtUiUtil::CenterRect(QRect(1800, 0, 200, 100), QSize(400, 300), QMargins(1, 1, 1, 1)),
           QRect(1519, 1, 400, 300));
}

void tst_UiUtilScreen::centerWidgetToRect_movesTheWidgetsCentre() {
  QWidget widget;
  widget.resize(40, 20);
  VxQtUiUtil::CenterWidgetToRect(&widget, QRect(100, 100, 101, 51));
  // Centre of the rect (150, 125); of a 40x20 rect at (x, y): (x + 19, y + 9).
  QCOMPARE(widget.pos(), QPoint(131, 116));
  QWidget parent;
  QWidget* child = new QWidget(&parent);
  child->resize(40, 20);
  VxQtUiUtil::CenterWidgetToRect(child, QRect(0, 0, 100, 100));
  QCOMPARE(child->pos(), QPoint(30, 40));  // no mapping: the rect is in parent coordinates
  VxQtUiUtil::CenterWidgetToRect(nullptr, QRect(0, 0, 100, 100));
}

void tst_UiUtilScreen::centerToWidget_truncatesHalvesAndMapsIntoTheParent() {
  QWidget target;
  target.setGeometry(100, 200, 301, 101);
  QWidget window;
  window.resize(50, 20);
  VxQtUiUtil::CenterToWidget(&window, &target);
  // (301 - 50) / 2 = 125, (101 - 20) / 2 = 40.
  QCOMPARE(window.pos(), QPoint(225, 240));

  // Larger than its target: a negative half truncated toward zero, (20 - 31) / 2 = -5.
  QWidget small_target;
  small_target.setGeometry(500, 500, 20, 20);
  QWidget large;
  large.resize(31, 31);
  VxQtUiUtil::CenterToWidget(&large, &small_target);
  QCOMPARE(large.pos(), QPoint(495, 495));

  QWidget parent;
  parent.setGeometry(50, 60, 600, 500);
  QWidget* child = new QWidget(&parent);
  child->resize(50, 20);
  VxQtUiUtil::CenterToWidget(child, &target);
  QCOMPARE(child->pos(), QPoint(225 - 50, 240 - 60));
  QCOMPARE(child->mapToGlobal(QPoint(0, 0)), QPoint(225, 240));

  const QPoint before = window.pos();
  VxQtUiUtil::CenterToWidget(&window, nullptr);
  VxQtUiUtil::CenterToWidget(nullptr, &target);
  QCOMPARE(window.pos(), before);
}

void tst_UiUtilScreen::verticalCenterToWidget_keepsX() {
  QWidget target;
  target.setGeometry(100, 200, 300, 100);
  QWidget parent;
  parent.setGeometry(50, 60, 600, 500);
  QWidget* child = new QWidget(&parent);
  child->setGeometry(7, 3, 50, 20);
  VxQtUiUtil::VerticalCenterToWidget(child, &target);
  QCOMPARE(child->pos(), QPoint(7, 240 - 60));
  VxQtUiUtil::VerticalCenterToWidget(child, nullptr);
  QCOMPARE(child->pos(), QPoint(7, 180));
}

void tst_UiUtilScreen::horizontalCenterToWidget_keepsY() {
  QWidget target;
  target.setGeometry(100, 200, 300, 100);
  QWidget parent;
  parent.setGeometry(50, 60, 600, 500);
  QWidget* child = new QWidget(&parent);
  child->setGeometry(7, 3, 50, 20);
  VxQtUiUtil::HorizontalCenterToWidget(child, &target);
  QCOMPARE(child->pos(), QPoint(225 - 50, 3));
  VxQtUiUtil::HorizontalCenterToWidget(nullptr, &target);
  QCOMPARE(child->pos(), QPoint(175, 3));
}

void tst_UiUtilScreen::pointNearestScreen_insideAScreen_isThatScreen() {
  QScreen* wide = add(QRect(2000, 0, 4000, 100));
  QScreen* next = add(QRect(6000, 0, 100, 100));
  // (5990, 50) lies in the wide screen near its right end: the small screen's centre (6050, 50)
  // is 60 away, the wide screen's (4000, 50) 1990.
  QCOMPARE(VxQtUiUtil::GetPointNearestScreen(QPoint(5990, 50)), wide);
  QCOMPARE(VxQtUiUtil::GetPointNearestScreen(QPoint(6000, 50)), next);
}

void tst_UiUtilScreen::pointNearestScreen_equidistant_isTheEarlierScreen() {
  QScreen* first = add(QRect(2000, 0, 1000, 1000));   // centre (2500, 500)
  QScreen* second = add(QRect(4000, 0, 1000, 1000));  // centre (4500, 500)
  QCOMPARE(VxQtUiUtil::GetPointNearestScreen(QPoint(3500, 500)), first);
  QCOMPARE(VxQtUiUtil::GetPointNearestScreen(QPoint(3501, 500)), second);
  QCOMPARE(VxQtUiUtil::GetPointNearestScreen(QPoint(3499, 2000)), first);
}

void tst_UiUtilScreen::pointNearestScreen_usesIntegerHalfCentres() {
  // Centres by integer halves: (2500, 5) for the first screen, (3500, 5) for the second, so
  // (3000, -100) is as far from both and the first wins. QRect::center() would put the second
  // screen's centre at (3499, 4), one pixel nearer, and pick it.
  QScreen* first = add(QRect(2000, 0, 1001, 10));
  QScreen* second = add(QRect(3000, 0, 1000, 10));
  QCOMPARE(second->geometry().center(), QPoint(3499, 4));
  QCOMPARE(VxQtUiUtil::GetPointNearestScreen(QPoint(3000, -100)), first);
  QCOMPARE(VxQtUiUtil::GetPointNearestScreen(QPoint(3001, -100)), second);
}

void tst_UiUtilScreen::translatePointFromQt_outsideEveryScreen_isTheOrigin() {
  add(QRect(1920, 0, 1280, 1024), 1.5);
  QCOMPARE(VxQtUiUtil::TranslatePointFromQt(QPoint(-10, -10)), QPoint(0, 0));
  QCOMPARE(VxQtUiUtil::TranslatePointFromQt(QPoint(3200, 5)), QPoint(0, 0));
  QCOMPARE(VxQtUiUtil::TranslatePointFromQt(QPoint(1000, 700)), QPoint(0, 0));
}

void tst_UiUtilScreen::translatePointFromQt_truncatesAndKeepsTheOriginUnscaled() {
  add(QRect(1920, 0, 1280, 1024), 1.5);
  QCOMPARE(VxQtUiUtil::TranslatePointFromQt(QPoint(1921, 1)), QPoint(1921, 1));
  QCOMPARE(VxQtUiUtil::TranslatePointFromQt(QPoint(1920, 0)), QPoint(1920, 0));
  QCOMPARE(VxQtUiUtil::TranslatePointFromQt(QPoint(1923, 3)), QPoint(1924, 4));
  // Edges are included: the last pixel column and row.
  QCOMPARE(VxQtUiUtil::TranslatePointFromQt(QPoint(3199, 1023)),
           QPoint(1920 + 1918, 1534));  // 1279 * 1.5 = 1918.5, 1023 * 1.5 = 1534.5
  // The platform's own screen at ratio 1 maps points to themselves.
  QCOMPARE(VxQtUiUtil::TranslatePointFromQt(QPoint(799, 599)), QPoint(799, 599));
}

void tst_UiUtilScreen::qPointFromNative_undoesTranslatePointFromQt_data() {
  QTest::addColumn<QRect>("geometry");
  QTest::addColumn<qreal>("ratio");
  QTest::newRow("ratio 1") << QRect(1920, 0, 1280, 1024) << qreal(1.0);
  QTest::newRow("ratio 1.5") << QRect(1920, 0, 1280, 1024) << qreal(1.5);
  QTest::newRow("ratio 2") << QRect(1920, 0, 1280, 1024) << qreal(2.0);
  QTest::newRow("ratio 1.5 below") << QRect(0, 1080, 1920, 1200) << qreal(1.5);
}

void tst_UiUtilScreen::qPointFromNative_undoesTranslatePointFromQt() {
  QFETCH(QRect, geometry);
  QFETCH(qreal, ratio);
  add(geometry, ratio);
  int checked = 0;
  auto check = [&](const QPoint& point) {
    const QPoint native = VxQtUiUtil::TranslatePointFromQt(point);
    const QPoint back = UIHelper::QPointFromNative(native);
    if (back != point || VxQtUiUtil::QPointFromNative(native) != back) {
      QTest::qFail(qPrintable(QStringLiteral("(%1, %2) -> (%3, %4) -> (%5, %6)")
                                  .arg(point.x())
                                  .arg(point.y())
                                  .arg(native.x())
                                  .arg(native.y())
                                  .arg(back.x())
                                  .arg(back.y())),
                   __FILE__, __LINE__);
      return false;
    }
    ++checked;
    return true;
  };
  for (int y = geometry.top(); y <= geometry.bottom(); y += 7) {
    for (int x = geometry.left(); x <= geometry.right(); x += 7) {
      if (!check(QPoint(x, y))) return;
    }
  }
  for (int x = geometry.left(); x <= geometry.right(); ++x) {
    if (!check(QPoint(x, geometry.top())) || !check(QPoint(x, geometry.bottom()))) return;
  }
  for (int y = geometry.top(); y <= geometry.bottom(); ++y) {
    if (!check(QPoint(geometry.left(), y)) || !check(QPoint(geometry.right(), y))) return;
  }
  QVERIFY(checked > 10000);
}

void tst_UiUtilScreen::windowPixelRect_ofAChild_isNull() {
  QWidget parent;
  parent.setGeometry(10, 10, 300, 200);
  QWidget* child = new QWidget(&parent);
  child->setGeometry(5, 5, 50, 50);
  QVERIFY(VxQtUiUtil::GetWindowPixelRect(child).isNull());
  QVERIFY(VxQtUiUtil::GetWindowPixelRect(nullptr).isNull());
  QCOMPARE(VxQtUiUtil::GetWindowPixelRect(&parent), QRect(10, 10, 300, 200));
}

void tst_UiUtilScreen::windowPixelRect_roundsPositionAndSize() {
  QScreen* screen = add(QRect(1920, 0, 1280, 1024), 1.5);
  QWidget window;
  window.setGeometry(1921, 1, 101, 51);
  QCOMPARE(window.screen(), screen);
  // Position and size scaled as a whole and rounded: 2881.5 -> 2882, 1.5 -> 2, 151.5 -> 152,
  // 76.5 -> 77. TranslatePointFromQt keeps the origin and truncates: (1921, 1).
  QCOMPARE(VxQtUiUtil::GetWindowPixelRect(&window), QRect(2882, 2, 152, 77));
}

void tst_UiUtilScreen::dpiScales_comeFromTheFramework() {
  add(QRect(1920, 0, 1280, 1024), 2.0);
  QWidget window;
  window.setGeometry(2000, 100, 100, 100);
  QCOMPARE(VxQtUiUtil::GetWidgetScreenDPI(&window), 2.0f);
  QCOMPARE(VxQtUiUtil::GetWidgetScreenDPI(&window), DPIHelper::GetWidgetScreenDPI(&window));
  QCOMPARE(VxQtUiUtil::GetDPIScale(), DPIHelper::GetStartUpDPI());
  QCOMPARE(VxQtUiUtil::GetDPIScale(), 1.0f);  // the platform's own screen, primary at start
  QCOMPARE(VxQtUiUtil::GetWidgetScreenDPI(nullptr), 1.0f);
}

QTEST_MAIN(tst_UiUtilScreen)
#include "tst_ui_util_screen.moc"
