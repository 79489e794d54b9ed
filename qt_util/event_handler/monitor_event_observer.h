#pragma once

/// @file
/// MonitorEventObserver, where display, DPI and work-area changes are announced.

#include <QObject>
#include <cstdint>
#include <memory>

#include "qt_util/qt_util_export.h"

/// The place where the client's platform layer announces display, DPI and work-area changes.
/// Nothing in this library emits the three signals: the platform layer emits them on the GUI
/// thread, and reads the EnableAsyn settings to decide whether to emit at once or later (the
/// unit of `delay` is the platform layer's).
class QT_UTIL_EXPORT MonitorEventObserver : public QObject {
  Q_OBJECT

 public:
  /// An observer with the default settings (asynchronous, delay 0).
  explicit MonitorEventObserver(QObject* parent = nullptr);
  ~MonitorEventObserver() override;

  /// Records how the platform layer should deliver the signals; returns `async`.
  bool EnableAsyn(bool async, int delay);

  /// The settings last given to EnableAsyn (true and 0 until then), for the platform layer.
  bool IsAsync() const { return async; }
  /// The delay last given to EnableAsyn (0 until then), in the platform layer's unit.
  int Delay() const { return delay; }

 signals:
  /// Displays were added, removed or rearranged.
  void NotifyDisplayChange();
  /// The scale factor of a display changed.
  void NotifyDpiChanged();
  /// The work area (the screen without task bars and docks) changed.
  void NotifySettingWorkAreaChange();

 private:
  struct SharedState;

  bool async = true;
  int32_t delay = 0;
  // Reserved for the platform layer's delivery bookkeeping; empty in this library.
  std::shared_ptr<SharedState> state_;
};
