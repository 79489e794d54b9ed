#pragma once

/// @file
/// VxQtUiUtil's style sheets and accessibility keys: loading a style sheet file onto a widget,
/// with the theme helper allowed to veto it, and stamping widgets and list items with the keys
/// the client's UI automation finds them by. GUI thread only.
///
/// Behaviour on X11, Wayland and the offscreen platform: docs/platforms.md.

#include <QString>

#include "qt_util/qt_util_export.h"

class QListWidgetItem;
class QWidget;

/// Free functions for windows, screens, images and style sheets of the client's widgets.
namespace VxQtUiUtil {

/// Loads the style sheet file at `path` onto `widget` and sets the widget's property
/// "widget-config" to "widget__config--main". With `checkTheme`, the theme helper may veto the
/// sheet first; a veto sets neither. A file that cannot be opened logs "qss not found" (level
/// 1), keeps the widget's style sheet and still sets the property. Nothing for a null widget.
QT_UTIL_EXPORT void SetupQss(QWidget* widget, const QString& path, bool checkTheme);

/// The text of the style sheet file at `path`: its bytes as UTF-8 up to the first NUL byte, a
/// leading UTF-8 byte-order mark skipped, malformed bytes as U+FFFD. An empty string, without a
/// log line, when it cannot be opened. SetupQss applies the same text.
QT_UTIL_EXPORT QString GetQss(const QString& path);

/// Sets the accessible name "atg__<key>__name" and description "atg__<key>" of `widget`, with
/// the widget's object name standing in for an empty `key`. Nothing for a null widget; both
/// empty logs "key & objectName is empty" (level 1) and sets nothing.
QT_UTIL_EXPORT void SetAccessibleKey(QWidget* widget, const QString& key);

/// Sets the data roles Qt::AccessibleTextRole to "atg__<key>" and Qt::UserRole to
/// "atg__<key>__name" of `item`. Nothing for a null item; an empty key logs
/// "key & objectName is empty" (level 1) and sets nothing.
QT_UTIL_EXPORT void SetAccessibleKey(QListWidgetItem* item, const QString& key);

/// The accessibility key of a resource path: everything after its last "/" (empty for a path
/// ending in "/"), or the path itself without one. An empty `res` logs "res is empty" (level 1)
/// and is returned empty.
QT_UTIL_EXPORT QString AccessibleKeyOfRes(const QString& res);

/// Sets the accessible name of a non-null widget; nothing for a null one.
QT_UTIL_EXPORT void SetAccessibleName(QWidget* widget, const QString& name);

/// Sets the accessible description of a non-null widget; nothing for a null one.
QT_UTIL_EXPORT void SetAccessibleDesc(QWidget* widget, const QString& desc);

/// SetAccessibleName(widget, name), then SetAccessibleDesc(widget, desc).
QT_UTIL_EXPORT void SetAccessibleInfo(QWidget* widget, const QString& name, const QString& desc);

}  // namespace VxQtUiUtil
