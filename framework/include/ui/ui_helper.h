#pragma once

/// @file
/// UIHelper, native to Qt point conversion.
/// Per-platform results (X11, Wayland, offscreen): docs/platforms.md.

#include "talvex_framework_export.h"

class QPoint;

/// Conversions between native (device-pixel) and Qt (logical) coordinates. GUI thread.
class TALVEX_FRAMEWORK_EXPORT UIHelper {
 public:
  /// The logical global point for a native global point. The native space keeps each screen's
  /// origin where its logical geometry has it and stretches the rest by the screen's device
  /// pixel ratio, truncating (logical x maps to left + (x - left) * ratio). The first screen in
  /// QGuiApplication::screens() whose stretched rectangle holds the point maps it back to the
  /// smallest logical point that maps to it, so every logical point survives a round trip on a
  /// screen of ratio 1 or more, fractional ratios included. A native point past the device
  /// pixel of the screen's last logical pixel gives that last pixel. A point on no screen comes
  /// back unchanged.
  static QPoint QPointFromNative(const QPoint& native);
};
