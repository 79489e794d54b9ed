#pragma once

/// @file
/// EventHooker, the application-wide event filter with one replaceable callback.
///
/// Behaviour on X11, Wayland and the offscreen platform: docs/platforms.md.

#include <QObject>
#include <functional>

#include "qt_util/qt_util_export.h"

class QEvent;

/// An event filter on the application object: it sees every event of every object in the
/// process before the object does, and hands each one to a single replaceable callback.
/// An event is swallowed only when the callback returns true for it.
///
/// Most clients only call InitGlobalEventHooker() once after creating their QApplication;
/// it installs the library's own hooker, which logs clicks (level 6) and top-level shows
/// (Qt debug messages) and keeps scroll bars from opening context menus.
class QT_UTIL_EXPORT EventHooker : public QObject {
  Q_OBJECT

 public:
  /// Installs the filter on the application object, which must already exist; without one
  /// the hooker logs a level-1 line and filters nothing.
  explicit EventHooker(QObject* parent = nullptr);

  /// Replaces the callback; only the last one registered is called. An empty function
  /// lets every event through. Called while the callback runs (from inside it, or from a
  /// nested event loop it started), the running call finishes with everything it captured
  /// intact, and the new callback takes over once that call has returned.
  void RegisterEventCallback(std::function<bool(QObject*, QEvent*)> event_callback);

  /// Passes every event to the callback; returns its answer (true stops the event), or false
  /// without a callback.
  bool eventFilter(QObject* watched, QEvent* event) override;

  /// Creates the process-wide hooker on the first call (after the QApplication exists) and
  /// does nothing on later calls. Called before any application object exists, it logs a
  /// level-1 line and creates nothing, so that a later call still works.
  static void InitGlobalEventHooker();

 private:
  std::function<bool(QObject*, QEvent*)> callback;
  // While the callback runs, a replacement waits here: assigning it to `callback` would
  // overwrite the running function's own captures under its frame.
  int running_ = 0;
  bool replaced_ = false;
  std::function<bool(QObject*, QEvent*)> replacement_;
};
