#include "support/virtual_screen.h"

#include <private/qguiapplication_p.h>
#include <qpa/qplatformscreen.h>
#include <qpa/qwindowsysteminterface.h>

#include <QGuiApplication>
#include <QImage>
#include <QScreen>
#include <QtDebug>
#include <algorithm>
#include <vector>

namespace test_support {
namespace {

constexpr qreal kDpi = 96.0;

class VirtualPlatformScreen : public QPlatformScreen {
 public:
  VirtualPlatformScreen(const QRect& geometry, qreal ratio, const QString& name)
      : geometry_(geometry), available_(geometry), ratio_(ratio), name_(name) {}

  QRect geometry() const override { return geometry_; }
  QRect availableGeometry() const override { return available_; }
  int depth() const override { return 32; }
  QImage::Format format() const override { return QImage::Format_ARGB32_Premultiplied; }
  qreal devicePixelRatio() const override { return ratio_; }
  QDpi logicalDpi() const override { return QDpi(kDpi, kDpi); }
  QSizeF physicalSize() const override { return QSizeF(geometry_.size()) / kDpi * 25.4; }
  QString name() const override { return name_; }
  QList<QPlatformScreen*> virtualSiblings() const override;

  void SetAvailableGeometry(const QRect& rect) { available_ = rect; }

 private:
  QRect geometry_;
  QRect available_;
  qreal ratio_;
  QString name_;
};

// Live virtual screens in the order they were added; only touched from the GUI thread.
std::vector<VirtualPlatformScreen*>& Screens() {
  static std::vector<VirtualPlatformScreen*> screens;
  return screens;
}

int g_next_number = 1;
bool g_cleanup_registered = false;

QList<QPlatformScreen*> VirtualPlatformScreen::virtualSiblings() const {
  QList<QPlatformScreen*> siblings;
  for (VirtualPlatformScreen* screen : Screens()) siblings.append(screen);
  return siblings;
}

VirtualPlatformScreen* Find(QScreen* screen) {
  if (!screen) return nullptr;
  for (VirtualPlatformScreen* candidate : Screens()) {
    if (candidate->screen() == screen) return candidate;
  }
  return nullptr;
}

// The platform screen behind a screen added here; nullptr (and a warning for a foreign one)
// otherwise.
VirtualPlatformScreen* FindOrWarn(QScreen* screen, const char* caller) {
  if (!screen) return nullptr;
  VirtualPlatformScreen* platform_screen = Find(screen);
  if (!platform_screen) {
    qWarning("%s: not a virtual screen: %s", caller, qPrintable(screen->name()));
  }
  return platform_screen;
}

void Remove(VirtualPlatformScreen* platform_screen) {
  auto& screens = Screens();
  screens.erase(std::remove(screens.begin(), screens.end(), platform_screen), screens.end());
  // Deletes the QScreen and the platform screen.
  QWindowSystemInterface::handleScreenRemoved(platform_screen);
}

// Runs while the platform integration is still alive, before the application's screens go.
void RemoveAllAtExit() {
  while (!Screens().empty()) Remove(Screens().back());
  g_cleanup_registered = false;
}

}  // namespace

QScreen* AddVirtualScreen(const QRect& geometry, qreal devicePixelRatio, const QString& name) {
  if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
    qWarning("AddVirtualScreen: no QGuiApplication");
    return nullptr;
  }
  const qreal ratio = devicePixelRatio > 0 ? devicePixelRatio : 1.0;
  const QString screen_name =
      name.isEmpty() ? QStringLiteral("virtual-%1").arg(g_next_number) : name;
  ++g_next_number;
  auto* platform_screen = new VirtualPlatformScreen(geometry, ratio, screen_name);
  Screens().push_back(platform_screen);
  if (!g_cleanup_registered) {
    qAddPostRoutine(RemoveAllAtExit);
    g_cleanup_registered = true;
  }
  QWindowSystemInterface::handleScreenAdded(platform_screen, false);
  return platform_screen->screen();
}

void RemoveVirtualScreen(QScreen* screen) {
  VirtualPlatformScreen* platform_screen = FindOrWarn(screen, "RemoveVirtualScreen");
  if (!platform_screen) return;
  Remove(platform_screen);
}

void SetVirtualScreenAvailableGeometry(QScreen* screen, const QRect& availableGeometry) {
  VirtualPlatformScreen* platform_screen = FindOrWarn(screen, "SetVirtualScreenAvailableGeometry");
  if (!platform_screen) return;
  // Kept on the platform side as well, so that Qt re-reading the platform screen later agrees.
  platform_screen->SetAvailableGeometry(availableGeometry);
  QWindowSystemInterface::handleScreenGeometryChange(screen, platform_screen->geometry(),
                                                     availableGeometry);
  QWindowSystemInterface::flushWindowSystemEvents();
}

void SetPrimaryVirtualScreen(QScreen* screen) {
  VirtualPlatformScreen* platform_screen = FindOrWarn(screen, "SetPrimaryVirtualScreen");
  if (!platform_screen) return;
  QWindowSystemInterface::handlePrimaryScreenChanged(platform_screen);
}

ScopedNoScreens::ScopedNoScreens() {
  hidden_.swap(QGuiApplicationPrivate::screen_list);
}

ScopedNoScreens::~ScopedNoScreens() {
  hidden_.swap(QGuiApplicationPrivate::screen_list);
}

}  // namespace test_support
