#pragma once

/// @file
/// QtScreenObserver, the application's screen changes as signals.
///
/// Behaviour on X11, Wayland and the offscreen platform: docs/platforms.md.

#include <QObject>

#include "qt_util/qt_util_export.h"

class QRect;
class QScreen;

/// Re-emits screen changes of the application as three signals, from construction to
/// destruction: screens plugged in or out, a new primary screen, and work-area changes of any
/// screen (including screens added later). Made without a QGuiApplication, it logs a level-1
/// line and never emits.
class QT_UTIL_EXPORT QtScreenObserver : public QObject {
  Q_OBJECT

 public:
  /// Starts observing the application's screens at once.
  explicit QtScreenObserver(QObject* parent = nullptr);

 signals:
  /// `geometry` is the screen's available geometry (without task bars and docks).
  void OnScreenGeometryChanged(QScreen* screen, const QRect& geometry);
  /// `screen` is the new primary screen.
  void OnPrimaryScreenChanged(QScreen* screen);
  /// A screen was added or removed; QGuiApplication::screens() is already up to date.
  void OnScreenListChanged();

 private:
  void HookScreen(QScreen* screen);
};
