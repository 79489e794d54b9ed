#include <QDir>
#include <QFile>
#include <QImageIOHandler>
#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>
#include <functional>
#include <vector>

#include "qt_util/image_utils.h"
#include "support/exif_jpeg.h"
#include "support/qt_message_capture.h"

namespace {

// An opaque picture whose every pixel differs from its neighbours' colour in a known way.
QPixmap Gradient(int width, int height) {
  QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      image.setPixel(x, y, qRgb(x * 255 / qMax(1, width - 1), y * 255 / qMax(1, height - 1), 90));
    }
  }
  return QPixmap::fromImage(image);
}

// A 32x32 icon: an opaque blue disc on transparency, with a half-transparent ring round it.
// A larger size draws the same icon scaled, the way a HiDPI variant of it is made.
QPixmap Icon(int size = 32) {
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.scale(size / 32.0, size / 32.0);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(0, 0, 255, 128));
  painter.drawEllipse(QRect(4, 4, 24, 24));
  painter.setBrush(QColor(0, 0, 255));
  painter.drawEllipse(QRect(8, 8, 16, 16));
  return pixmap;
}

QImage ToImage(const QPixmap& pixmap) {
  return pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
}

// The same pixels, marked as a HiDPI variant of `ratio`.
QPixmap WithRatio(QPixmap pixmap, qreal ratio) {
  pixmap.setDevicePixelRatio(ratio);
  return pixmap;
}

// The device pixels alone, so that images of different ratios compare by content.
QImage DevicePixels(const QPixmap& pixmap) {
  QImage image = ToImage(pixmap);
  image.setDevicePixelRatio(1);
  return image;
}

// What a widget of `ratio` shows when it paints the pixmap at (0, 0) on an area of `logical`
// size, read back in device pixels.
QImage Rendered(const QPixmap& pixmap, const QSize& logical, qreal ratio) {
  QImage canvas(logical * ratio, QImage::Format_ARGB32_Premultiplied);
  canvas.setDevicePixelRatio(ratio);
  canvas.fill(Qt::transparent);
  QPainter painter(&canvas);
  painter.drawPixmap(QPoint(0, 0), pixmap);
  painter.end();
  canvas.setDevicePixelRatio(1);
  return canvas.convertToFormat(QImage::Format_ARGB32);
}

// A 40x20 picture, left half red and right half green, so a quarter turn is visible.
QImage HalfAndHalf() {
  QImage image(40, 20, QImage::Format_RGB32);
  image.fill(Qt::red);
  QPainter painter(&image);
  painter.fillRect(20, 0, 20, 20, Qt::green);
  return image;
}

// The ratio-1 results pinned in data/image_utils, as the implementation made them before pixmaps
// kept their ratio: each row names its file and how the result is made.
struct PinnedRow {
  const char* file;
  std::function<QPixmap()> make;
};

const std::vector<PinnedRow>& PinnedRows() {
  static const std::vector<PinnedRow> rows = {
      {"round_rect_64_r16.png",
       [] { return QTImageUtils::MakeRoundRectImage(Gradient(64, 64), 16); }},
      {"round_rect_48x30_r7.5.png",
       [] { return QTImageUtils::MakeRoundRectImage(Gradient(48, 30), 7.5f); }},
      {"round_rect_icon_r10.png", [] { return QTImageUtils::MakeRoundRectImage(Icon(), 10); }},
      {"round_100x40.png", [] { return QTImageUtils::MakeRoundImage(Gradient(100, 40)); }},
      {"round_60x41.png", [] { return QTImageUtils::MakeRoundImage(Gradient(60, 41)); }},
      {"mask_40x30_r10.png",
       [] { return QTImageUtils::MakeRoundRectMask(QRect(0, 0, 40, 30), 10); }},
      {"mask_offset_r6.png",
       [] { return QTImageUtils::MakeRoundRectMask(QRect(10, 10, 30, 30), 6); }},
      {"tint_icon_red.png", [] { return QTImageUtils::MakeTintImage(Icon(), QColor(Qt::red)); }},
      {"tint_icon_red_half.png",
       [] { return QTImageUtils::MakeTintImage(Icon(), QColor(255, 0, 0, 128)); }},
  };
  return rows;
}

QString PinnedDir() {
  return QStringLiteral(QT_UTIL_TEST_DATA_DIR "/image_utils");
}

}  // namespace

class tst_ImageUtils : public QObject {
  Q_OBJECT

 private slots:
  // Rounding
  void makeRoundImage_radiusIsHalfTheHeight_data();
  void makeRoundImage_radiusIsHalfTheHeight();
  void makeRoundImage_widePixmapBecomesAPill();
  void makeRoundRectImage_zeroOrNegativeRadius_equalsInput_data();
  void makeRoundRectImage_zeroOrNegativeRadius_equalsInput();
  void makeRoundRectImage_nullPixmap_isNull();
  void makeRoundRectImage_cornerTransparentCentreKept();
  void makeRoundRectImage_leavesInputUntouched();
  void makeRoundRectImage_keepsRatio_radiusInLogicalPixels_data();
  void makeRoundRectImage_keepsRatio_radiusInLogicalPixels();
  void makeRoundRectImage_ratio2_showsAtItsLogicalSize();
  void makeRoundImage_keepsRatio_endsStayHalfDiscs_data();
  void makeRoundImage_keepsRatio_endsStayHalfDiscs();

  // Mask
  void makeRoundRectMask_blackOutsideTransparentInside();
  void makeRoundRectMask_negativeRadius_isZero();
  void makeRoundRectMask_offsetRect_isShifted();
  void makeRoundRectMask_emptyRect_isNull();

  // Tinting
  void makeTintImage_invalidOrTransparentColor_returnsInput_data();
  void makeTintImage_invalidOrTransparentColor_returnsInput();
  void makeTintImage_opaqueRed_paintsShapeKeepsTransparency_data();
  void makeTintImage_opaqueRed_paintsShapeKeepsTransparency();
  void makeTintImage_ratio2_showsAtItsLogicalSize();
  void makeTintImage_colorAlphaIsApplied();
  void makeTintImage_nullPixmap_isNullWithoutPainterWarnings();

  // Orientation
  void adjustImageTransformation_rotatedJpeg_swapsDimensions();
  void adjustImageTransformation_noOrientation_isThePlainFile();
  void adjustImageTransformation_unreadableFile_isNull();
  void imageTransformation_reportsTheStoredOrientation_data();
  void imageTransformation_reportsTheStoredOrientation();

  // Ratio 1 stays as it was
  void ratioOne_matchesPinnedOutput_data();
  void ratioOne_matchesPinnedOutput();
};

void tst_ImageUtils::makeRoundImage_radiusIsHalfTheHeight_data() {
  QTest::addColumn<QSize>("size");
  QTest::addColumn<float>("radius");
  QTest::addColumn<float>("other_radius");
  QTest::newRow("100x40") << QSize(100, 40) << 20.0f << 19.0f;
  QTest::newRow("odd height 41") << QSize(60, 41) << 20.0f << 20.5f;
}

void tst_ImageUtils::makeRoundImage_radiusIsHalfTheHeight() {
  QFETCH(QSize, size);
  QFETCH(float, radius);
  QFETCH(float, other_radius);
  const QPixmap source = Gradient(size.width(), size.height());
  const QImage round = ToImage(QTImageUtils::MakeRoundImage(source));
  QCOMPARE(round, ToImage(QTImageUtils::MakeRoundRectImage(source, radius)));
  QVERIFY(round != ToImage(QTImageUtils::MakeRoundRectImage(source, other_radius)));
}

void tst_ImageUtils::makeRoundImage_widePixmapBecomesAPill() {
  const QImage pill = ToImage(QTImageUtils::MakeRoundImage(Gradient(100, 40)));
  QCOMPARE(pill.size(), QSize(100, 40));
  // The ends are half discs: transparent at the corners, opaque along the straight middle.
  QCOMPARE(qAlpha(pill.pixel(0, 0)), 0);
  QCOMPARE(qAlpha(pill.pixel(99, 39)), 0);
  QCOMPARE(qAlpha(pill.pixel(50, 0)), 255);
  QCOMPARE(qAlpha(pill.pixel(50, 39)), 255);
}

void tst_ImageUtils::makeRoundRectImage_zeroOrNegativeRadius_equalsInput_data() {
  QTest::addColumn<float>("radius");
  QTest::newRow("zero") << 0.0f;
  QTest::newRow("negative") << -8.0f;
}

void tst_ImageUtils::makeRoundRectImage_zeroOrNegativeRadius_equalsInput() {
  QFETCH(float, radius);
  const QPixmap source = Gradient(48, 30);
  const QPixmap result = QTImageUtils::MakeRoundRectImage(source, radius);
  QCOMPARE(result.size(), source.size());
  QCOMPARE(ToImage(result), ToImage(source));
}

void tst_ImageUtils::makeRoundRectImage_nullPixmap_isNull() {
  QVERIFY(QTImageUtils::MakeRoundRectImage(QPixmap(), 10).isNull());
  QVERIFY(QTImageUtils::MakeRoundImage(QPixmap()).isNull());
}

void tst_ImageUtils::makeRoundRectImage_cornerTransparentCentreKept() {
  const QPixmap source = Gradient(64, 64);
  const QImage result = ToImage(QTImageUtils::MakeRoundRectImage(source, 16));
  QCOMPARE(result.size(), QSize(64, 64));
  for (const QPoint corner : {QPoint(0, 0), QPoint(63, 0), QPoint(0, 63), QPoint(63, 63)}) {
    QCOMPARE(qAlpha(result.pixel(corner)), 0);
  }
  QCOMPARE(result.pixel(32, 32), ToImage(source).pixel(32, 32));
  // Along an edge, clear of the corners, nothing is cut.
  QCOMPARE(result.pixel(32, 0), ToImage(source).pixel(32, 0));
}

void tst_ImageUtils::makeRoundRectImage_leavesInputUntouched() {
  const QPixmap source = Gradient(64, 64);
  const QImage before = ToImage(source);
  QTImageUtils::MakeRoundRectImage(source, 16);
  QCOMPARE(ToImage(source), before);
}

void tst_ImageUtils::makeRoundRectImage_keepsRatio_radiusInLogicalPixels_data() {
  QTest::addColumn<qreal>("ratio");
  QTest::newRow("ratio 2") << qreal(2);
  QTest::newRow("ratio 3") << qreal(3);
  QTest::newRow("ratio 1.5") << qreal(1.5);
}

// A radius of 8 at ratio r rounds like a radius of 8 * r on the same pixels at ratio 1: the
// radius is in the logical pixels a widget paints in, and the whole image is covered.
void tst_ImageUtils::makeRoundRectImage_keepsRatio_radiusInLogicalPixels() {
  QFETCH(qreal, ratio);
  const QPixmap source = WithRatio(Gradient(96, 96), ratio);
  const QPixmap result = QTImageUtils::MakeRoundRectImage(source, 8);
  QCOMPARE(result.devicePixelRatio(), ratio);
  QCOMPARE(result.size(), QSize(96, 96));
  QCOMPARE(DevicePixels(result),
           DevicePixels(QTImageUtils::MakeRoundRectImage(Gradient(96, 96), float(8 * ratio))));
  QCOMPARE(DevicePixels(source), ToImage(Gradient(96, 96)));
}

void tst_ImageUtils::makeRoundRectImage_ratio2_showsAtItsLogicalSize() {
  // A 32x32 picture in its "@2x" form, rounded by 8 and shown on a ratio-2 screen.
  const QPixmap source = WithRatio(Gradient(64, 64), 2);
  const QImage shown = Rendered(QTImageUtils::MakeRoundRectImage(source, 8), QSize(32, 32), 2);
  const QImage plain = DevicePixels(source);
  for (const QPoint corner : {QPoint(0, 0), QPoint(63, 0), QPoint(0, 63), QPoint(63, 63)}) {
    QCOMPARE(qAlpha(shown.pixel(corner)), 0);
  }
  // 8 logical pixels are 16 device pixels: (3, 3) lies outside that corner's arc, though
  // inside the arc of a radius of 8 device pixels.
  QCOMPARE(qAlpha(shown.pixel(3, 3)), 0);
  QCOMPARE(shown.pixel(6, 6), plain.pixel(6, 6));
  for (const QPoint kept : {QPoint(32, 32), QPoint(32, 0), QPoint(63, 32), QPoint(32, 63)}) {
    QCOMPARE(shown.pixel(kept), plain.pixel(kept));
  }
}

void tst_ImageUtils::makeRoundImage_keepsRatio_endsStayHalfDiscs_data() {
  QTest::addColumn<qreal>("ratio");
  QTest::addColumn<QSize>("size");
  QTest::newRow("ratio 2, 100x40") << qreal(2) << QSize(100, 40);
  QTest::newRow("ratio 1.5, 60x41") << qreal(1.5) << QSize(60, 41);
}

// The radius is half the height in device pixels, so the ends are half discs at every ratio.
void tst_ImageUtils::makeRoundImage_keepsRatio_endsStayHalfDiscs() {
  QFETCH(qreal, ratio);
  QFETCH(QSize, size);
  const QPixmap plain = Gradient(size.width(), size.height());
  const QPixmap result = QTImageUtils::MakeRoundImage(WithRatio(plain, ratio));
  QCOMPARE(result.devicePixelRatio(), ratio);
  QCOMPARE(DevicePixels(result), DevicePixels(QTImageUtils::MakeRoundImage(plain)));
}

void tst_ImageUtils::makeRoundRectMask_blackOutsideTransparentInside() {
  const QImage mask = ToImage(QTImageUtils::MakeRoundRectMask(QRect(0, 0, 40, 30), 10));
  QCOMPARE(mask.size(), QSize(40, 30));
  QCOMPARE(mask.pixel(0, 0), qRgba(0, 0, 0, 255));
  QCOMPARE(mask.pixel(39, 29), qRgba(0, 0, 0, 255));
  QCOMPARE(qAlpha(mask.pixel(20, 15)), 0);
  QCOMPARE(qAlpha(mask.pixel(20, 0)), 0);
}

void tst_ImageUtils::makeRoundRectMask_negativeRadius_isZero() {
  const QImage negative = ToImage(QTImageUtils::MakeRoundRectMask(QRect(0, 0, 20, 20), -5));
  QCOMPARE(negative, ToImage(QTImageUtils::MakeRoundRectMask(QRect(0, 0, 20, 20), 0)));
  // With no rounding the whole rectangle is cleared, corners included.
  QCOMPARE(qAlpha(negative.pixel(0, 0)), 0);
}

void tst_ImageUtils::makeRoundRectMask_offsetRect_isShifted() {
  const QImage mask = ToImage(QTImageUtils::MakeRoundRectMask(QRect(10, 10, 30, 30), 6));
  QCOMPARE(mask.size(), QSize(30, 30));
  // The rounded rectangle lies at (10, 10) inside a 30x30 image: its black corner is there, and
  // the part above and left of it keeps the initial transparent fill.
  QCOMPARE(qAlpha(mask.pixel(0, 0)), 0);
  QCOMPARE(qAlpha(mask.pixel(5, 20)), 0);
  QCOMPARE(mask.pixel(10, 10), qRgba(0, 0, 0, 255));
  QCOMPARE(qAlpha(mask.pixel(20, 20)), 0);
  QCOMPARE(ToImage(QTImageUtils::MakeRoundRectMask(QRect(0, 0, 30, 30), 6)).pixel(0, 0),
           qRgba(0, 0, 0, 255));
}

void tst_ImageUtils::makeRoundRectMask_emptyRect_isNull() {
  QVERIFY(QTImageUtils::MakeRoundRectMask(QRect(0, 0, 0, 10), 4).isNull());
}

void tst_ImageUtils::makeTintImage_invalidOrTransparentColor_returnsInput_data() {
  QTest::addColumn<QColor>("color");
  QTest::newRow("invalid") << QColor();
  QTest::newRow("transparent") << QColor(Qt::transparent);
}

void tst_ImageUtils::makeTintImage_invalidOrTransparentColor_returnsInput() {
  QFETCH(QColor, color);
  const QPixmap icon = Icon();
  const QPixmap result = QTImageUtils::MakeTintImage(icon, color);
  QCOMPARE(result.cacheKey(), icon.cacheKey());
}

void tst_ImageUtils::makeTintImage_opaqueRed_paintsShapeKeepsTransparency_data() {
  QTest::addColumn<qreal>("ratio");
  QTest::addColumn<int>("size");
  QTest::newRow("ratio 1") << qreal(1) << 32;
  QTest::newRow("ratio 2") << qreal(2) << 64;
  QTest::newRow("ratio 1.5") << qreal(1.5) << 48;
}

// At every ratio the whole icon is tinted, in device pixels, and the result keeps the ratio.
void tst_ImageUtils::makeTintImage_opaqueRed_paintsShapeKeepsTransparency() {
  QFETCH(qreal, ratio);
  QFETCH(int, size);
  const QPixmap icon = WithRatio(Icon(size), ratio);
  const QPixmap result = QTImageUtils::MakeTintImage(icon, QColor(Qt::red));
  QCOMPARE(result.devicePixelRatio(), ratio);
  const QImage source = DevicePixels(icon);
  const QImage tinted = DevicePixels(result);
  QCOMPARE(tinted.size(), source.size());
  int opaque = 0;
  for (int y = 0; y < source.height(); ++y) {
    for (int x = 0; x < source.width(); ++x) {
      const QRgb before = source.pixel(x, y);
      const QRgb after = tinted.pixel(x, y);
      QCOMPARE(qAlpha(after), qAlpha(before));
      if (qAlpha(before) == 255) {
        QCOMPARE(after, qRgba(255, 0, 0, 255));
        ++opaque;
      }
    }
  }
  QVERIFY(opaque > 100 * ratio * ratio);
  QCOMPARE(tinted.pixel(0, 0), qRgba(0, 0, 0, 0));
}

void tst_ImageUtils::makeTintImage_ratio2_showsAtItsLogicalSize() {
  // A 32x32 icon in its "@2x" form, shown by a widget on a ratio-2 screen.
  const QPixmap tinted = QTImageUtils::MakeTintImage(WithRatio(Icon(64), 2), QColor(Qt::red));
  const QImage shown = Rendered(tinted, QSize(32, 32), 2);
  QCOMPARE(shown, DevicePixels(tinted));
  // The red disc sits in the middle of the area, not stretched over and past it.
  QCOMPARE(shown.pixel(32, 32), qRgba(255, 0, 0, 255));
  QCOMPARE(shown.pixel(20, 32), qRgba(255, 0, 0, 255));
  QCOMPARE(shown.pixel(44, 32), qRgba(255, 0, 0, 255));
  QCOMPARE(qAlpha(shown.pixel(2, 2)), 0);
  QCOMPARE(qAlpha(shown.pixel(61, 61)), 0);
}

void tst_ImageUtils::makeTintImage_colorAlphaIsApplied() {
  const QImage tinted = ToImage(QTImageUtils::MakeTintImage(Icon(), QColor(255, 0, 0, 128)));
  // The colour is painted over the blue at its own alpha: a red and blue mix, still opaque.
  const QRgb centre = tinted.pixel(16, 16);
  QCOMPARE(qAlpha(centre), 255);
  QVERIFY(qAbs(qRed(centre) - 128) <= 2);
  QVERIFY(qAbs(qBlue(centre) - 127) <= 2);
}

void tst_ImageUtils::makeTintImage_nullPixmap_isNullWithoutPainterWarnings() {
  QtMessageCapture messages;
  QVERIFY(QTImageUtils::MakeTintImage(QPixmap(), QColor(Qt::red)).isNull());
  QCOMPARE(int(messages.All().size()), 0);
}

void tst_ImageUtils::adjustImageTransformation_rotatedJpeg_swapsDimensions() {
  QTemporaryDir dir;
  const QString path = dir.filePath(QStringLiteral("camera.jpg"));
  QFile file(path);
  QVERIFY(file.open(QIODevice::WriteOnly));
  file.write(test_support::WithExifOrientation(test_support::JpegBytes(HalfAndHalf()), 6));
  file.close();

  const QImage turned = ToImage(QTImageUtils::AdjustImageTransformation(path));
  QCOMPARE(turned.size(), QSize(20, 40));
  // A quarter turn clockwise puts the red left half on top.
  QVERIFY(qRed(turned.pixel(10, 5)) > 200 && qGreen(turned.pixel(10, 5)) < 60);
  QVERIFY(qGreen(turned.pixel(10, 35)) > 200 && qRed(turned.pixel(10, 35)) < 60);
}

void tst_ImageUtils::adjustImageTransformation_noOrientation_isThePlainFile() {
  QTemporaryDir dir;
  const QString path = dir.filePath(QStringLiteral("plain.jpg"));
  QFile file(path);
  QVERIFY(file.open(QIODevice::WriteOnly));
  file.write(test_support::JpegBytes(HalfAndHalf()));
  file.close();

  const QPixmap result = QTImageUtils::AdjustImageTransformation(path);
  QCOMPARE(result.size(), QSize(40, 20));
  QCOMPARE(ToImage(result), ToImage(QPixmap(path)));
}

void tst_ImageUtils::adjustImageTransformation_unreadableFile_isNull() {
  QTemporaryDir dir;
  QVERIFY(
      QTImageUtils::AdjustImageTransformation(dir.filePath(QStringLiteral("none.jpg"))).isNull());
  const QString garbage = dir.filePath(QStringLiteral("garbage.jpg"));
  QFile file(garbage);
  QVERIFY(file.open(QIODevice::WriteOnly));
  file.write("not a picture");
  file.close();
  QVERIFY(QTImageUtils::AdjustImageTransformation(garbage).isNull());
  QCOMPARE(QTImageUtils::ImageTransformation(garbage), 0);
}

void tst_ImageUtils::imageTransformation_reportsTheStoredOrientation_data() {
  QTest::addColumn<int>("orientation");
  QTest::addColumn<int>("transformation");
  QTest::newRow("1 none") << 1 << int(QImageIOHandler::TransformationNone);
  QTest::newRow("3 rotate 180") << 3 << int(QImageIOHandler::TransformationRotate180);
  QTest::newRow("6 rotate 90") << 6 << int(QImageIOHandler::TransformationRotate90);
  QTest::newRow("8 rotate 270") << 8 << int(QImageIOHandler::TransformationRotate270);
}

void tst_ImageUtils::imageTransformation_reportsTheStoredOrientation() {
  QFETCH(int, orientation);
  QFETCH(int, transformation);
  QTemporaryDir dir;
  const QString path = dir.filePath(QStringLiteral("camera.jpg"));
  QFile file(path);
  QVERIFY(file.open(QIODevice::WriteOnly));
  file.write(test_support::WithExifOrientation(test_support::JpegBytes(HalfAndHalf()),
                                               quint16(orientation)));
  file.close();
  QCOMPARE(QTImageUtils::ImageTransformation(path), transformation);
}

void tst_ImageUtils::ratioOne_matchesPinnedOutput_data() {
  QTest::addColumn<int>("row");
  for (size_t i = 0; i < PinnedRows().size(); ++i) QTest::newRow(PinnedRows()[i].file) << int(i);
}

// The pinned files are rewritten, rather than compared, when QT_UTIL_WRITE_IMAGE_FIXTURES names a
// directory (see data/image_utils/README).
void tst_ImageUtils::ratioOne_matchesPinnedOutput() {
  QFETCH(int, row);
  const PinnedRow& pinned = PinnedRows()[size_t(row)];
  const QPixmap result = pinned.make();
  QCOMPARE(result.devicePixelRatio(), 1.0);
  const QString out_dir = qEnvironmentVariable("QT_UTIL_WRITE_IMAGE_FIXTURES");
  if (!out_dir.isEmpty()) {
    QVERIFY(QDir().mkpath(out_dir));
    QVERIFY(ToImage(result).save(QDir(out_dir).filePath(QString::fromUtf8(pinned.file)), "PNG"));
    QSKIP("fixture written, not compared");
  }
  const QImage expected(QDir(PinnedDir()).filePath(QString::fromUtf8(pinned.file)));
  QVERIFY2(!expected.isNull(), pinned.file);
  QCOMPARE(ToImage(result), expected.convertToFormat(QImage::Format_ARGB32));
}

QTEST_MAIN(tst_ImageUtils)
#include "tst_image_utils.moc"
