#pragma once

// The window system a suite registered on several platforms runs on, and what it does with the
// windows a client shows, for choosing that suite's expectations. The platform is asked of Qt, as
// the library asks it. Whether a Wayland compositor has a seat is told by scripts/weston-run
// (QT_UTIL_WESTON_SEAT=1): a client has no way to ask before it shows a window.
#include <QGuiApplication>
#include <QString>
#include <QtGlobal>

enum class PlatformLane { kOffscreen, kWayland, kWaylandSeat, kOther };

inline PlatformLane CurrentPlatformLane() {
  const QString name = QGuiApplication::platformName();
  if (name == QStringLiteral("offscreen")) return PlatformLane::kOffscreen;
  if (name != QStringLiteral("wayland")) return PlatformLane::kOther;
  return qEnvironmentVariableIntValue("QT_UTIL_WESTON_SEAT") == 1 ? PlatformLane::kWaylandSeat
                                                                  : PlatformLane::kWayland;
}

inline bool IsWaylandLane(PlatformLane lane) {
  return lane == PlatformLane::kWayland || lane == PlatformLane::kWaylandSeat;
}

// The output scale the compositor runs at (scripts/weston-run reads the same variable); 1 off
// Wayland, where the suites run at Qt's own scale of 1.
inline int ExpectedOutputScale(PlatformLane lane) {
  if (!IsWaylandLane(lane)) return 1;
  const int scale = qEnvironmentVariableIntValue("QT_UTIL_WESTON_SCALE");
  return scale > 0 ? scale : 1;
}
