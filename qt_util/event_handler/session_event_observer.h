#pragma once

/// @file
/// SessionEventObserver, session lock and unlock as a signal.
/// Per-platform results (X11, Wayland, offscreen): docs/platforms.md.

#include <QObject>
#include <functional>

#include "qt_util/qt_util_export.h"

/// The process-wide relay of session lock and unlock. The client's platform code emits
/// NotifySessionChange through Instance() on the GUI thread; window code subscribes with
/// ConnectSessionChangeEvent.
class QT_UTIL_EXPORT SessionEventObserver : public QObject {
  Q_OBJECT

  struct ConstructionKey {
    explicit ConstructionKey() = default;
  };

 public:
  /// Only Instance() can make one.
  explicit SessionEventObserver(ConstructionKey);

  /// The single instance, made on the first call; the same pointer on every call.
  static SessionEventObserver* Instance();

  /// Calls `handler` with the new lock state on every NotifySessionChange until `receiver`
  /// is destroyed or DisconnectSessionChangeEvent(receiver) is called. A null receiver or an
  /// empty handler logs a level-1 line and connects nothing.
  void ConnectSessionChangeEvent(QObject* receiver, std::function<void(bool)> handler);

  /// Ends every connection from this observer to `receiver`; a null receiver is ignored
  /// (level-1 log line) rather than ending every connection.
  void DisconnectSessionChangeEvent(QObject* receiver);

 signals:
  /// The session was locked (`is_locked` true) or unlocked.
  void NotifySessionChange(bool is_locked);
};
