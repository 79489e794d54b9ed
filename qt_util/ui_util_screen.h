#pragma once

/// @file
/// VxQtUiUtil's screen geometry: which screen a widget or point is on, where a window may be
/// placed, and where a point or window lies in device pixels. GUI thread only.
///
/// A screen's ratio is QScreen::devicePixelRatio(): its platform ratio times Qt's own scale
/// factor (QT_SCALE_FACTOR, fractional ones such as 1.25 and 1.5 included, on Qt 5.15 and Qt 6
/// alike). Qt keeps each screen's top-left and divides its size by the factor. Each function
/// below says how it rounds a fractional result; each gives the same answer on both Qt builds.
/// Per-platform results (X11, Wayland, offscreen): docs/platforms.md.

#include <QMargins>
#include <QPoint>
#include <QRect>
#include <QSize>

#include "qt_util/qt_util_export.h"

class QScreen;
class QWidget;

/// Free functions for windows, screens, images and style sheets of the client's widgets.
namespace VxQtUiUtil {

/// The screen that holds the largest part of `widget`'s frame (a child widget counts at its
/// global position; of equal parts, the first in QGuiApplication::screens()), else the primary
/// screen: for a null widget and for one on no screen. Null when the application has no screen.
QT_UTIL_EXPORT QScreen* GetScreen(QWidget* widget);

/// The geometry of GetScreen(widget); a null QRect when there is no screen.
QT_UTIL_EXPORT QRect GetScreenRect(QWidget* widget);

/// The available geometry of GetScreen(widget); a null QRect when there is no screen.
QT_UTIL_EXPORT QRect GetScreenAvailableRect(QWidget* widget);

/// Exactly GetScreenAvailableRect(widget).
QT_UTIL_EXPORT QRect GetWorkingScreenRect(QWidget* widget);

/// GetScreenAvailableRect(widget) with the top kept and the height reduced by 40 pixels.
QT_UTIL_EXPORT QRect GetWidgetFitScreenRect(QWidget* widget);

/// `rect` moved, size kept, inside the available area of the screen under the mouse cursor
/// (the primary screen when the cursor is on none) less `margins`: right, bottom, left, then
/// top edge, with Qt's inclusive edges. A rect larger than the area therefore ends at the left
/// and top margins. All-zero margins return `rect` unchanged, even off every screen. With no
/// screen at all, `rect` is returned unchanged.
QT_UTIL_EXPORT QRect CorrectRect(const QRect& rect, QMargins margins);

/// A rect of `size` centred on `rect.center()`, then CorrectRect with `margins`.
QT_UTIL_EXPORT QRect CenterRect(const QRect& rect, QSize size, QMargins margins);

/// Moves `widget` so that its centre is `rect`'s centre; `rect` is in the coordinates
/// QWidget::move uses (no mapping). Nothing for a null widget.
QT_UTIL_EXPORT void CenterWidgetToRect(QWidget* widget, const QRect& rect);

/// Centres `widget` over `target` on both axes, with truncating integer halves, mapped into the
/// widget's parent when it has one. Nothing unless both are non-null.
QT_UTIL_EXPORT void CenterToWidget(QWidget* widget, QWidget* target);

/// CenterToWidget on the vertical axis only: the widget's x is kept.
QT_UTIL_EXPORT void VerticalCenterToWidget(QWidget* widget, QWidget* target);

/// CenterToWidget on the horizontal axis only: the widget's y is kept.
QT_UTIL_EXPORT void HorizontalCenterToWidget(QWidget* widget, QWidget* target);

/// The screen holding the global `point`, else the screen whose centre (integer halves) is
/// nearest by squared distance, the earlier one in QGuiApplication::screens() on ties. Null
/// when there is no screen.
QT_UTIL_EXPORT QScreen* GetPointNearestScreen(const QPoint& point);

/// A global logical point in device pixels: on the first screen whose geometry holds it (edges
/// included), origin + (point - origin) * ratio, truncated toward zero; the origin itself is not
/// scaled. Toward zero means down right of the desktop's origin and up left of it: at ratio 1.25
/// the point (1921, 1) on a screen at (1920, 0) gives (1921, 1), and (-1001, 1) on a screen at
/// (-1280, 0) gives (-931, 1) (from -931.25). A point on no screen gives (0, 0), also one in a
/// gap that a fractional factor opens between screens.
QT_UTIL_EXPORT QPoint TranslatePointFromQt(const QPoint& point);

/// The framework's UIHelper::QPointFromNative(point), unchanged: the inverse of
/// TranslatePointFromQt on screens of ratio 1 or more, fractional ones included. A native point
/// past the device pixel of a screen's last logical pixel (at 1.25, native column 1279 of a
/// 1280-pixel screen, 1024 logical pixels wide) gives that last logical pixel.
QT_UTIL_EXPORT QPoint QPointFromNative(const QPoint& point);

/// The geometry of a window in device pixels, position and size each multiplied by its screen's
/// ratio (the primary screen's when it has none) and rounded to nearest, halves up (toward
/// +infinity), on both Qt builds: at 1.25 a window (10, 10, 101, 51) gives (13, 13, 126, 64), at
/// 1.5 a window at x = -1001 starts at -1501 (from -1501.5). The size is that of the window's
/// buffer; a position whose rect would end past the int range is moved back so that it ends at
/// its last value. A null QRect for a null widget, one that is not a window, or no screen at
/// all.
QT_UTIL_EXPORT QRect GetWindowPixelRect(QWidget* widget);

/// The scale factor in force when the process started (DPIHelper::GetStartUpDPI): the primary
/// screen's ratio, Qt's own scale factor included (1.25 under QT_SCALE_FACTOR=1.25).
QT_UTIL_EXPORT float GetDPIScale();

/// The scale factor of the screen `widget` is on (its ratio, as for GetDPIScale); GetDPIScale()
/// for a null widget.
QT_UTIL_EXPORT float GetWidgetScreenDPI(QWidget* widget);

}  // namespace VxQtUiUtil
