#pragma once

/// @file
/// DPIHelper, start-up and per-widget scale factors.
/// Per-platform results (X11, Wayland, offscreen): docs/platforms.md.

#include "talvex_framework_export.h"

class QWidget;

/// Scale factors (device pixel ratios) of the screens the client runs on. GUI thread.
///
/// A ratio is QScreen::devicePixelRatio() as a float: the platform's ratio times Qt's own scale
/// factor (QT_SCALE_FACTOR), unrounded on Qt 5.15 and Qt 6 alike, so 1.25, 1.5 and 1.875 come
/// back as they are.
class TALVEX_FRAMEWORK_EXPORT DPIHelper {
 public:
  /// The primary screen's device pixel ratio when first asked; later screen changes do not
  /// alter it. Gives 1.0, without remembering it, while there is no screen to ask (before the
  /// QGuiApplication exists).
  static float GetStartUpDPI();

  /// The device pixel ratio of the screen `widget` is on (the primary screen for a widget that
  /// has none yet). A null widget gives GetStartUpDPI(); no screen at all gives 1.0.
  static float GetWidgetScreenDPI(QWidget* widget);
};
