#include "qt_util/image_utils.h"

#include <QBrush>
#include <QColor>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QRect>

QPixmap QTImageUtils::MakeRoundImage(const QPixmap& pixmap) {
  return MakeRoundRectImage(pixmap, float(pixmap.height() / 2));
}

QPixmap QTImageUtils::MakeRoundRectImage(const QPixmap& pixmap, float radius) {
  if (pixmap.isNull()) return pixmap;
  const QPixmap mask = MakeRoundRectMask(pixmap.rect(), radius);
  if (mask.isNull()) return pixmap;

  // The mask is black outside the rounded rectangle and transparent inside: SourceOut keeps the
  // picture only where the mask is transparent and clears the black corners.
  QPixmap result = mask;
  QPainter painter(&result);
  painter.setPen(Qt::NoPen);
  painter.setCompositionMode(QPainter::CompositionMode_SourceOut);
  painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
  painter.drawPixmap(pixmap.rect(), pixmap);
  painter.end();
  return result;
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
  if (!color.isValid() || color == QColor(Qt::transparent)) return pixmap;

  QPixmap result(pixmap.size());
  result.fill(Qt::transparent);
  QPainter painter(&result);
  painter.drawPixmap(0, 0, pixmap);
  painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
  painter.fillRect(result.rect(), color);
  painter.end();
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
