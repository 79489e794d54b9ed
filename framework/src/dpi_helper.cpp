#include "ui/dpi_helper.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <atomic>

namespace {

// 0 until a screen has been asked; ratios are always positive.
std::atomic<float> g_startup_ratio{0.0f};

}  // namespace

float DPIHelper::GetStartUpDPI() {
  const float known = g_startup_ratio.load(std::memory_order_relaxed);
  if (known > 0.0f) return known;
  const QScreen* primary = QGuiApplication::primaryScreen();
  if (!primary) return 1.0f;
  float expected = 0.0f;
  g_startup_ratio.compare_exchange_strong(expected,
                                          static_cast<float>(primary->devicePixelRatio()));
  return g_startup_ratio.load(std::memory_order_relaxed);
}

float DPIHelper::GetWidgetScreenDPI(QWidget* widget) {
  if (!widget) return GetStartUpDPI();
  const QScreen* screen = widget->screen();
  if (!screen) return 1.0f;
  return static_cast<float>(screen->devicePixelRatio());
}
