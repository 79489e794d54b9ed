#pragma once

/// @file
/// VxQtUiUtil's HiDPI images and resource packages: the scale variant of a themed resource that
/// suits a pixel ratio, SVG images rendered at a size, rounded pixmaps, and the client's compiled
/// Qt resource packages. GUI thread only (QPixmap, QPixmapCache). Include \<QPixmap> where a
/// call needs it complete.
///
/// A fractional ratio takes the next whole step up, never a rounded one: 1.25, 1.5 and 2 give
/// the "@2x" file (at ratio 2, which Qt scales down to the screen when painting it), 2.25 and
/// anything above 2 the "@3x" file. The widget overloads take the ratio of the widget's window,
/// which includes Qt's own scale factor (QT_SCALE_FACTOR): a window shown on a screen of ratio
/// 1 under QT_SCALE_FACTOR=1.5 has ratio 1.5. For a window that is not created yet, Qt 5.15
/// gives the largest ratio of all screens and Qt 6 the ratio of the screen the window is on.
///
/// Behaviour on X11, Wayland and the offscreen platform: docs/platforms.md.

#include <QSize>
#include <QString>
#include <string>

#include "qt_util/qt_util_export.h"

class QPixmap;
class QWidget;

/// Free functions for windows, screens, images and style sheets of the client's widgets.
namespace VxQtUiUtil {

/// The path of the best existing scale variant of the themed `path`: with
/// `step = qBound(2, qCeil(scale), 3)`, the "@3x" then the "@2x" file (only "@2x" for a scale
/// up to 2), formed by cutting `suffix` (the extension with its dot, e.g. ".png") off the end by
/// length and appending "@<step>x" + `suffix`. Gives the themed path itself when no variant
/// file exists.
QT_UTIL_EXPORT QString GetHdpiImagePath(double scale, const QString& path, const QString& suffix);

/// GetHdpiImagePath with the device pixel ratio of `widget`'s top-level window. Pass a widget:
/// a null one counts as ratio 1 (the "@2x" step).
QT_UTIL_EXPORT QString GetHdpiImagePath(QWidget* widget, const QString& path,
                                        const QString& suffix);

/// The best scale variant ("<themed name>@3x", "@2x", else the name itself) loaded as a pixmap
/// whose device pixel ratio is the step found (1 for the unsuffixed file), kept in
/// QPixmapCache under "<themed name>@<step of scale>x". A missing image gives a null pixmap and
/// the Qt info message "VxFind Res Invalid~(<path>)"; misses are not cached.
QT_UTIL_EXPORT QPixmap GetHdpiImage(double scale, const QString& name);

/// GetHdpiImage with the device pixel ratio of `widget`'s top-level window. Pass a widget: a
/// null one counts as ratio 1 (the "@2x" step).
QT_UTIL_EXPORT QPixmap GetHdpiImage(QWidget* widget, const QString& name);

/// The themed SVG `name` rendered at `size` times the scale step, with that step as its device
/// pixel ratio, cached under "svg_<themed path>_<step>". The size is not part of the cache key:
/// the first size rendered for a path and step is the one every later call gets. A missing file
/// gives a null pixmap and the Qt info message "Invalid image resource ~(<path>)"; a file that
/// is not a valid SVG, or a `size` of (-1, -1), gives GetHdpiImage(scale, themed path). The file
/// is tested and parsed before the cache is asked, so every call reads the file: keep the result
/// where a widget paints often. Any other size without area gives a null pixmap, not cached.
QT_UTIL_EXPORT QPixmap GetHdpiImageSvg(double scale, const QString& name, const QSize& size);

/// GetHdpiImageSvg with the device pixel ratio of `widget`'s top-level window. Pass a widget: a
/// null one counts as ratio 1 (the "@2x" step).
QT_UTIL_EXPORT QPixmap GetHdpiImageSvg(QWidget* widget, const QString& name, const QSize& size);

/// Whether `path` holds a valid SVG image; false for a missing or unreadable file.
QT_UTIL_EXPORT bool IsImageSvgType(const QString& path);

/// A copy of `pixmap` with transparent corners rounded by `radius` (radius 0 gives an unrounded
/// copy of the same size). A null pixmap is returned as it is. The copy keeps the input's size
/// in device pixels and its device pixel ratio, and `radius` counts in logical pixels: a ratio-2
/// pixmap from GetHdpiImage gets corners of `radius` * 2 device pixels, so that it looks on its
/// screen as the ratio-1 picture does on one of ratio 1. The product is not rounded: at ratio
/// 1.25 a radius of 8 gives the pixels a ratio-1 pixmap gets with radius 10, and a radius of 7
/// corners of 8.75 device pixels.
///
/// QTImageUtils::MakeRoundRectImage (qt_util/image_utils.h) rounds too, through a corner mask
/// and with a fractional radius, and QTImageUtils::MakeRoundImage rounds by half the height. Use
/// this one for icons and pictures of VxQtUiUtil's HiDPI lookup with a whole-pixel radius, and
/// QTImageUtils' for avatars and pictures whose radius is fractional or follows their height;
/// each documents how it treats a device pixel ratio.
QT_UTIL_EXPORT QPixmap GetHasRadiusPixmap(const QPixmap& pixmap, int radius);

/// Registers the resource packages "<module>.rcc", "<module>_extension.rcc" and
/// "<module>_linux.rcc" found in "<dir>/Asset". Each missing package is logged ("<path> not
/// exist.", level 4 for the main package, 6 for the two optional ones) and skipped.
QT_UTIL_EXPORT void LoadQtModuleResource(const std::string& dir, const std::string& module);

/// The application's name as the framework reports it, converted from UTF-8.
QT_UTIL_EXPORT QString GetAppName();

}  // namespace VxQtUiUtil
