#pragma once

/// @file
/// The client's home window, found through the scheme controllers of whichever home page is in
/// use (VxQtUiUtil), and the positions handed to the companion desktop application
/// (VxTransQtUiUtil). GUI thread only. Include "base/variant/variant.h" where a call needs the
/// handle's type complete.
/// Per-platform results (X11, Wayland, offscreen): docs/platforms.md.

#include <QPoint>
#include <QRect>
#include <memory>

#include "qt_util/qt_util_export.h"

class QWidget;

namespace base::variant {
class Variant;
}

/// Free functions for windows, screens, images and style sheets of the client's widgets.
namespace VxQtUiUtil {

/// The home window's geometry: on the new home page the geometry of the widget that the host
/// controller "talvex://page/nxui/host" answers to "get_qt_window"; on the classic one the
/// rectangle of the home view information, whose end point is inclusive. QRect(0, 0, 0, 0) when
/// neither is available (no host, an answer that is not a non-null pointer, no "start_x").
QT_UTIL_EXPORT QRect GetHomeWindowRect();

/// The available geometry of the home window's screen on the new home page; on the classic
/// home page the same rectangle as GetHomeWindowRect. QRect(0, 0, 0, 0) when not available.
QT_UTIL_EXPORT QRect GetHomeScreenRect();

/// The home window's native handle as the home page reports it ("get_qt_window_handle" to the
/// host, "get_window_handle" to the classic home page), passed on as it comes; an empty pointer
/// when the page has none.
QT_UTIL_EXPORT std::unique_ptr<base::variant::Variant> GetHomeWindowHandle();

}  // namespace VxQtUiUtil

/// Positions handed to the companion desktop application, in global coordinates. Both take the
/// reference point widget->mapToGlobal(widget->geometry().topLeft()), which counts a top-level
/// window's own position twice; the companion application expects exactly that.
namespace VxTransQtUiUtil {

/// The reference point plus half the widget's size (integer halves); (0, 0) for a null widget.
QT_UTIL_EXPORT QPoint GetCommonPosToDravik(QWidget* widget);

/// Where the companion's 320-pixel panel goes beside `widget`: right of it, or left of it when
/// it would not fit on the widget's screen (with the rules for windows partly or wholly left
/// of 0 and beyond the primary screen); y measured upward from the bottom of the primary
/// screen. (0, 0) for a null widget.
QT_UTIL_EXPORT QPoint GetRealPosToDravik(QWidget* widget);

}  // namespace VxTransQtUiUtil
