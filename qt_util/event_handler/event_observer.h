#pragma once

/// @file
/// QtEventObserver and EventObserver: one object's events, until either side dies.
///
/// Behaviour on X11, Wayland and the offscreen platform: docs/platforms.md.

#include <QObject>
#include <cstddef>
#include <functional>
#include <memory>

#include "qt_util/qt_util_export.h"

class QEvent;

/// The event filter behind QtEventObserver::ListenEvent. Instances are owned by a
/// process-wide registry and leave it (and so are destroyed) when their target or listener
/// is destroyed; client code never needs to hold one.
///
/// One that a client builds and installs as an event filter itself works as a plain filter
/// around `callback`, owned by whoever made it (it then has no shared owner, which is fine).
class QT_UTIL_EXPORT EventObserver : public QObject,
                                     public std::enable_shared_from_this<EventObserver> {
  Q_OBJECT

 public:
  EventObserver();
  ~EventObserver() override;

  /// Returns true, keeping the event from the watched object, when the callback is set and
  /// returns true; otherwise QObject::eventFilter's answer.
  bool eventFilter(QObject* watched, QEvent* event) override;

  /// The listener's function, given the watched object and its event; true keeps the event
  /// from the object.
  std::function<bool(QObject*, QEvent*)> callback;

 private:
  friend class QtEventObserver;
  // Empties the callback; while it is running, it is parked until the outermost call returns.
  void ReleaseCallback();

  int running_ = 0;
  std::function<bool(QObject*, QEvent*)> released_;
};

/// Watches the events of one object on behalf of another.
class QT_UTIL_EXPORT QtEventObserver {
 public:
  /// Passes every event of `target` to `callback` before the target sees it, until `target`
  /// or `listener` is destroyed, whichever comes first. A callback returning true keeps the
  /// event from the target. Several listeners of one target are asked newest first, and the
  /// first that returns true stops the event. There is no call to stop listening earlier.
  ///
  /// An empty callback listens to nothing; its (idle) observer is kept until the process
  /// ends. A null target or listener logs a level-1 line and creates nothing.
  static void ListenEvent(QObject* target, QObject* listener,
                          std::function<bool(QObject*, QEvent*)> callback);

  /// How many observers the registry owns now: one per ListenEvent that created one, until its
  /// target or listener dies (an empty callback's observer stays until the process ends). A
  /// long-running client can watch it to see that its listening does not pile up.
  static std::size_t ObserverCount();
};
