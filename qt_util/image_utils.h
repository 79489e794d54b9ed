#pragma once

/// @file
/// QTImageUtils, pixmap utilities.
///
/// Behaviour on X11, Wayland and the offscreen platform: docs/platforms.md.

#include <QPixmap>
#include <QString>

#include "qt_util/qt_util_export.h"

class QColor;
class QRect;

/// Pixmap operations for avatars, icons and pictures. Every operation returns a new pixmap and
/// leaves its input untouched. GUI thread only (QPixmap).
///
/// HiDPI pixmaps (a device pixel ratio other than 1, such as the "@2x" variants that
/// VxQtUiUtil::GetHdpiImage returns) keep their ratio: the result has the input's ratio and
/// size in device pixels, and the whole image is worked on. A radius is given in logical
/// pixels, the units a widget paints in, and is applied as radius x ratio device pixels without
/// rounding; this holds for fractional ratios too: a widget grabbed under QT_SCALE_FACTOR=1.25
/// and rounded by 7 gets corners of 8.75 device pixels, the pixels its ratio-1 copy gets with
/// radius 8.75. At ratio 1 nothing of this changes a pixel.
class QT_UTIL_EXPORT QTImageUtils {
 public:
  /// MakeRoundRectImage with half the height as the radius (integer half: a height of 41 gives
  /// 20). Only the height counts, so a wide image becomes a pill rather than a circle. The half
  /// is taken of the height in device pixels, so the ends are half discs at every ratio.
  ///
  /// See MakeRoundRectImage for when to use VxQtUiUtil::GetHasRadiusPixmap instead.
  static QPixmap MakeRoundImage(const QPixmap& pixmap);

  /// The pixmap with its corners rounded by `radius` logical pixels and transparent outside
  /// them, at the input's device pixel ratio. A null pixmap is returned as it is; a radius of 0
  /// or less leaves every pixel as it was.
  ///
  /// Use this for avatars and pictures whose radius is fractional or follows their height.
  /// VxQtUiUtil::GetHasRadiusPixmap (qt_util/ui_util.h) keeps the ratio and counts its radius in
  /// logical pixels too, but takes a whole-pixel radius and clips instead of masking; it suits
  /// the icons of VxQtUiUtil's HiDPI lookup.
  static QPixmap MakeRoundRectImage(const QPixmap& pixmap, float radius);

  /// A pixmap of `rect.size()`: opaque black outside a rounded rectangle of `radius` (negative
  /// taken as 0), transparent inside. The rectangle is drawn at its own position, so pass one
  /// at (0, 0); another top-left gives a shifted mask. A rectangle carries no ratio: the mask
  /// has ratio 1 and `radius` is in its pixels. For a HiDPI pixmap, pass its device rectangle
  /// (QPixmap::rect()) and radius x ratio, then set the ratio on the mask, as
  /// MakeRoundRectImage does.
  static QPixmap MakeRoundRectMask(const QRect& rect, float radius);

  /// The pixmap's shape filled with `color` (its alpha included), at the input's device pixel
  /// ratio: visible pixels take the colour, transparent ones stay transparent. A null pixmap,
  /// an invalid colour or a transparent one returns the pixmap unchanged.
  static QPixmap MakeTintImage(const QPixmap& pixmap, const QColor& color);

  /// The image file at `path` with its stored orientation (a camera picture's orientation tag)
  /// applied; the plain file when it has none. Null when the file cannot be read.
  static QPixmap AdjustImageTransformation(const QString& path);

  /// The file's stored orientation as a QImageIOHandler::Transformations value; 0 when it has
  /// none or cannot be read.
  static int ImageTransformation(const QString& path);
};
