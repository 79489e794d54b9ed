#include "ui/ui_helper.h"

#include <QGuiApplication>
#include <QPoint>
#include <QRect>
#include <QScreen>
#include <cmath>
#include <optional>

namespace {

// The native coordinate of the logical offset `logical` along one axis of a screen starting at
// `origin`: the same double computation as the logical-to-native translation, truncated toward
// zero. Kept in double so that extreme geometries cannot overflow an int.
double ToNative(int origin, long long logical, double ratio) {
  return std::trunc(origin + logical * ratio);
}

// The logical coordinate for `native` along one axis of a screen, or nothing when `native` is
// outside the screen's stretched extent. The answer is the smallest logical offset on
// [0, extent) whose native form reaches `native`.
std::optional<int> FromNative(int origin, int extent, double ratio, int native) {
  const double offset = static_cast<double>(native) - origin;
  if (offset < 0 || offset >= extent * ratio) return std::nullopt;
  // ceil(offset / ratio) is the answer in exact arithmetic; step it onto the boundary of the
  // rounded computation ToNative makes, so that the round trip never drifts by one.
  long long logical = static_cast<long long>(std::ceil(offset / ratio));
  while (logical > 0 && ToNative(origin, logical - 1, ratio) >= native) --logical;
  while (logical < extent - 1 && ToNative(origin, logical, ratio) < native) ++logical;
  if (logical > extent - 1) logical = extent - 1;
  return static_cast<int>(origin + logical);
}

}  // namespace

QPoint UIHelper::QPointFromNative(const QPoint& native) {
  const auto screens = QGuiApplication::screens();
  for (const QScreen* screen : screens) {
    if (!screen) continue;
    const QRect geometry = screen->geometry();
    const double ratio = screen->devicePixelRatio();
    if (geometry.isEmpty() || !(ratio > 0) || !std::isfinite(ratio)) continue;
    const auto x = FromNative(geometry.left(), geometry.width(), ratio, native.x());
    const auto y = FromNative(geometry.top(), geometry.height(), ratio, native.y());
    if (x && y) return QPoint(*x, *y);
  }
  return native;
}
