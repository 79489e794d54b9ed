#include "qt_util/event_handler/screen_observer.h"

#include <QGuiApplication>
#include <QScreen>

#include "base/common/include/logger.h"

QtScreenObserver::QtScreenObserver(QObject* parent) : QObject(parent) {
  auto* app = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
  if (!app) {
    QTU_LOG(base::log::kLevelFailure)
        << "QtScreenObserver: no QGuiApplication, screens are not observed";
    return;
  }
  connect(app, &QGuiApplication::primaryScreenChanged, this,
          &QtScreenObserver::OnPrimaryScreenChanged);
  for (QScreen* screen : QGuiApplication::screens()) HookScreen(screen);
  connect(app, &QGuiApplication::screenAdded, this, [this](QScreen* screen) {
    HookScreen(screen);
    emit OnScreenListChanged();
  });
  connect(app, &QGuiApplication::screenRemoved, this, [this](QScreen* screen) {
    // Qt emits this from the screen's destructor; nothing may name the screen afterwards.
    if (screen) screen->disconnect(this);
    emit OnScreenListChanged();
  });
}

void QtScreenObserver::HookScreen(QScreen* screen) {
  if (!screen) return;
  connect(screen, &QScreen::availableGeometryChanged, this, [this, screen](const QRect& geometry) {
    emit OnScreenGeometryChanged(screen, geometry);
  });
}
