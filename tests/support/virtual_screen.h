#pragma once

// Extra screens for tests that need more than the one screen the platform plugin provides.
//
//   QScreen* right = test_support::AddVirtualScreen(QRect(1920, 0, 1280, 1024), 2.0, "right");
//   ... code under test sees QGuiApplication::screens() grow and screenAdded emitted ...
//   test_support::RemoveVirtualScreen(right);
//
// How the values reach QScreen (Qt 5.15 with high-DPI scaling off, the default here, or Qt 6,
// whose scaling is always on but whose factor is 1 at 96 dpi; either way no
// Qt::AA_EnableHighDpiScaling, no QT_SCALE_FACTOR / QT_SCREEN_SCALE_FACTORS /
// QT_AUTO_SCREEN_SCALE_FACTOR in the environment): Qt's own scale factor is 1, so
//   QScreen::geometry()          == the platform geometry passed here, unchanged;
//   QScreen::availableGeometry() == the platform available geometry (initially the geometry);
//   QScreen::devicePixelRatio()  == the platform ratio passed here, unchanged.
// The ratio does not shrink the geometry: a 2560x1440 screen at ratio 2 still reports a
// 2560x1440 geometry. A QWindow that is not created yet reports its screen's ratio; a created
// window asks its platform window. Qt 5's offscreen platform window always answers 1, so a
// shown widget on the offscreen platform paints at ratio 1 whatever its screen; Qt 6's answers
// its screen's ratio. (On Qt 6 the tests' offscreen screen is configured to Qt 5's 800x600 at
// 96 dpi, so Qt's own factor stays 1 there as well.) Code that needs
// a screen's ratio should ask the QScreen (QWidget::screen() / QWindow::screen()). With
// high-DPI scaling on, Qt would divide the geometry by its own factor and multiply the ratio by
// it; tests relying on the identity above must not turn it on.
//
// Every virtual screen lists all live virtual screens as its virtual siblings, so together they
// form one virtual desktop (the platform plugin's own screen stays on its own). The logical and
// physical resolution is 96 dpi. Screens still present when the QGuiApplication goes away are
// removed then, so tests need not clean up after a failed check.
//
// Requires a QGuiApplication (any platform, offscreen included). Every function ignores a null
// screen; the setters ignore screens that were not added here (they log a warning).

#include <QList>
#include <QRect>
#include <QString>

class QScreen;

namespace test_support {

/// Adds a screen and returns its QScreen (nullptr without a QGuiApplication). The screen is
/// appended to QGuiApplication::screens() and screenAdded is emitted synchronously. An empty
/// name gives "virtual-<n>". A ratio <= 0 is taken as 1.
QScreen* AddVirtualScreen(const QRect& geometry, qreal devicePixelRatio = 1.0,
                          const QString& name = {});

/// Removes a screen added by AddVirtualScreen: screenRemoved is emitted, windows on it move to
/// another screen, and the QScreen is deleted. Ignores null and foreign screens.
void RemoveVirtualScreen(QScreen* screen);

/// Changes the available geometry and delivers the change at once, so that
/// QScreen::availableGeometryChanged has been emitted when this returns.
void SetVirtualScreenAvailableGeometry(QScreen* screen, const QRect& availableGeometry);

/// Makes a virtual screen the primary one (first in QGuiApplication::screens());
/// primaryScreenChanged is emitted when it was not primary already.
void SetPrimaryVirtualScreen(QScreen* screen);

/// While it lives, QGuiApplication::screens() is empty and primaryScreen() is null, as in an
/// application that has lost every screen; the screens come back, in their order, when it goes.
/// Only the list is hidden: the screens stay alive and nothing is announced, so create no
/// windows and process no events meanwhile.
class ScopedNoScreens {
 public:
  ScopedNoScreens();
  ~ScopedNoScreens();
  ScopedNoScreens(const ScopedNoScreens&) = delete;
  ScopedNoScreens& operator=(const ScopedNoScreens&) = delete;

 private:
  QList<QScreen*> hidden_;
};

}  // namespace test_support
