#pragma once

/// @file
/// VxQtUiUtil's window behaviour: showing, raising, pinning and refreshing windows, the
/// per-widget record that skips redundant refreshes, clipboard images, time stamps and URLs.
/// GUI thread only. Include \<QLocale> or "base/variant/variant.h" where a call needs them
/// complete.
/// Per-platform results (X11, Wayland, offscreen): docs/platforms.md.

#include <QString>
#include <string>

#include "qt_util/qt_util_export.h"

class QLocale;
class QWidget;

namespace base::variant {
class Variant;
}

/// Free functions for windows, screens, images and style sheets of the client's widgets.
namespace VxQtUiUtil {

/// Runs the platform initialisation (empty on Linux) once and sets the process-wide flag;
/// later calls do nothing until UnInitUIUtil.
QT_UTIL_EXPORT void InitUIUtil();

/// Clears the flag InitUIUtil set.
QT_UTIL_EXPORT void UnInitUIUtil();

/// Shows `widget` in its remembered state (show(); showMaximized() for a minimised window that
/// was maximised; showNormal() for a minimised one only), then with `activate` raises it,
/// activates it and gives it the window-system input focus, in that order. Nothing for null.
QT_UTIL_EXPORT void ShowWindow(QWidget* widget, bool activate);

/// Makes `widget` a frameless, always-on-top tool window that bypasses the window manager,
/// replacing all its window flags, and stacks it on top with a translucent background.
/// Nothing for a null widget. Call it before showing the widget: on a shown window the new flags
/// make Qt hide it, and it stays hidden until shown again.
QT_UTIL_EXPORT void SetupToolWindow(QWidget* widget);

/// Sets or clears Qt::WindowStaysOnTopHint, shows the widget when `show`, then asks the window
/// system to keep its top-level window above others (or release it), also when not shown.
/// Nothing for a null widget. Changing the hint of a shown window makes Qt hide it and replace
/// its native window; pass `show` = true to keep such a window on screen (the request then goes
/// to the new window).
QT_UTIL_EXPORT void SetupTopMost(QWidget* widget, bool onTop, bool show);

/// raise() when `front`, else lower(), and the request goes to the window system at once: on
/// X11 Qt would otherwise hold it until its event loop next handles window-system events (the
/// next mouse move, say), and the window would stay where it was. Nothing for a null widget.
QT_UTIL_EXPORT void BringToFront(QWidget* widget, bool front);

/// update() for a widget that has a native window; for a null widget or one without a native
/// window yet, only the log line "update widget window should has a winId" (level 4).
QT_UTIL_EXPORT void UpdateWidgetWindow(QWidget* widget);

/// show() when `visible`, else hide(). Nothing for a null widget.
QT_UTIL_EXPORT void UpdateWidgetVisible(QWidget* widget, bool visible);

/// Whether `data` differs from the data last recorded on `widget` (property
/// "widget-update-data-Ha6z6e"); a difference records a copy of `data`. True exactly once per
/// change of data, and always for null `data` or a null widget, which record nothing.
QT_UTIL_EXPORT bool IsWidgetNeedUpdate(QWidget* widget, const base::variant::Variant* data);

/// Decodes standard base64 into an image (format from the content) and puts it on the
/// clipboard. False, with the clipboard unchanged, for empty text or bytes that are no image.
QT_UTIL_EXPORT bool SaveImageToClipBoard(const std::string& base64);

/// The Unix time `seconds` (narrowed to 32 bits) formatted by `locale` with the UTF-8 `format`
/// (QLocale::toString syntax). An empty string for 0 seconds or a null format.
QT_UTIL_EXPORT QString FormatTimeStamp(unsigned long seconds, const char* format, QLocale locale);

/// QDesktopServices::openUrl of `url` read in tolerant mode; its answer.
QT_UTIL_EXPORT bool OpenURL(const QString& url);

/// Keeps `above` over `widget` through SetWidgetOwnerShip, which changes nothing on Linux.
QT_UTIL_EXPORT void MakeWidgetAbove(QWidget* widget, QWidget* above);

/// The current thread's call stack as text; an empty string on Linux.
QT_UTIL_EXPORT QString CurrentThreadCallStackSymbols();

}  // namespace VxQtUiUtil
