// The library at Qt's own scale factor: the HiDPI image choice, the pixel and native-point
// geometry, the pixmap utilities and the paint-rect rectangles. The suite is registered once per
// factor (tests/CMakeLists.txt: none, then QT_SCALE_FACTOR 1.25, 1.5 and 2), and every row
// states its answer for each of the four factors; the factor in force picks the column.
//
// What the factor does, on Qt 5.15 and Qt 6 alike (initTestCase checks the first two):
// - QT_SCALE_FACTOR is honoured as it is, fractional too, without Qt::AA_EnableHighDpiScaling
//   on Qt 5.15; Qt 6's rounding policy (PassThrough) concerns the platform's factors, not this
//   one. Every screen's devicePixelRatio() is its platform ratio times the factor.
// - A screen keeps its top-left and has its size divided by the factor, rounded to nearest: the
//   monitor at (1920, 0) of 1280 x 1024 platform pixels is (1920, 0, 1024 x 819) at 1.25, so
//   logical space gets gaps between screens.
// - A window shown on the platform's screen (ratio 1) paints at the factor.
// Where the two Qt versions differ, a row says so with kQt6 and a comment naming the change.
//
// The desktop of every test: the offscreen platform's screen, primary, at the origin (800 x 600
// platform pixels; Qt 6's own default is 800 x 800, which the rows also fit), a monitor left of
// it, one right of it, and a monitor of platform ratio 1.5 far right.
#include <qpa/qplatformwindow.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>
#include <QScreen>
#include <QTemporaryDir>
#include <QWidget>
#include <QWindow>
#include <QtTest>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

#include "base/singleton/scope_singleton.h"
#include "qt_util/image_utils.h"
#include "qt_util/paint_rect_helper.h"
#include "qt_util/qt_ui_custom_theme_helper.h"
#include "qt_util/ui_util.h"
#include "support/stub_theme_manager.h"
#include "support/virtual_screen.h"
#include "ui/dpi_helper.h"
#include "ui/ui_helper.h"

namespace {

const QString kTheme = QStringLiteral(QT_UTIL_TEST_DATA_DIR "/theme");
const QString kRounded = QStringLiteral(QT_UTIL_TEST_DATA_DIR "/rounded");

// Qt 6 answers two questions of the image choice differently; see the rows that use it.
constexpr bool kQt6 = QT_VERSION >= QT_VERSION_CHECK(6, 0, 0);

// The factors the suite is registered with, in the order of every row's columns.
constexpr std::array<double, 4> kFactors = {1.0, 1.25, 1.5, 2.0};
int g_column = -1;  // the column of the factor in force, set by initTestCase

// One expected answer per factor, in the order of kFactors.
template <typename T>
using PerFactor = std::array<T, 4>;

template <typename T>
const T& AtFactor(const PerFactor<T>& answers) {
  return answers[size_t(g_column)];
}

double Factor() {
  return kFactors[size_t(g_column)];
}

// One data row per entry of a table of rows, named by the entry's name; the test function
// fetches its index as "row".
template <typename Row, size_t N>
void AddRows(const Row (&rows)[N]) {
  QTest::addColumn<int>("row");
  for (size_t i = 0; i < N; ++i) QTest::newRow(rows[i].name) << int(i);
}

// The monitors beside the platform's screen, as platform geometry and ratio.
enum class Monitor { kPlatform, kLeft, kRight, kHiDpi };
const QRect kLeftMonitor(-1280, 0, 1280, 1024);
const QRect kRightMonitor(1920, 0, 1280, 1024);
const QRect kHiDpiMonitor(5000, 0, 2560, 1440);
constexpr qreal kHiDpiMonitorRatio = 1.5;

// The icon fixtures of data/theme/light (made by data/theme/make_images.sh): each scale has its
// own colour, so one pixel tells which file was loaded. Every one is 16 logical pixels.
struct Fixture {
  const char* file;
  int scale;
  QRgb colour;
};
const Fixture kFixtures[] = {{"icon.png", 1, qRgb(0xD0, 0x30, 0x30)},
                             {"icon@2x.png", 2, qRgb(0x30, 0xA0, 0x30)},
                             {"icon@3x.png", 3, qRgb(0x30, 0x50, 0xD0)},
                             {"badge.png", 1, qRgb(0x80, 0x80, 0x80)},
                             {"badge@3x.png", 3, qRgb(0x20, 0x20, 0x20)}};

const Fixture* FindFixture(const QString& file) {
  for (const Fixture& fixture : kFixtures) {
    if (file == QLatin1String(fixture.file)) return &fixture;
  }
  return nullptr;
}

QRgb CentreColour(const QPixmap& pixmap) {
  const QImage image = pixmap.toImage();
  return image.pixel(image.width() / 2, image.height() / 2) | 0xFF000000u;
}

// Where a row's window is. Shown windows paint at the factor; a window not shown yet reports the
// ratio Qt gives an uncreated window.
enum class Placement { kShownOnPlatform, kUnshownOnHiDpi, kUnshownBesideHiDpi };

// The same device pixels at another ratio.
QPixmap AtRatio(const QPixmap& pixmap, qreal ratio) {
  QPixmap copy = pixmap.copy();
  copy.setDevicePixelRatio(ratio);
  return copy;
}

// Pixels only, for comparing pixmaps of different ratios.
QImage Pixels(const QPixmap& pixmap) {
  QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
  image.setDevicePixelRatio(1);
  return image;
}

// How opaque a picture is in all: less, the more its corners are cut.
qint64 AlphaSum(const QPixmap& pixmap) {
  const QImage image = Pixels(pixmap);
  qint64 sum = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) sum += qAlpha(image.pixel(x, y));
  }
  return sum;
}

// A widget showing the rounded-tile picture over its whole area: grabbed, it gives a real
// picture at the ratio of the screen it paints for.
class PictureWidget : public QWidget {
 public:
  PictureWidget() : picture_(kRounded + "/tile@2x.png") {}

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
    painter.drawPixmap(rect(), picture_);
  }

 private:
  QPixmap picture_;
};

// A meeting window, panel and video tile, as the paint-rect helper sees them in a client.
struct Meeting {
  std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
  QWidget* panel = new QWidget(window.get());
  QWidget* tile = new QWidget(panel);
};

}  // namespace

class tst_ScaleFactor : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();
  void init();
  void cleanup();
  void cleanupTestCase();

  // HiDPI image choice
  void hdpiImage_followsTheWindowsRatio_data();
  void hdpiImage_followsTheWindowsRatio();
  void hdpiImageSvg_rendersAtTheStepOfTheWindowsRatio_data();
  void hdpiImageSvg_rendersAtTheStepOfTheWindowsRatio();

  // Pixel and native-point geometry
  void windowPixelRect_roundsHalfUpOnBothBuilds_data();
  void windowPixelRect_roundsHalfUpOnBothBuilds();
  void windowPixelRect_ofAShownWindow_isWhereItsPlatformWindowIs();
  void translatePointFromQt_truncatesTowardZero_data();
  void translatePointFromQt_truncatesTowardZero();
  void qPointFromNative_lastNativeColumn_isTheLastLogicalOne_data();
  void qPointFromNative_lastNativeColumn_isTheLastLogicalOne();
  void qPointFromNative_undoesTranslatePointFromQtOnEveryScreen_data();
  void qPointFromNative_undoesTranslatePointFromQtOnEveryScreen();
  void dpiScales_includeTheFactor();

  // Pixmap utilities
  void pixmapUtilities_keepAFractionalRatio();

  // Paint-rect rectangles
  void paintRect_isLogicalAtEveryFactor_data();
  void paintRect_isLogicalAtEveryFactor();

 private:
  QScreen* monitor(Monitor which) const;
  // A top-level window at `placement`, hidden or shown and exposed; null if it could not show.
  std::unique_ptr<QWidget> placedWindow(Placement placement) const;

  QTemporaryDir images_;
  std::vector<QScreen*> monitors_;
};

void tst_ScaleFactor::initTestCase() {
  const QByteArray requested = qgetenv("QT_SCALE_FACTOR");
  const double factor = requested.isEmpty() ? 1.0 : requested.toDouble();
  for (size_t i = 0; i < kFactors.size(); ++i) {
    if (factor == kFactors[i]) g_column = int(i);
  }
  QVERIFY2(g_column >= 0, ("no expected answers for QT_SCALE_FACTOR=" + requested).constData());
  // The factor reaches the screens unrounded on both Qt versions (Qt 5.15's default rounding
  // policy, Round, concerns the platform's factors only); otherwise the rows below would be
  // checked against the wrong column.
  QCOMPARE(QGuiApplication::primaryScreen()->devicePixelRatio(), Factor());

  // The raster lookup takes names without extension: the fixtures go in under both names.
  QVERIFY(images_.isValid());
  for (const Fixture& fixture : kFixtures) {
    const QString file = QLatin1String(fixture.file);
    QVERIFY(QFile::copy(kTheme + "/light/" + file, images_.filePath(file)));
    QVERIFY(QFile::copy(kTheme + "/light/" + file, images_.filePath(file.chopped(4))));
  }
  QVERIFY(QFile::copy(kTheme + "/light/logo.svg", images_.filePath("logo.svg")));
}

void tst_ScaleFactor::init() {
  QTUICustomThemeHelper::SharedInstance()->SetThemeManager(
      std::make_unique<test_support::StubThemeManager>());
  QPixmapCache::clear();
  monitors_ = {test_support::AddVirtualScreen(kLeftMonitor, 1.0, "left"),
               test_support::AddVirtualScreen(kRightMonitor, 1.0, "right"),
               test_support::AddVirtualScreen(kHiDpiMonitor, kHiDpiMonitorRatio, "hidpi")};
}

void tst_ScaleFactor::cleanup() {
  for (QScreen* screen : monitors_) test_support::RemoveVirtualScreen(screen);
  monitors_.clear();
  base::EndSingletonScope();
}

void tst_ScaleFactor::cleanupTestCase() {
  base::EndSingletonScope();
}

QScreen* tst_ScaleFactor::monitor(Monitor which) const {
  switch (which) {
    case Monitor::kPlatform:
      return QGuiApplication::primaryScreen();
    case Monitor::kLeft:
      return monitors_[0];
    case Monitor::kRight:
      return monitors_[1];
    case Monitor::kHiDpi:
      return monitors_[2];
  }
  return nullptr;
}

std::unique_ptr<QWidget> tst_ScaleFactor::placedWindow(Placement placement) const {
  auto window = std::make_unique<QWidget>();
  window->resize(120, 90);
  switch (placement) {
    case Placement::kShownOnPlatform:
      window->move(10, 10);
      window->show();
      if (!QTest::qWaitForWindowExposed(window.get())) return nullptr;
      break;
    case Placement::kUnshownOnHiDpi:
      window->move(monitor(Monitor::kHiDpi)->geometry().topLeft() + QPoint(40, 40));
      break;
    case Placement::kUnshownBesideHiDpi:
      window->move(10, 10);
      break;
  }
  return window;
}

namespace {

struct ImageRow {
  const char* name;
  Placement placement;
  const char* image;  // the name asked for, without "@<n>x" and extension
  PerFactor<qreal> window_ratio;
  PerFactor<const char*> file;  // the variant chosen
};

// Above 2 the 3x file is tried first; up to 2 only the 2x file; the plain file is the fallback.
// 1.25 and 1.5 therefore take the 2x file, which Qt scales down when painting it.
const ImageRow kImageRows[] = {
    {"shown on the platform screen, icon",
     Placement::kShownOnPlatform,
     "icon",
     {1.0, 1.25, 1.5, 2.0},
     {"icon@2x.png", "icon@2x.png", "icon@2x.png", "icon@2x.png"}},
    {"shown on the platform screen, badge without 2x",
     Placement::kShownOnPlatform,
     "badge",
     {1.0, 1.25, 1.5, 2.0},
     {"badge.png", "badge.png", "badge.png", "badge.png"}},
    {"not shown, on the 1.5 monitor, icon",
     Placement::kUnshownOnHiDpi,
     "icon",
     {1.5, 1.875, 2.25, 3.0},
     {"icon@2x.png", "icon@2x.png", "icon@3x.png", "icon@3x.png"}},
    {"not shown, on the 1.5 monitor, badge without 2x",
     Placement::kUnshownOnHiDpi,
     "badge",
     {1.5, 1.875, 2.25, 3.0},
     {"badge.png", "badge.png", "badge@3x.png", "badge@3x.png"}},
    // A window not created yet has the largest ratio of all screens on Qt 5.15 (QWidget asks
    // the application); Qt 6 gives it the ratio of the screen it is placed on.
    {"not shown, on the platform screen beside the 1.5 monitor, icon",
     Placement::kUnshownBesideHiDpi, "icon",
     kQt6 ? PerFactor<qreal>{1.0, 1.25, 1.5, 2.0} : PerFactor<qreal>{1.5, 1.875, 2.25, 3.0},
     kQt6 ? PerFactor<const char*>{"icon@2x.png", "icon@2x.png", "icon@2x.png", "icon@2x.png"}
          : PerFactor<const char*>{"icon@2x.png", "icon@2x.png", "icon@3x.png", "icon@3x.png"}},
};

}  // namespace

void tst_ScaleFactor::hdpiImage_followsTheWindowsRatio_data() {
  AddRows(kImageRows);
}

void tst_ScaleFactor::hdpiImage_followsTheWindowsRatio() {
  QFETCH(int, row);
  const ImageRow& expected = kImageRows[row];
  const std::unique_ptr<QWidget> window = placedWindow(expected.placement);
  QVERIFY(window);
  auto* child = new QWidget(window.get());
  QCOMPARE(window->devicePixelRatioF(), AtFactor(expected.window_ratio));

  const QString file = QLatin1String(AtFactor(expected.file));
  const QString image = QLatin1String(expected.image);
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(child, images_.filePath(image + ".png"), ".png"),
           images_.filePath(file));

  const Fixture* fixture = FindFixture(file);
  QVERIFY(fixture);
  const QPixmap pixmap = VxQtUiUtil::GetHdpiImage(child, images_.filePath(image));
  QCOMPARE(CentreColour(pixmap), fixture->colour);
  QCOMPARE(pixmap.devicePixelRatio(), qreal(fixture->scale));
  // Whichever file: 16 logical pixels, so a layout does not change with the file chosen.
  QCOMPARE(pixmap.size(), QSize(16, 16) * fixture->scale);
}

namespace {

struct SvgRow {
  const char* name;
  Placement placement;
  PerFactor<QSize> size;  // for 24 x 20 logical pixels
  PerFactor<qreal> ratio;
};

const SvgRow kSvgRows[] = {
    {"shown on the platform screen",
     Placement::kShownOnPlatform,
     {QSize(48, 40), QSize(48, 40), QSize(48, 40), QSize(48, 40)},
     {2.0, 2.0, 2.0, 2.0}},
    {"not shown, on the 1.5 monitor",
     Placement::kUnshownOnHiDpi,
     {QSize(48, 40), QSize(48, 40), QSize(72, 60), QSize(72, 60)},
     {2.0, 2.0, 3.0, 3.0}},
    // Qt 6 gives a window not created yet its own screen's ratio, Qt 5.15 the largest one.
    {"not shown, on the platform screen beside the 1.5 monitor", Placement::kUnshownBesideHiDpi,
     kQt6 ? PerFactor<QSize>{QSize(48, 40), QSize(48, 40), QSize(48, 40), QSize(48, 40)}
          : PerFactor<QSize>{QSize(48, 40), QSize(48, 40), QSize(72, 60), QSize(72, 60)},
     kQt6 ? PerFactor<qreal>{2.0, 2.0, 2.0, 2.0} : PerFactor<qreal>{2.0, 2.0, 3.0, 3.0}},
};

}  // namespace

void tst_ScaleFactor::hdpiImageSvg_rendersAtTheStepOfTheWindowsRatio_data() {
  AddRows(kSvgRows);
}

void tst_ScaleFactor::hdpiImageSvg_rendersAtTheStepOfTheWindowsRatio() {
  QFETCH(int, row);
  const SvgRow& expected = kSvgRows[row];
  const std::unique_ptr<QWidget> window = placedWindow(expected.placement);
  QVERIFY(window);
  const QPixmap pixmap =
      VxQtUiUtil::GetHdpiImageSvg(window.get(), images_.filePath("logo.svg"), QSize(24, 20));
  QCOMPARE(pixmap.size(), AtFactor(expected.size));
  QCOMPARE(pixmap.devicePixelRatio(), AtFactor(expected.ratio));
}

namespace {

struct PixelRectRow {
  const char* name;
  QRect geometry;  // of a window not shown; its screen is the one its centre is on
  PerFactor<QRect> expected;
};

// Each coordinate and dimension times the screen's ratio, rounded half up (toward +infinity),
// the int range kept.
const PixelRectRow kPixelRectRows[] = {
    {"platform screen",
     QRect(10, 10, 101, 51),
     {QRect(10, 10, 101, 51), QRect(13, 13, 126, 64), QRect(15, 15, 152, 77),
      QRect(20, 20, 202, 102)}},
    {"platform screen, odd values",
     QRect(3, 7, 33, 17),
     {QRect(3, 7, 33, 17), QRect(4, 9, 41, 21), QRect(5, 11, 50, 26), QRect(6, 14, 66, 34)}},
    // -1001 * 1.5 = -1501.5 rounds up to -1501 on both builds, as Qt 5.15's qRound does; Qt 6's
    // qRound, and so its QPoint * qreal, rounds half away from zero, to -1502.
    {"left monitor, negative halves",
     QRect(-1001, 1, 101, 51),
     {QRect(-1001, 1, 101, 51), QRect(-1251, 1, 126, 64), QRect(-1501, 2, 152, 77),
      QRect(-2002, 2, 202, 102)}},
    {"off every screen above the left monitor",
     QRect(-1001, -301, 101, 51),
     {QRect(-1001, -301, 101, 51), QRect(-1251, -376, 126, 64), QRect(-1501, -451, 152, 77),
      QRect(-2002, -602, 202, 102)}},
    // On no screen: the primary screen's ratio. Past int's range the position is kept where the
    // rect's last pixel is still an int, and the size is kept.
    {"far right, past the int range",
     QRect(1500000000, -7, 100, 100),
     {QRect(1500000000, -7, 100, 100), QRect(1875000000, -9, 125, 125),
      // From the corners: QRect(x, y, w, h) would overflow computing the right edge itself.
      QRect(QPoint(2147483647 - 149, -10), QPoint(2147483647, 139)),
      QRect(QPoint(2147483647 - 199, -14), QPoint(2147483647, 185))}},
};

}  // namespace

void tst_ScaleFactor::windowPixelRect_roundsHalfUpOnBothBuilds_data() {
  AddRows(kPixelRectRows);
}

void tst_ScaleFactor::windowPixelRect_roundsHalfUpOnBothBuilds() {
  QFETCH(int, row);
  const PixelRectRow& expected = kPixelRectRows[row];
  QWidget window;
  window.setGeometry(expected.geometry);
  QCOMPARE(window.geometry(), expected.geometry);
  QCOMPARE(VxQtUiUtil::GetWindowPixelRect(&window), AtFactor(expected.expected));
}

void tst_ScaleFactor::windowPixelRect_ofAShownWindow_isWhereItsPlatformWindowIs() {
  // On the screen at the origin, the rect in device pixels is where the window system has the
  // window and how large its buffer is.
  QWidget window;
  window.setGeometry(10, 10, 101, 51);
  window.show();
  QVERIFY(QTest::qWaitForWindowExposed(&window));
  QCOMPARE(window.geometry(), QRect(10, 10, 101, 51));
  const PerFactor<QRect> expected = {QRect(10, 10, 101, 51), QRect(13, 13, 126, 64),
                                     QRect(15, 15, 152, 77), QRect(20, 20, 202, 102)};
  QCOMPARE(VxQtUiUtil::GetWindowPixelRect(&window), AtFactor(expected));
  QCOMPARE(window.windowHandle()->handle()->geometry(), AtFactor(expected));
}

namespace {

// A point and what it becomes, logical to native or native to logical.
struct PointRow {
  const char* name;
  QPoint point;
  PerFactor<QPoint> expected;
};

// origin + (point - origin) * ratio on the first screen holding the point, truncated toward
// zero: down right of the origin of the desktop, up left of it.
const PointRow kPointRows[] = {
    {"platform screen, small",
     QPoint(3, 3),
     {QPoint(3, 3), QPoint(3, 3), QPoint(4, 4), QPoint(6, 6)}},
    {"platform screen, inner corner",
     QPoint(399, 299),
     {QPoint(399, 299), QPoint(498, 373), QPoint(598, 448), QPoint(798, 598)}},
    // -1280 + 279 * 1.25 = -931.25 becomes -931, -1280 + 418.5 = -861.5 becomes -861.
    {"left monitor",
     QPoint(-1001, 1),
     {QPoint(-1001, 1), QPoint(-931, 1), QPoint(-861, 1), QPoint(-722, 2)}},
    {"right monitor",
     QPoint(1921, 1),
     {QPoint(1921, 1), QPoint(1921, 1), QPoint(1921, 1), QPoint(1922, 2)}},
    // The right monitor is 1280, 1024, 853 and 640 logical pixels wide: at 2 the point falls in
    // the gap the factor opens between screens, and is on none.
    {"right monitor, or the gap after it",
     QPoint(2600, 5),
     {QPoint(2600, 5), QPoint(2770, 6), QPoint(2940, 7), QPoint(0, 0)}},
};

}  // namespace

void tst_ScaleFactor::translatePointFromQt_truncatesTowardZero_data() {
  AddRows(kPointRows);
}

void tst_ScaleFactor::translatePointFromQt_truncatesTowardZero() {
  QFETCH(int, row);
  const PointRow& expected = kPointRows[row];
  const QPoint native = VxQtUiUtil::TranslatePointFromQt(expected.point);
  QCOMPARE(native, AtFactor(expected.expected));
  if (native != QPoint(0, 0)) {
    QCOMPARE(VxQtUiUtil::QPointFromNative(native), expected.point);
  }
}

namespace {

// A screen's native span ends past its last logical pixel's device pixel (1023 * 1.25 ends at
// 1278.75 of 1280): the native points beyond map to the last logical pixel.
const PointRow kNativeRows[] = {
    {"right monitor, last column",
     QPoint(3199, 0),
     {QPoint(3199, 0), QPoint(2943, 0), QPoint(2772, 0), QPoint(2559, 0)}},
    {"left monitor, last row",
     QPoint(-1280, 1023),
     {QPoint(-1280, 1023), QPoint(-1280, 818), QPoint(-1280, 682), QPoint(-1280, 511)}},
    {"platform screen, last column",
     QPoint(799, 10),
     {QPoint(799, 10), QPoint(639, 8), QPoint(532, 7), QPoint(399, 5)}},
};

}  // namespace

void tst_ScaleFactor::qPointFromNative_lastNativeColumn_isTheLastLogicalOne_data() {
  AddRows(kNativeRows);
}

void tst_ScaleFactor::qPointFromNative_lastNativeColumn_isTheLastLogicalOne() {
  QFETCH(int, row);
  const PointRow& expected = kNativeRows[row];
  QCOMPARE(VxQtUiUtil::QPointFromNative(expected.point), AtFactor(expected.expected));
  QCOMPARE(UIHelper::QPointFromNative(expected.point), AtFactor(expected.expected));
}

void tst_ScaleFactor::qPointFromNative_undoesTranslatePointFromQtOnEveryScreen_data() {
  QTest::addColumn<int>("screen");
  QTest::newRow("platform") << int(Monitor::kPlatform);
  QTest::newRow("left") << int(Monitor::kLeft);
  QTest::newRow("right") << int(Monitor::kRight);
  QTest::newRow("1.5 monitor") << int(Monitor::kHiDpi);
}

void tst_ScaleFactor::qPointFromNative_undoesTranslatePointFromQtOnEveryScreen() {
  QFETCH(int, screen);
  const QRect geometry = monitor(Monitor(screen))->geometry();
  // Every pixel of the first and last row and column, and a grid inside.
  std::vector<QPoint> points;
  for (int x = geometry.left(); x <= geometry.right(); ++x) {
    points.insert(points.end(), {QPoint(x, geometry.top()), QPoint(x, geometry.bottom())});
  }
  for (int y = geometry.top(); y <= geometry.bottom(); ++y) {
    points.insert(points.end(), {QPoint(geometry.left(), y), QPoint(geometry.right(), y)});
  }
  for (int y = geometry.top(); y <= geometry.bottom(); y += 13) {
    for (int x = geometry.left(); x <= geometry.right(); x += 11) points.emplace_back(x, y);
  }
  for (const QPoint& point : points) {
    const QPoint native = VxQtUiUtil::TranslatePointFromQt(point);
    const QPoint back = VxQtUiUtil::QPointFromNative(native);
    if (back != point) {
      QFAIL(qPrintable(QStringLiteral("(%1, %2) -> (%3, %4) -> (%5, %6)")
                           .arg(point.x())
                           .arg(point.y())
                           .arg(native.x())
                           .arg(native.y())
                           .arg(back.x())
                           .arg(back.y())));
    }
  }
  QVERIFY(points.size() > 2000);
}

void tst_ScaleFactor::dpiScales_includeTheFactor() {
  // The primary screen was the platform's when the process first asked.
  QCOMPARE(VxQtUiUtil::GetDPIScale(), float(Factor()));
  QCOMPARE(VxQtUiUtil::GetWidgetScreenDPI(nullptr), float(Factor()));
  QCOMPARE(DPIHelper::GetStartUpDPI(), float(Factor()));

  const std::unique_ptr<QWidget> shown = placedWindow(Placement::kShownOnPlatform);
  QVERIFY(shown);
  QCOMPARE(VxQtUiUtil::GetWidgetScreenDPI(shown.get()), float(Factor()));
  const std::unique_ptr<QWidget> on_hidpi = placedWindow(Placement::kUnshownOnHiDpi);
  const PerFactor<float> hidpi = {1.5f, 1.875f, 2.25f, 3.0f};
  QCOMPARE(VxQtUiUtil::GetWidgetScreenDPI(on_hidpi.get()), AtFactor(hidpi));
  // The screen counts, not the ratio Qt 5.15 gives the window before it exists.
  const std::unique_ptr<QWidget> beside = placedWindow(Placement::kUnshownBesideHiDpi);
  QCOMPARE(VxQtUiUtil::GetWidgetScreenDPI(beside.get()), float(Factor()));
}

void tst_ScaleFactor::pixmapUtilities_keepAFractionalRatio() {
  // A picture as a widget paints it for its screen: 40 x 30 logical pixels at the factor.
  PictureWidget widget;
  widget.setGeometry(10, 10, 40, 30);
  widget.show();
  QVERIFY(QTest::qWaitForWindowExposed(&widget));
  const QPixmap picture = widget.grab();
  const PerFactor<QSize> device_size = {QSize(40, 30), QSize(50, 38), QSize(60, 45), QSize(80, 60)};
  QCOMPARE(picture.size(), AtFactor(device_size));
  QCOMPARE(picture.devicePixelRatio(), Factor());
  const QPixmap plain = AtRatio(picture, 1.0);

  // Each result keeps the ratio and the device pixels' size, and has the pixels of the same
  // picture at ratio 1 with the radius in device pixels: radius x ratio, fractional or not.
  const auto check = [&](const QPixmap& result, const QPixmap& at_ratio_1) {
    QCOMPARE(result.devicePixelRatio(), Factor());
    QCOMPARE(result.size(), picture.size());
    QCOMPARE(Pixels(result), Pixels(at_ratio_1));
  };
  const PerFactor<float> radius_8 = {8.0f, 10.0f, 12.0f, 16.0f};
  const PerFactor<float> radius_7 = {7.0f, 8.75f, 10.5f, 14.0f};
  check(QTImageUtils::MakeRoundRectImage(picture, 8),
        QTImageUtils::MakeRoundRectImage(plain, AtFactor(radius_8)));
  check(QTImageUtils::MakeRoundRectImage(picture, 7),
        QTImageUtils::MakeRoundRectImage(plain, AtFactor(radius_7)));
  check(VxQtUiUtil::GetHasRadiusPixmap(picture, 8),
        VxQtUiUtil::GetHasRadiusPixmap(plain, int(AtFactor(radius_8))));
  // GetHasRadiusPixmap takes whole logical pixels, yet its device radius stays fractional: at
  // 1.25 and 1.5 radius 7 clears more than the whole radius below and less than the one above.
  const QPixmap radius_7_result = VxQtUiUtil::GetHasRadiusPixmap(picture, 7);
  const float device_radius_7 = AtFactor(radius_7);
  if (device_radius_7 == std::floor(device_radius_7)) {
    check(radius_7_result, VxQtUiUtil::GetHasRadiusPixmap(plain, int(device_radius_7)));
  } else {
    const int below = int(std::floor(device_radius_7));
    QVERIFY(AlphaSum(radius_7_result) < AlphaSum(VxQtUiUtil::GetHasRadiusPixmap(plain, below)));
    QVERIFY(AlphaSum(radius_7_result) > AlphaSum(VxQtUiUtil::GetHasRadiusPixmap(plain, below + 1)));
  }
  // Half the height in device pixels, whatever the ratio: 15, 19, 22, 30.
  const PerFactor<float> half_height = {15.0f, 19.0f, 22.0f, 30.0f};
  check(QTImageUtils::MakeRoundImage(picture),
        QTImageUtils::MakeRoundRectImage(plain, AtFactor(half_height)));
  check(QTImageUtils::MakeTintImage(picture, QColor(200, 30, 30)),
        QTImageUtils::MakeTintImage(plain, QColor(200, 30, 30)));

  // The corners really are cut, at every ratio.
  const QImage rounded = Pixels(QTImageUtils::MakeRoundRectImage(picture, 7));
  QCOMPARE(qAlpha(rounded.pixel(0, 0)), 0);
  QCOMPARE(qAlpha(rounded.pixel(rounded.width() - 1, rounded.height() - 1)), 0);
  QCOMPARE(qAlpha(rounded.pixel(rounded.width() / 2, rounded.height() / 2)), 255);
}

namespace {

struct PaintRectRow {
  const char* name;
  QPoint window;  // top-left of the meeting window
  QRect panel;    // in the window
  QRect tile;     // in the panel
  PerFactor<QRect> expected;
};

// The rectangle is logical: the same numbers at every factor, on both builds, although Qt 6
// maps a child to global coordinates through the native (device-pixel) position of its window.
const PaintRectRow kPaintRectRows[] = {
    {"even",
     QPoint(100, 80),
     QRect(20, 30, 400, 300),
     QRect(5, 6, 160, 90),
     {QRect(125, 116, 160, 90), QRect(125, 116, 160, 90), QRect(125, 116, 160, 90),
      QRect(125, 116, 160, 90)}},
    {"odd",
     QPoint(101, 83),
     QRect(21, 31, 401, 301),
     QRect(7, 5, 161, 91),
     {QRect(129, 119, 161, 91), QRect(129, 119, 161, 91), QRect(129, 119, 161, 91),
      QRect(129, 119, 161, 91)}},
};

}  // namespace

void tst_ScaleFactor::paintRect_isLogicalAtEveryFactor_data() {
  AddRows(kPaintRectRows);
}

void tst_ScaleFactor::paintRect_isLogicalAtEveryFactor() {
  QFETCH(int, row);
  const PaintRectRow& expected = kPaintRectRows[row];
  Meeting meeting;
  meeting.window->setGeometry(QRect(expected.window, QSize(640, 480)));
  meeting.panel->setGeometry(expected.panel);
  meeting.tile->setGeometry(expected.tile);
  meeting.window->show();
  QVERIFY(QTest::qWaitForWindowExposed(meeting.window.get()));
  meeting.window->activateWindow();
  QVERIFY(QTest::qWaitForWindowActive(meeting.window.get()));

  std::vector<QRect> visible_rects;
  int hidden_reports = 0;
  QTPaintRectHelper helper;
  helper.BindWidget(meeting.tile, [&](QWidget*, bool visible, QRect rect) {
    if (visible) {
      visible_rects.push_back(rect);
    } else {
      ++hidden_reports;
    }
  });
  QCOMPARE(int(visible_rects.size()), 1);
  QCOMPARE(visible_rects.back(), AtFactor(expected.expected));

  // A move of one logical pixel moves the rectangle by exactly one, with no pixel lost to the
  // device-pixel position in between.
  for (int step = 1; step <= 3; ++step) {
    // setGeometry, not move: move() places the frame, whose margins the factor scales.
    meeting.window->setGeometry(QRect(expected.window + QPoint(step, step), QSize(640, 480)));
    QTRY_COMPARE(int(visible_rects.size()), 1 + step);
    QCOMPARE(visible_rects.back(), AtFactor(expected.expected).translated(step, step));
  }
  QCOMPARE(hidden_reports, 0);
}

QTEST_MAIN(tst_ScaleFactor)
#include "tst_scale_factor.moc"
