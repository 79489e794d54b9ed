#pragma once

/// @file
/// QTImageUtils, pixmap utilities.

#include <QPixmap>
#include <QString>

#include "qt_util/qt_util_export.h"

class QColor;
class QRect;

/// Pixmap operations for avatars, icons and pictures. Every operation returns a new pixmap and
/// leaves its input untouched. GUI thread only (QPixmap).
class QT_UTIL_EXPORT QTImageUtils {
 public:
  /// MakeRoundRectImage with half the height as the radius (integer half: a height of 41 gives
  /// 20). Only the height counts, so a wide image becomes a pill rather than a circle.
  static QPixmap MakeRoundImage(const QPixmap& pixmap);

  /// The pixmap with its corners rounded by `radius` and transparent outside them. A null
  /// pixmap is returned as it is; a radius of 0 or less leaves every pixel as it was.
  static QPixmap MakeRoundRectImage(const QPixmap& pixmap, float radius);

  /// A pixmap of `rect.size()`: opaque black outside a rounded rectangle of `radius` (negative
  /// taken as 0), transparent inside. The rectangle is drawn at its own position, so pass one
  /// at (0, 0); another top-left gives a shifted mask.
  static QPixmap MakeRoundRectMask(const QRect& rect, float radius);

  /// The pixmap's shape filled with `color` (its alpha included): visible pixels take the
  /// colour, transparent ones stay transparent. An invalid or transparent colour returns the
  /// pixmap unchanged.
  static QPixmap MakeTintImage(const QPixmap& pixmap, const QColor& color);

  /// The image file at `path` with its stored orientation (a camera picture's orientation tag)
  /// applied; the plain file when it has none. Null when the file cannot be read.
  static QPixmap AdjustImageTransformation(const QString& path);

  /// The file's stored orientation as a QImageIOHandler::Transformations value; 0 when it has
  /// none or cannot be read.
  static int ImageTransformation(const QString& path);
};
