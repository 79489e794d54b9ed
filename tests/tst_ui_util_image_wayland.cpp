// HiDPI images for widgets on Qt's Wayland platform, under a real compositor
// (scripts/weston-run), whose output scale (QT_UTIL_WESTON_SCALE, 1 unless set) becomes the
// device pixel ratio of every window on it. The image choice follows that ratio exactly as it
// follows a screen's ratio elsewhere: at 1 and at 2 the "@2x" file.
#include <QFile>
#include <QGuiApplication>
#include <QPixmap>
#include <QPixmapCache>
#include <QTemporaryDir>
#include <QWidget>
#include <QtTest>

#include "qt_util/ui_util.h"

namespace {

const QString kData = QStringLiteral(QT_UTIL_TEST_DATA_DIR "/theme");
// The icons' colours tell which scale file was loaded (see data/theme/make_images.sh).
const QRgb kLight2x = qRgb(0x30, 0xA0, 0x30);

QRgb CentreColour(const QPixmap& pixmap) {
  const QImage image = pixmap.toImage();
  return image.pixel(image.width() / 2, image.height() / 2) | 0xFF000000u;
}

double OutputScale() {
  bool ok = false;
  const int scale = qEnvironmentVariableIntValue("QT_UTIL_WESTON_SCALE", &ok);
  return ok ? scale : 1.0;
}

// A shown window on the compositor's output with a child widget to ask for.
struct ShownWindow {
  QWidget window;
  QWidget* child = new QWidget(&window);

  bool Show() {
    window.resize(200, 100);
    window.show();
    return QTest::qWaitForWindowExposed(&window);
  }
};

}  // namespace

class tst_UiUtilImageWayland : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();
  void init() { QPixmapCache::clear(); }
  void windowRatio_isTheOutputScale();
  void path_forAWidget_isThe2xFile();
  void image_forAWidget_isThe2xFileAtRatio2();
  void svg_forAWidget_rendersAtStep2();
};

void tst_UiUtilImageWayland::initTestCase() {
  QCOMPARE(QGuiApplication::platformName(), QStringLiteral("wayland"));
}

void tst_UiUtilImageWayland::windowRatio_isTheOutputScale() {
  ShownWindow shown;
  QVERIFY(shown.Show());
  QCOMPARE(shown.window.devicePixelRatioF(), OutputScale());
  QCOMPARE(shown.child->devicePixelRatioF(), OutputScale());
}

void tst_UiUtilImageWayland::path_forAWidget_isThe2xFile() {
  ShownWindow shown;
  QVERIFY(shown.Show());
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(shown.child, kData + "/light/icon.png", ".png"),
           kData + "/light/icon@2x.png");
}

void tst_UiUtilImageWayland::image_forAWidget_isThe2xFileAtRatio2() {
  ShownWindow shown;
  QVERIFY(shown.Show());
  // Image names carry no extension: the variants are files named "<name>@<step>x".
  QTemporaryDir dir;
  QVERIFY(QFile::copy(kData + "/light/icon@2x.png", dir.filePath("icon@2x")));
  QVERIFY(QFile::copy(kData + "/light/icon@3x.png", dir.filePath("icon@3x")));
  const QPixmap pixmap = VxQtUiUtil::GetHdpiImage(shown.child, dir.filePath("icon"));
  QCOMPARE(pixmap.devicePixelRatio(), 2.0);
  QCOMPARE(CentreColour(pixmap), kLight2x);
  QPixmap cached;
  QVERIFY(QPixmapCache::find(dir.filePath("icon@2x"), &cached));
  QCOMPARE(cached.cacheKey(), pixmap.cacheKey());
}

void tst_UiUtilImageWayland::svg_forAWidget_rendersAtStep2() {
  ShownWindow shown;
  QVERIFY(shown.Show());
  const QPixmap pixmap =
      VxQtUiUtil::GetHdpiImageSvg(shown.child, kData + "/light/logo.svg", QSize(24, 20));
  QCOMPARE(pixmap.size(), QSize(48, 40));
  QCOMPARE(pixmap.devicePixelRatio(), 2.0);
  QCOMPARE(pixmap.toImage().pixel(1, 1), qRgb(0x1E, 0x64, 0xC8));
}

QTEST_MAIN(tst_UiUtilImageWayland)
#include "tst_ui_util_image_wayland.moc"
