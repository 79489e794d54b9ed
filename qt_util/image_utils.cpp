#include "qt_util/image_utils.h"

#include <QBrush>
#include <QColor>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QRect>

namespace {

// Rounds in device pixels: the mask and the drawing ignore the ratio, and the result takes the
// input's ratio back, so a HiDPI pixmap keeps its logical size and is covered whole.
QPixmap RoundDevicePixels(const QPixmap& pixmap, qreal device_radius) {
  if (pixmap.isNull()) return pixmap;
  QPixmap result = QTImageUtils::MakeRoundRectMask(pixmap.rect(), float(device_radius));
  if (result.isNull()) return pixmap;

  // The mask is black outside the rounded rectangle and transparent inside: SourceOut keeps the
  // picture only where the mask is transparent and clears the black corners.
  QPainter painter(&result);
  painter.setPen(Qt::NoPen);
  painter.setCompositionMode(QPainter::CompositionMode_SourceOut);
  painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
  painter.drawPixmap(pixmap.rect(), pixmap);
  painter.end();
  result.setDevicePixelRatio(pixmap.devicePixelRatio());
  return result;
}

}  // namespace

QPixmap QTImageUtils::MakeRoundImage(const QPixmap& pixmap) {
  return RoundDevicePixels(pixmap, pixmap.height() / 2);
}

QPixmap QTImageUtils::MakeRoundRectImage(const QPixmap& pixmap, float radius) {
  return RoundDevicePixels(pixmap, radius * pixmap.devicePixelRatio());
}

QPixmap QTImageUtils::MakeRoundRectMask(const QRect& rect, float radius) {
  if (radius < 0) radius = 0;
  QImage image(rect.size(), QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return QPixmap();
  image.fill(0);

  QPainter painter(&image);
  painter.setPen(Qt::NoPen);
  painter.setRenderHint(QPainter::Antialiasing, true);
  painter.fillRect(rect, QBrush(QColor(0, 0, 0, 255)));
  // Under Clear the brush colour does not matter: the rounded area becomes transparent.
  painter.setCompositionMode(QPainter::CompositionMode_Clear);
  painter.setBrush(QBrush(Qt::black, Qt::SolidPattern));
  painter.drawRoundedRect(rect, radius, radius, Qt::AbsoluteSize);
  painter.end();
  return QPixmap::fromImage(image);
}

QPixmap QTImageUtils::MakeTintImage(const QPixmap& pixmap, const QColor& color) {
  // A null pixmap has nothing to tint, and painting on one only makes QPainter complain.
  if (pixmap.isNull() || !color.isValid() || color == QColor(Qt::transparent)) return pixmap;

  // Painted in device pixels, source rectangle onto a same-sized target, so that a HiDPI
  // pixmap is tinted whole; the result then takes the input's ratio.
  QPixmap result(pixmap.size());
  result.fill(Qt::transparent);
  QPainter painter(&result);
  painter.drawPixmap(result.rect(), pixmap, pixmap.rect());
  painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
  painter.fillRect(result.rect(), color);
  painter.end();
  result.setDevicePixelRatio(pixmap.devicePixelRatio());
  return result;
}

QPixmap QTImageUtils::AdjustImageTransformation(const QString& path) {
  QImageReader reader(path, QByteArray());
  if (reader.transformation() != QImageIOHandler::TransformationNone) {
    reader.setAutoTransform(true);
    return QPixmap::fromImage(reader.read());
  }
  return QPixmap(path);
}

int QTImageUtils::ImageTransformation(const QString& path) {
  QImageReader reader(path, QByteArray());
  return static_cast<int>(reader.transformation());
}
