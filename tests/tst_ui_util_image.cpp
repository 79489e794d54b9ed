#include <QDir>
#include <QFile>
#include <QPixmap>
#include <QPixmapCache>
#include <QResource>
#include <QScreen>
#include <QTemporaryDir>
#include <QWidget>
#include <QtTest>
#include <memory>

#include "base/singleton/scope_singleton.h"
#include "qt_util/qt_ui_custom_theme_helper.h"
#include "qt_util/ui_util.h"
#include "support/log_capture.h"
#include "support/qt_message_capture.h"
#include "support/stub_theme_manager.h"
#include "support/virtual_screen.h"
#include "talvex_common/utils/context.h"

namespace {

const QString kData = QStringLiteral(QT_UTIL_TEST_DATA_DIR "/theme");
const QString kRounded = QStringLiteral(QT_UTIL_TEST_DATA_DIR "/rounded");
// Where the build put the compiled packages of the test module "theme_test": <dir>/Asset/.
const std::string kAssets = QT_UTIL_THEME_TEST_ASSETS;
const QString kMainPackage = QString::fromStdString(kAssets + "/Asset/theme_test.rcc");

constexpr char kImageSignature[] = "QPixmap VxQtUiUtil::GetHdpiImage(qreal, const QString &)";
constexpr char kSvgSignature[] =
    "QPixmap VxQtUiUtil::GetHdpiImageSvg(qreal, const QString &, const QSize &)";

// The icons' colours tell which scale file was loaded (see data/theme/make_images.sh).
const QRgb kLight2x = qRgb(0x30, 0xA0, 0x30);
const QRgb kLight3x = qRgb(0x30, 0x50, 0xD0);
const QRgb kDark2x = qRgb(0xA0, 0xF0, 0xA0);

// A theme engine whose dark theme maps "/light/" to "/dark/"; records the paths it is asked.
class PathThemeManager : public test_support::StubThemeManager {
 public:
  PathThemeManager(bool dark, QStringList* asked) : dark_(dark), asked_(asked) {}
  QString GetCurrentThemeResPath(const QString& path) override {
    if (asked_) *asked_ << path;
    if (!dark_) return path;
    QString mapped = path;
    return mapped.replace(QStringLiteral("/light/"), QStringLiteral("/dark/"));
  }
  bool IsCurrentDarkType() override { return dark_; }

 private:
  bool dark_;
  QStringList* asked_;
};

void UseTheme(bool dark, QStringList* asked = nullptr) {
  QTUICustomThemeHelper::SharedInstance()->SetThemeManager(
      std::make_unique<PathThemeManager>(dark, asked));
}

// Registers a compiled resource package while it lives.
class ScopedPackage {
 public:
  explicit ScopedPackage(const QString& path) : path_(path) {
    registered_ = QResource::registerResource(path_);
  }
  ~ScopedPackage() {
    if (registered_) QResource::unregisterResource(path_);
  }
  ScopedPackage(const ScopedPackage&) = delete;
  ScopedPackage& operator=(const ScopedPackage&) = delete;
  bool registered() const { return registered_; }

 private:
  QString path_;
  bool registered_ = false;
};

bool CopyFile(const QString& from, const QString& to) {
  QFile::remove(to);
  return QFile::copy(from, to);
}

// A real SVG file: one square of `colour` over the whole picture.
bool WriteSquareSvg(const QString& path, const char* colour) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return false;
  const QByteArray svg = QByteArray(
                             "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"8\" "
                             "height=\"8\"><rect width=\"8\" height=\"8\" fill=\"") +
                         colour + "\"/></svg>";
  return file.write(svg) == svg.size();
}

QRgb CentreColour(const QPixmap& pixmap) {
  const QImage image = pixmap.toImage();
  return image.pixel(image.width() / 2, image.height() / 2) | 0xFF000000u;
}

}  // namespace

class tst_UiUtilImage : public QObject {
  Q_OBJECT

 private slots:
  void init();
  void cleanup();

  // Path of the best variant
  void path_ratio1_takesThe2xFile();
  void path_ratio1_with3xOnly_givesThemedPath();
  void path_ratioAbove2_takesThe3xFile();
  void path_ratioAbove2_without3x_takesThe2xFile();
  void path_extensionIsCutByLength();
  void path_goesThroughTheTheme();
  void path_widget_usesItsWindowsRatio();

  // Raster images
  void image_ratio1_noVariant_isPlainFileAtRatio1CachedUnder2x();
  void image_variantFoundSetsItsRatio();
  void image_cacheKeyKeepsTheComputedStep();
  void image_cacheComesBeforeTheFileSystem();
  void image_missing_isNullWithInfoMessageAndNotCached();
  void image_goesThroughTheTheme();
  void image_widget_usesItsWindowsRatio();
  void widgetOverloads_nullWidget_countAsRatio1();

  // SVG images
  void svg_rendersSizeTimesStepAtThatRatio();
  void svg_cacheKeyIsPathAndStep();
  void svg_secondSize_givesTheFirstRender();
  void svg_placeMarkersInThePath_keepEachFilesPicture_data();
  void svg_placeMarkersInThePath_keepEachFilesPicture();
  void svg_minusOneSize_isTheRasterLookupOfTheThemedPath();
  void svg_fallback_mapsTheThemeTwice();
  void svg_invalidFile_fallsBackToRaster();
  void svg_missingFile_isNullWithInfoMessage();
  void svg_removedAfterCachedRender_isStillReportedMissing();
  void svg_emptySize_isNullAndNotCached();
  void isImageSvgType_onlyForValidSvg();

  // Rounded pixmaps
  void hasRadius_zero_isAnUnroundedCopy();
  void hasRadius_keepsTheInputsRatio();
  void hasRadius_ratio1_pixelsAsTheyWere();
  void hasRadius_ratio2_roundsInLogicalPixelsOverTheWholeImage();
  void hasRadius_cornersTransparentCentreKept();
  void hasRadius_nullPixmap_isNull();

  // Resource packages and the application name
  void loadModule_packagesPresent_data();
  void loadModule_packagesPresent();
  void getAppName_isTheFrameworksInUtf8();
};

void tst_UiUtilImage::init() {
  QPixmapCache::clear();
  UseTheme(/*dark=*/false);
}

void tst_UiUtilImage::cleanup() {
  base::EndSingletonScope();
}

void tst_UiUtilImage::path_ratio1_takesThe2xFile() {
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(1.0, kData + "/light/icon.png", ".png"),
           kData + "/light/icon@2x.png");
}

void tst_UiUtilImage::path_ratio1_with3xOnly_givesThemedPath() {
  // badge has a 3x file and no 2x file: a 3x file is tried only above ratio 2.
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(1.0, kData + "/light/badge.png", ".png"),
           kData + "/light/badge.png");
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(2.0, kData + "/light/badge.png", ".png"),
           kData + "/light/badge.png");
}

void tst_UiUtilImage::path_ratioAbove2_takesThe3xFile() {
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(2.5, kData + "/light/icon.png", ".png"),
           kData + "/light/icon@3x.png");
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(7.0, kData + "/light/badge.png", ".png"),
           kData + "/light/badge@3x.png");
}

void tst_UiUtilImage::path_ratioAbove2_without3x_takesThe2xFile() {
  QTemporaryDir dir;
  QVERIFY(CopyFile(kData + "/light/icon@2x.png", dir.filePath("only2@2x.png")));
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(3.0, dir.filePath("only2.png"), ".png"),
           dir.filePath("only2@2x.png"));
}

void tst_UiUtilImage::path_extensionIsCutByLength() {
  // ".jpg" is cut as if it were ".png": the extension is not checked.
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(1.0, kData + "/light/icon.jpg", ".png"),
           kData + "/light/icon@2x.png");
}

void tst_UiUtilImage::path_goesThroughTheTheme() {
  ScopedPackage package(kMainPackage);
  QVERIFY(package.registered());
  QStringList asked;
  UseTheme(/*dark=*/true, &asked);
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(1.0, ":/light/icon.png", ".png"),
           QStringLiteral(":/dark/icon@2x.png"));
  QCOMPARE(asked, QStringList{":/light/icon.png"});
  // Nothing of the name's theme is found: the themed path itself.
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(1.0, ":/light/none.png", ".png"),
           QStringLiteral(":/dark/none.png"));
}

void tst_UiUtilImage::path_widget_usesItsWindowsRatio() {
  // A window that is not created yet reports, on Qt 5, the largest screen ratio of the
  // application, and on Qt 6 the ratio of the screen its geometry is on; placed on the x3 screen
  // it reports 3 on both.
  QScreen* screen = test_support::AddVirtualScreen(QRect(5000, 0, 800, 600), 3.0, "x3");
  QWidget window;
  window.setGeometry(5100, 100, 200, 100);
  auto* child = new QWidget(&window);
  QCOMPARE(window.devicePixelRatioF(), 3.0);
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(child, kData + "/light/icon.png", ".png"),
           kData + "/light/icon@3x.png");
  test_support::RemoveVirtualScreen(screen);
}

void tst_UiUtilImage::image_ratio1_noVariant_isPlainFileAtRatio1CachedUnder2x() {
  QTemporaryDir dir;
  QVERIFY(CopyFile(kData + "/light/icon.png", dir.filePath("plain")));
  const QPixmap pixmap = VxQtUiUtil::GetHdpiImage(1.0, dir.filePath("plain"));
  QVERIFY(!pixmap.isNull());
  QCOMPARE(pixmap.size(), QSize(16, 16));
  QCOMPARE(pixmap.devicePixelRatio(), 1.0);
  QPixmap cached;
  QVERIFY(QPixmapCache::find(dir.filePath("plain@2x"), &cached));
  QCOMPARE(cached.cacheKey(), pixmap.cacheKey());
  QVERIFY(!QPixmapCache::find(dir.filePath("plain"), &cached));
}

void tst_UiUtilImage::image_variantFoundSetsItsRatio() {
  ScopedPackage package(kMainPackage);
  QVERIFY(package.registered());
  const QPixmap at2 = VxQtUiUtil::GetHdpiImage(1.0, ":/light/icon");
  QCOMPARE(at2.devicePixelRatio(), 2.0);
  QCOMPARE(at2.size(), QSize(32, 32));
  QCOMPARE(CentreColour(at2), kLight2x);
  const QPixmap at3 = VxQtUiUtil::GetHdpiImage(2.5, ":/light/icon");
  QCOMPARE(at3.devicePixelRatio(), 3.0);
  QCOMPARE(at3.size(), QSize(48, 48));
  QCOMPARE(CentreColour(at3), kLight3x);
}

void tst_UiUtilImage::image_cacheKeyKeepsTheComputedStep() {
  QTemporaryDir dir;
  QVERIFY(CopyFile(kData + "/light/icon@2x.png", dir.filePath("icon@2x")));
  const QPixmap pixmap = VxQtUiUtil::GetHdpiImage(3.0, dir.filePath("icon"));
  QCOMPARE(pixmap.devicePixelRatio(), 2.0);  // the step of the file found
  QPixmap cached;
  QVERIFY(QPixmapCache::find(dir.filePath("icon@3x"), &cached));  // the step asked for
  QCOMPARE(cached.cacheKey(), pixmap.cacheKey());
  QVERIFY(!QPixmapCache::find(dir.filePath("icon@2x"), &cached));
}

void tst_UiUtilImage::image_cacheComesBeforeTheFileSystem() {
  QTemporaryDir dir;
  QVERIFY(CopyFile(kData + "/light/icon@2x.png", dir.filePath("icon@2x")));
  const QPixmap first = VxQtUiUtil::GetHdpiImage(1.0, dir.filePath("icon"));
  QVERIFY(!first.isNull());
  QVERIFY(QFile::remove(dir.filePath("icon@2x")));

  QtMessageCapture messages;
  const QPixmap second = VxQtUiUtil::GetHdpiImage(1.0, dir.filePath("icon"));
  QCOMPARE(second.cacheKey(), first.cacheKey());
  QCOMPARE(second.devicePixelRatio(), 2.0);
  QVERIFY(messages.All().empty());
}

void tst_UiUtilImage::image_missing_isNullWithInfoMessageAndNotCached() {
  QTemporaryDir dir;
  const QString name = dir.filePath("late");
  QtMessageCapture messages;
  QVERIFY(VxQtUiUtil::GetHdpiImage(1.0, name).isNull());
  const auto found = messages.WithText(QStringLiteral("VxFind Res Invalid~(%1)").arg(name));
  QCOMPARE(int(found.size()), 1);
  QCOMPARE(found[0].type, QtInfoMsg);
  QCOMPARE(found[0].function, QString::fromLatin1(kImageSignature));
  // The facility's file in the form of the library's other Qt messages, whichever unit wrote it.
  QVERIFY2(found[0].file.endsWith("qt_util/ui_util.cpp"), qPrintable(found[0].file));
  QVERIFY(found[0].line > 0);

  // The miss was not cached: the file, once there, is found.
  QVERIFY(CopyFile(kData + "/light/icon@2x.png", dir.filePath("late@2x")));
  QCOMPARE(VxQtUiUtil::GetHdpiImage(1.0, name).devicePixelRatio(), 2.0);
}

void tst_UiUtilImage::image_goesThroughTheTheme() {
  ScopedPackage package(kMainPackage);
  QVERIFY(package.registered());
  UseTheme(/*dark=*/true);
  const QPixmap pixmap = VxQtUiUtil::GetHdpiImage(1.0, ":/light/icon");
  QCOMPARE(pixmap.devicePixelRatio(), 2.0);
  QPixmap cached;
  QVERIFY(QPixmapCache::find(":/dark/icon@2x", &cached));
  QCOMPARE(cached.cacheKey(), pixmap.cacheKey());
  // The dark icon is a ring: its colour shows on the ring, not in the hole.
  QCOMPARE(pixmap.toImage().pixel(16, 3) | 0xFF000000u, kDark2x);
}

void tst_UiUtilImage::image_widget_usesItsWindowsRatio() {
  ScopedPackage package(kMainPackage);
  QVERIFY(package.registered());
  QScreen* screen = test_support::AddVirtualScreen(QRect(5000, 0, 800, 600), 3.0, "x3");
  QWidget window;
  window.setGeometry(5100, 100, 200, 100);  // see path_widget_usesItsWindowsRatio
  auto* child = new QWidget(&window);
  const QPixmap pixmap = VxQtUiUtil::GetHdpiImage(child, ":/light/icon");
  QCOMPARE(pixmap.devicePixelRatio(), 3.0);
  QCOMPARE(CentreColour(pixmap), kLight3x);
  test_support::RemoveVirtualScreen(screen);
}

void tst_UiUtilImage::widgetOverloads_nullWidget_countAsRatio1() {
  ScopedPackage package(kMainPackage);
  QVERIFY(package.registered());
  QCOMPARE(VxQtUiUtil::GetHdpiImagePath(nullptr, kData + "/light/icon.png", ".png"),
           kData + "/light/icon@2x.png");
  QCOMPARE(VxQtUiUtil::GetHdpiImage(nullptr, ":/light/icon").devicePixelRatio(), 2.0);
  QCOMPARE(VxQtUiUtil::GetHdpiImageSvg(nullptr, kData + "/light/logo.svg", QSize(8, 8)).size(),
           QSize(16, 16));
}

void tst_UiUtilImage::svg_rendersSizeTimesStepAtThatRatio() {
  const QPixmap pixmap = VxQtUiUtil::GetHdpiImageSvg(1.0, kData + "/light/logo.svg", QSize(24, 20));
  QCOMPARE(pixmap.size(), QSize(48, 40));
  QCOMPARE(pixmap.devicePixelRatio(), 2.0);
  const QImage image = pixmap.toImage();
  QCOMPARE(image.pixel(1, 1), qRgb(0x1E, 0x64, 0xC8));    // the square
  QCOMPARE(image.pixel(24, 20), qRgb(0xFF, 0xFF, 0xFF));  // the disc in its middle

  const QPixmap at3 = VxQtUiUtil::GetHdpiImageSvg(2.1, kData + "/dark/logo.svg", QSize(10, 10));
  QCOMPARE(at3.size(), QSize(30, 30));
  QCOMPARE(at3.devicePixelRatio(), 3.0);
}

void tst_UiUtilImage::svg_cacheKeyIsPathAndStep() {
  const QString path = kData + "/light/logo.svg";
  const QPixmap pixmap = VxQtUiUtil::GetHdpiImageSvg(1.0, path, QSize(24, 24));
  QPixmap cached;
  QVERIFY(QPixmapCache::find(QStringLiteral("svg_%1_2").arg(path), &cached));
  QCOMPARE(cached.cacheKey(), pixmap.cacheKey());
}

void tst_UiUtilImage::svg_secondSize_givesTheFirstRender() {
  const QString path = kData + "/light/logo.svg";
  const QPixmap first = VxQtUiUtil::GetHdpiImageSvg(1.0, path, QSize(24, 24));
  const QPixmap second = VxQtUiUtil::GetHdpiImageSvg(1.5, path, QSize(64, 64));
  QCOMPARE(second.cacheKey(), first.cacheKey());
  QCOMPARE(second.size(), QSize(48, 48));
  // Another step is another key: rendered at its own size.
  QCOMPARE(VxQtUiUtil::GetHdpiImageSvg(3.0, path, QSize(64, 64)).size(), QSize(192, 192));
}

// File names with "%1" or "%2" in them: each file keeps a cache key of its own,
// "svg_<path>_<step>", and so its own picture, whichever of two such files is asked first.
void tst_UiUtilImage::svg_placeMarkersInThePath_keepEachFilesPicture_data() {
  QTest::addColumn<QString>("first");
  QTest::addColumn<QString>("second");
  QTest::newRow("%2 beside the plain name") << "a2.svg"
                                            << "a%2.svg";
  QTest::newRow("plain name beside %2") << "a%2.svg"
                                        << "a2.svg";
  QTest::newRow("%1 in both names") << "p%1q2.svg"
                                    << "p2q%1.svg";
  QTest::newRow("%1 and %2 in one name") << "r22.svg"
                                         << "r%1%2.svg";
}

void tst_UiUtilImage::svg_placeMarkersInThePath_keepEachFilesPicture() {
  QFETCH(QString, first);
  QFETCH(QString, second);
  QTemporaryDir dir;
  const QString first_path = dir.filePath(first);
  const QString second_path = dir.filePath(second);
  QVERIFY(WriteSquareSvg(first_path, "#C01010"));
  QVERIFY(WriteSquareSvg(second_path, "#1010C0"));

  const QPixmap first_picture = VxQtUiUtil::GetHdpiImageSvg(1.0, first_path, QSize(8, 8));
  const QPixmap second_picture = VxQtUiUtil::GetHdpiImageSvg(1.0, second_path, QSize(8, 8));
  QCOMPARE(CentreColour(first_picture), qRgb(0xC0, 0x10, 0x10));
  QCOMPARE(CentreColour(second_picture), qRgb(0x10, 0x10, 0xC0));
  QPixmap cached;
  QVERIFY(QPixmapCache::find(QStringLiteral("svg_") + second_path + QStringLiteral("_2"), &cached));
  QCOMPARE(cached.cacheKey(), second_picture.cacheKey());
}

void tst_UiUtilImage::svg_minusOneSize_isTheRasterLookupOfTheThemedPath() {
  const QString path = kData + "/light/logo.svg";
  const QPixmap svg = VxQtUiUtil::GetHdpiImageSvg(1.0, path, QSize(-1, -1));
  const QPixmap raster = VxQtUiUtil::GetHdpiImage(1.0, path);
  QVERIFY(!svg.isNull());
  QCOMPARE(svg.cacheKey(), raster.cacheKey());
  QCOMPARE(svg.devicePixelRatio(), 1.0);  // the plain file, no "@2x" variant exists
  QCOMPARE(svg.size(), QSize(24, 24));
}

void tst_UiUtilImage::svg_fallback_mapsTheThemeTwice() {
  ScopedPackage package(kMainPackage);
  QVERIFY(package.registered());
  QStringList asked;
  UseTheme(/*dark=*/true, &asked);
  VxQtUiUtil::GetHdpiImageSvg(1.0, ":/light/logo.svg", QSize(-1, -1));
  QCOMPARE(asked, (QStringList{":/light/logo.svg", ":/dark/logo.svg"}));
}

void tst_UiUtilImage::svg_invalidFile_fallsBackToRaster() {
  const QString path = kData + "/broken.svg";
  QtMessageCapture messages;
  QVERIFY(VxQtUiUtil::GetHdpiImageSvg(1.0, path, QSize(24, 24)).isNull());
  // The raster lookup's miss, not the SVG one's: the file exists.
  QCOMPARE(int(messages.WithText(QStringLiteral("VxFind Res Invalid~(%1)").arg(path)).size()), 1);
  QVERIFY(messages.WithText(QStringLiteral("Invalid image resource ~(%1)").arg(path)).empty());
}

void tst_UiUtilImage::svg_missingFile_isNullWithInfoMessage() {
  const QString path = kData + "/light/none.svg";
  QtMessageCapture messages;
  QVERIFY(VxQtUiUtil::GetHdpiImageSvg(1.0, path, QSize(24, 24)).isNull());
  const auto found = messages.WithText(QStringLiteral("Invalid image resource ~(%1)").arg(path));
  QCOMPARE(int(found.size()), 1);
  QCOMPARE(found[0].type, QtInfoMsg);
  QCOMPARE(found[0].function, QString::fromLatin1(kSvgSignature));
  // The facility's file in the form of the library's other Qt messages, whichever unit wrote it.
  QVERIFY2(found[0].file.endsWith("qt_util/ui_util.cpp"), qPrintable(found[0].file));
  QVERIFY(found[0].line > 0);
  QCOMPARE(int(messages.All().size()), 1);
}

void tst_UiUtilImage::svg_removedAfterCachedRender_isStillReportedMissing() {
  QTemporaryDir dir;
  const QString path = dir.filePath("logo.svg");
  QVERIFY(CopyFile(kData + "/light/logo.svg", path));
  QVERIFY(!VxQtUiUtil::GetHdpiImageSvg(1.0, path, QSize(24, 24)).isNull());
  QVERIFY(QFile::remove(path));

  QtMessageCapture messages;
  QVERIFY(VxQtUiUtil::GetHdpiImageSvg(1.0, path, QSize(24, 24)).isNull());
  QCOMPARE(int(messages.WithText(QStringLiteral("Invalid image resource ~(%1)").arg(path)).size()),
           1);
  QPixmap cached;
  QVERIFY(QPixmapCache::find(QStringLiteral("svg_%1_2").arg(path), &cached));
}

void tst_UiUtilImage::svg_emptySize_isNullAndNotCached() {
  const QString path = kData + "/light/logo.svg";
  QtMessageCapture messages;
  QVERIFY(VxQtUiUtil::GetHdpiImageSvg(1.0, path, QSize(0, 24)).isNull());
  QVERIFY(VxQtUiUtil::GetHdpiImageSvg(1.0, path, QSize(-1, 5)).isNull());
  QVERIFY(messages.All().empty());  // no painter complaint
  QCOMPARE(VxQtUiUtil::GetHdpiImageSvg(1.0, path, QSize(8, 8)).size(), QSize(16, 16));
}

void tst_UiUtilImage::isImageSvgType_onlyForValidSvg() {
  QVERIFY(VxQtUiUtil::IsImageSvgType(kData + "/light/logo.svg"));
  QtMessageCapture messages;  // Qt's SVG reader complains about the broken files
  QVERIFY(!VxQtUiUtil::IsImageSvgType(kData + "/broken.svg"));
  QVERIFY(!VxQtUiUtil::IsImageSvgType(kData + "/light/icon.png"));
  QVERIFY(!VxQtUiUtil::IsImageSvgType(kData + "/light/none.svg"));
}

void tst_UiUtilImage::hasRadius_zero_isAnUnroundedCopy() {
  const QPixmap source(kData + "/light/badge.png");
  const QPixmap rounded = VxQtUiUtil::GetHasRadiusPixmap(source, 0);
  QCOMPARE(rounded.size(), source.size());
  QVERIFY(rounded.cacheKey() != source.cacheKey());
  QCOMPARE(rounded.toImage().convertToFormat(QImage::Format_ARGB32),
           source.toImage().convertToFormat(QImage::Format_ARGB32));
}

void tst_UiUtilImage::hasRadius_keepsTheInputsRatio() {
  // Qt gives a file named "@3x" the ratio 3; the copy keeps it and the size in device pixels.
  const QPixmap source(kData + "/light/badge@3x.png");
  QCOMPARE(source.devicePixelRatio(), 3.0);
  const QPixmap rounded = VxQtUiUtil::GetHasRadiusPixmap(source, 0);
  QCOMPARE(rounded.size(), QSize(48, 48));
  QCOMPARE(rounded.devicePixelRatio(), 3.0);
}

void tst_UiUtilImage::hasRadius_ratio1_pixelsAsTheyWere() {
  // tile_radius7.png was saved from the library before rounding kept the ratio (see
  // data/rounded/make_images.sh): ratio-1 results stay pixel-identical.
  const QPixmap source(kRounded + "/tile.png");
  QCOMPARE(source.devicePixelRatio(), 1.0);
  const QPixmap rounded = VxQtUiUtil::GetHasRadiusPixmap(source, 7);
  QCOMPARE(rounded.devicePixelRatio(), 1.0);
  QCOMPARE(rounded.toImage().convertToFormat(QImage::Format_ARGB32),
           QImage(kRounded + "/tile_radius7.png").convertToFormat(QImage::Format_ARGB32));
}

void tst_UiUtilImage::hasRadius_ratio2_roundsInLogicalPixelsOverTheWholeImage() {
  // What the HiDPI lookup gives a ratio-2 window: the "@2x" file at ratio 2.
  QTemporaryDir dir;
  QVERIFY(CopyFile(kRounded + "/tile@2x.png", dir.filePath("tile@2x")));
  const QPixmap source = VxQtUiUtil::GetHdpiImage(2.0, dir.filePath("tile"));
  QCOMPARE(source.devicePixelRatio(), 2.0);
  const QPixmap rounded = VxQtUiUtil::GetHasRadiusPixmap(source, 7);
  QCOMPARE(rounded.devicePixelRatio(), 2.0);
  QCOMPARE(rounded.size(), QSize(60, 60));

  // The corners are those of radius 7 at ratio 1, twice as fine: a device pixel is opaque where
  // its logical pixel was and keeps the source's colour, and transparent where it was (but for
  // the antialiasing of the finer edge, a few steps of alpha).
  const QImage image = rounded.toImage().convertToFormat(QImage::Format_ARGB32);
  const QImage picture = source.toImage().convertToFormat(QImage::Format_ARGB32);
  const QImage logical =
      QImage(kRounded + "/tile_radius7.png").convertToFormat(QImage::Format_ARGB32);
  constexpr int kEdgeAlpha = 8;
  int opaque = 0;
  int transparent = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const int logical_alpha = qAlpha(logical.pixel(x / 2, y / 2));
      const QRgb pixel = image.pixel(x, y);
      const QByteArray where = QByteArray::number(x) + "," + QByteArray::number(y);
      if (logical_alpha == 255) {
        QVERIFY2(qAlpha(pixel) >= 255 - kEdgeAlpha, where.constData());
        QVERIFY2(
            qRgb(qRed(pixel), qGreen(pixel), qBlue(pixel)) == (picture.pixel(x, y) | 0xFF000000u),
            where.constData());
        opaque += qAlpha(pixel) == 255;
      } else if (logical_alpha == 0) {
        QVERIFY2(qAlpha(pixel) <= kEdgeAlpha, where.constData());
        transparent += qAlpha(pixel) == 0;
      }
    }
  }
  // Every edge but the corners is opaque, and each corner has cleared pixels.
  QVERIFY(opaque > 60 * 60 - 4 * 7 * 7 * 4);
  QVERIFY(transparent >= 4 * 4);
  for (const QPoint corner : {QPoint(3, 3), QPoint(56, 3), QPoint(3, 56), QPoint(56, 56)}) {
    QCOMPARE(qAlpha(image.pixel(corner)), 0);
  }
  for (const QPoint edge : {QPoint(30, 0), QPoint(59, 30), QPoint(30, 59), QPoint(0, 30)}) {
    QCOMPARE(qAlpha(image.pixel(edge)), 255);
  }
}

void tst_UiUtilImage::hasRadius_cornersTransparentCentreKept() {
  QPixmap source(40, 30);
  source.fill(QColor(200, 40, 40));
  const QImage rounded = VxQtUiUtil::GetHasRadiusPixmap(source, 10).toImage();
  QCOMPARE(rounded.size(), QSize(40, 30));
  QCOMPARE(qAlpha(rounded.pixel(0, 0)), 0);
  QCOMPARE(qAlpha(rounded.pixel(39, 29)), 0);
  QCOMPARE(rounded.pixel(20, 15), qRgb(200, 40, 40));
  QCOMPARE(rounded.pixel(20, 0), qRgb(200, 40, 40));
}

void tst_UiUtilImage::hasRadius_nullPixmap_isNull() {
  QVERIFY(VxQtUiUtil::GetHasRadiusPixmap(QPixmap(), 4).isNull());
}

namespace {
struct PackageRow {
  const char* name;
  bool main;
  bool extension;
  bool platform;
};
const PackageRow kPackageRows[] = {{"none", false, false, false},
                                   {"main only", true, false, false},
                                   {"main and extension", true, true, false},
                                   {"all three", true, true, true},
                                   {"optional ones only", false, true, true}};
}  // namespace

void tst_UiUtilImage::loadModule_packagesPresent_data() {
  QTest::addColumn<int>("row");
  for (size_t i = 0; i < sizeof kPackageRows / sizeof kPackageRows[0]; ++i) {
    QTest::newRow(kPackageRows[i].name) << int(i);
  }
}

void tst_UiUtilImage::loadModule_packagesPresent() {
  QFETCH(int, row);
  const PackageRow& packages = kPackageRows[row];
  QTemporaryDir dir;
  QVERIFY(QDir(dir.path()).mkdir("Asset"));
  const std::string asset = dir.path().toStdString() + "/Asset/";
  struct Package {
    bool present;
    std::string file;
    QString probe;  // a resource only this package holds
    int missing_level;
  };
  const Package all[] = {
      {packages.main, "theme_test.rcc", ":/light/icon@2x", 4},
      {packages.extension, "theme_test_extension.rcc", ":/extension/panel.qss_dark", 6},
      {packages.platform, "theme_test_linux.rcc", ":/linux/badge@3x", 6}};
  for (const Package& package : all) {
    QVERIFY(!QFile::exists(package.probe));
    if (package.present) {
      QVERIFY(CopyFile(QString::fromStdString(kAssets + "/Asset/" + package.file),
                       QString::fromStdString(asset + package.file)));
    }
  }

  LogCapture capture(6);
  VxQtUiUtil::LoadQtModuleResource(dir.path().toStdString(), "theme_test");
  std::vector<std::pair<int, std::string>> expected_lines;
  for (const Package& package : all) {
    QCOMPARE(QFile::exists(package.probe), package.present);
    if (!package.present) {
      expected_lines.emplace_back(package.missing_level, asset + package.file + " not exist.");
    }
  }
  std::vector<std::pair<int, std::string>> lines;
  bool records_name_the_facility = true;
  for (const auto& record : capture.Records()) {
    lines.emplace_back(record.level, record.text);
    records_name_the_facility &= record.function == "LoadQtModuleResource" &&
                                 record.file == "ui_util.cpp" && record.line > 0;
  }
  for (const Package& package : all) {
    if (package.present) {
      QVERIFY(QResource::unregisterResource(QString::fromStdString(asset + package.file)));
    }
  }
  QCOMPARE(lines, expected_lines);
  QVERIFY(records_name_the_facility);
}

void tst_UiUtilImage::getAppName_isTheFrameworksInUtf8() {
  talvex_common::utils::context::SetAppName("Besprechung \xC3\xBC\xE2\x82\xAC");
  QCOMPARE(VxQtUiUtil::GetAppName(), QString::fromUtf8("Besprechung ü€"));
  talvex_common::utils::context::SetAppName("");
  QCOMPARE(VxQtUiUtil::GetAppName(), QCoreApplication::applicationName());
}

QTEST_MAIN(tst_UiUtilImage)
#include "tst_ui_util_image.moc"
