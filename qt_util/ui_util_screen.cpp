// Screen geometry of VxQtUiUtil: which screen a widget or point is on, where pop-ups may go,
// and points and windows in device pixels.
#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "qt_util/ui_util_screen.h"
#include "ui/dpi_helper.h"
#include "ui/ui_helper.h"

namespace VxQtUiUtil {
namespace {

constexpr int64_t kIntMin = std::numeric_limits<int>::min();
constexpr int64_t kIntMax = std::numeric_limits<int>::max();

// A whole number of device pixels as an int. Absurd ratios or positions could take it past the
// int range, where a plain cast is undefined; those clamp to the range's ends instead.
int ToInt(double whole) {
  if (!(whole == whole)) return 0;  // NaN from a broken platform ratio
  if (whole >= static_cast<double>(kIntMax)) return static_cast<int>(kIntMax);
  if (whole <= static_cast<double>(kIntMin)) return static_cast<int>(kIntMin);
  return static_cast<int>(whole);
}

// A device-pixel coordinate truncated toward zero.
int TruncateToInt(double value) {
  return ToInt(std::trunc(value));
}

// A device-pixel value rounded to nearest, halves up (toward +infinity), as Qt 5.15's qRound
// does. Not qRound itself: Qt 6's rounds halves away from zero, so a window at x = -1001 on a
// screen of ratio 1.5 would start at -1502 on one build and at -1501 on the other.
int RoundHalfUpToInt(double value) {
  return ToInt(std::floor(value + 0.5));
}

// `start` moved, if need be, so that the span [start, start + span] (inclusive edges) lies
// within the int range: a QRect built from it then computes its edges without overflow.
int KeepSpanInRange(int64_t start, int64_t span) {
  const int64_t lowest = std::max(kIntMin, kIntMin - span);
  const int64_t highest = std::min(kIntMax, kIntMax - span);
  return static_cast<int>(std::clamp(start, lowest, highest));
}

// One axis of CorrectRect: the new start of the span [start, end] (inclusive edges) after
// moving its end to `max_end` when past it, then its start to `min_start` when before it.
// Computed in 64 bits, so that margins near the int limits cannot overflow, and clamped so that
// the moved span still fits an int.
int FitEdge(int start, int end, int64_t min_start, int64_t max_end) {
  const int64_t span = int64_t{end} - start;
  int64_t moved = start;
  if (int64_t{end} > max_end) moved = max_end - span;
  if (moved < min_start) moved = min_start;
  return KeepSpanInRange(moved, span);
}

enum class Axes { kBoth, kVertical, kHorizontal };

// The shared rule of the three centring functions: the target's global origin plus half the
// size difference (truncating), mapped into the widget's parent, moving only along `axes`.
void CenterOver(QWidget* widget, QWidget* target, Axes axes) {
  if (!widget || !target) return;
  const QPoint origin = target->mapToGlobal(QPoint(0, 0));
  const int x = origin.x() + (target->width() - widget->width()) / 2;
  const int y = origin.y() + (target->height() - widget->height()) / 2;
  QPoint point(axes == Axes::kVertical ? 0 : x, axes == Axes::kHorizontal ? 0 : y);
  if (QWidget* parent = widget->parentWidget()) point = parent->mapFromGlobal(point);
  switch (axes) {
    case Axes::kBoth:
      widget->move(point);
      break;
    case Axes::kVertical:
      widget->move(widget->x(), point.y());
      break;
    case Axes::kHorizontal:
      widget->move(point.x(), widget->y());
      break;
  }
}

// The screen whose geometry shares the largest area with the widget's frame, the first of
// equals; null when the frame is on no screen. This is the choice Qt 5's
// QDesktopWidget::screenNumber made, kept because clients place windows by it; Qt 6 removed that
// class, and QWidget::screen() answers a different question (the screen of the window's
// QWindow, which Qt moves only when the window system says so).
QScreen* LargestShareOf(const QWidget* widget, const QList<QScreen*>& all) {
  QList<QScreen*> screens = all;
  // With separate X screens (several virtual desktops), only the widget's own desktop counts.
  if (screens.size() != screens.constFirst()->virtualSiblings().size()) {
    const QWindow* handle = widget->windowHandle();
    if (!handle) {
      if (const QWidget* native = widget->nativeParentWidget()) handle = native->windowHandle();
    }
    if (handle && handle->screen()) screens = handle->screen()->virtualSiblings();
  }
  QRect frame = widget->frameGeometry();
  if (!widget->isWindow()) frame.moveTopLeft(widget->mapToGlobal(QPoint(0, 0)));
  QScreen* largest = nullptr;
  qint64 largest_area = 0;
  for (QScreen* screen : screens) {
    const QRect common = screen->geometry().intersected(frame);
    const qint64 area = qint64(common.width()) * common.height();
    if (area > largest_area) {
      largest = screen;
      largest_area = area;
    }
  }
  return largest;
}

}  // namespace

QScreen* GetScreen(QWidget* widget) {
  const auto screens = QGuiApplication::screens();
  if (screens.isEmpty()) return nullptr;
  QScreen* screen = widget ? LargestShareOf(widget, screens) : nullptr;
  return screen ? screen : QGuiApplication::primaryScreen();
}

QRect GetScreenRect(QWidget* widget) {
  const QScreen* screen = GetScreen(widget);
  return screen ? screen->geometry() : QRect();
}

QRect GetScreenAvailableRect(QWidget* widget) {
  const QScreen* screen = GetScreen(widget);
  return screen ? screen->availableGeometry() : QRect();
}

QRect GetWorkingScreenRect(QWidget* widget) {
  return GetScreenAvailableRect(widget);
}

QRect GetWidgetFitScreenRect(QWidget* widget) {
  QRect rect = GetScreenAvailableRect(widget);
  rect.setHeight(rect.height() - 40);
  return rect;
}

QRect CorrectRect(const QRect& rect, QMargins margins) {
  if (margins.isNull()) return rect;
  // The screen under the cursor, not the one under the rect: a pop-up opened from a click
  // belongs where the user is looking, even when its requested rect lies elsewhere.
  const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
  if (!screen) screen = QGuiApplication::primaryScreen();
  if (!screen) return rect;
  const QRect area = screen->availableGeometry();
  // Right before left and bottom before top, so that left and top win for a rect larger than
  // the area.
  const int left = FitEdge(rect.left(), rect.right(), int64_t{area.left()} + margins.left(),
                           int64_t{area.right()} - margins.right());
  const int top = FitEdge(rect.top(), rect.bottom(), int64_t{area.top()} + margins.top(),
                          int64_t{area.bottom()} - margins.bottom());
  QRect moved = rect;
  moved.moveTo(left, top);
  return moved;
}

QRect CenterRect(const QRect& rect, QSize size, QMargins margins) {
  QRect centred(QPoint(0, 0), size);
  centred.moveCenter(rect.center());
  return CorrectRect(centred, margins);
}

void CenterWidgetToRect(QWidget* widget, const QRect& rect) {
  if (!widget) return;
  QRect frame(0, 0, widget->width(), widget->height());
  frame.moveCenter(rect.center());
  widget->move(frame.topLeft());
}

void CenterToWidget(QWidget* widget, QWidget* target) {
  CenterOver(widget, target, Axes::kBoth);
}

void VerticalCenterToWidget(QWidget* widget, QWidget* target) {
  CenterOver(widget, target, Axes::kVertical);
}

void HorizontalCenterToWidget(QWidget* widget, QWidget* target) {
  CenterOver(widget, target, Axes::kHorizontal);
}

QScreen* GetPointNearestScreen(const QPoint& point) {
  if (QScreen* holder = QGuiApplication::screenAt(point)) return holder;
  QScreen* best = nullptr;
  // Squares are taken in 64 bits: for points near the end of the int range the 32-bit square
  // would overflow, and for every other point the two agree.
  int64_t best_distance = -1;
  const auto screens = QGuiApplication::screens();
  for (QScreen* screen : screens) {
    if (!screen) continue;
    const QRect g = screen->geometry();
    // Integer halves, not QRect::center(), which is one pixel less on even sizes.
    const int64_t cx = int64_t{g.left()} + g.width() / 2;
    const int64_t cy = int64_t{g.top()} + g.height() / 2;
    const int64_t dx = point.x() - cx;
    const int64_t dy = point.y() - cy;
    const int64_t distance = dx * dx + dy * dy;
    if (best_distance == -1 || distance < best_distance) {
      best = screen;
      best_distance = distance;
    }
  }
  return best;
}

QPoint TranslatePointFromQt(const QPoint& point) {
  const auto screens = QGuiApplication::screens();
  for (const QScreen* screen : screens) {
    if (!screen) continue;
    const QRect g = screen->geometry();
    if (!g.contains(point, false)) continue;
    const double ratio = screen->devicePixelRatio();
    // The origin stays unscaled: native coordinates put each screen where its logical
    // geometry has it and stretch only the offset inside it.
    return QPoint(TruncateToInt(g.left() + (point.x() - g.left()) * ratio),
                  TruncateToInt(g.top() + (point.y() - g.top()) * ratio));
  }
  return QPoint(0, 0);
}

QPoint QPointFromNative(const QPoint& point) {
  return UIHelper::QPointFromNative(point);
}

QRect GetWindowPixelRect(QWidget* widget) {
  if (!widget || !widget->isWindow()) return QRect();
  const QScreen* screen = widget->screen();
  if (!screen) screen = QGuiApplication::primaryScreen();
  if (!screen) return QRect();
  const double ratio = screen->devicePixelRatio();
  const QRect g = widget->geometry();
  // Unlike TranslatePointFromQt, the whole position is scaled and rounded: this is the window
  // as a pixel buffer, not a point on the native desktop. The size is what the buffer has; a
  // position past the int range gives way to it.
  const int64_t width = RoundHalfUpToInt(g.width() * ratio);
  const int64_t height = RoundHalfUpToInt(g.height() * ratio);
  const int64_t left = KeepSpanInRange(RoundHalfUpToInt(g.left() * ratio), width - 1);
  const int64_t top = KeepSpanInRange(RoundHalfUpToInt(g.top() * ratio), height - 1);
  // Built from its corners: QRect(left, top, width, height) adds left and width before taking
  // the one off, which overflows for a rect that ends at the very end of the int range.
  return QRect(QPoint(int(left), int(top)), QPoint(int(left + width - 1), int(top + height - 1)));
}

float GetDPIScale() {
  return DPIHelper::GetStartUpDPI();
}

float GetWidgetScreenDPI(QWidget* widget) {
  return widget ? DPIHelper::GetWidgetScreenDPI(widget) : DPIHelper::GetStartUpDPI();
}

}  // namespace VxQtUiUtil
