#pragma once

/// @file
/// Custom events of the client and the dispatcher that defers work to the Qt event loop.
/// Per-platform results (X11, Wayland, offscreen): docs/platforms.md.
//
// Every event-type number below is taken from QEvent::registerEventType while the library
// loads, so all modules of the client agree on them without passing them around.

#include <QEvent>
#include <functional>
#include <memory>
#include <set>

#include "qt_util/qt_util_export.h"

class QObject;
class QWidget;

namespace base::variant {
class Variant;
}

/// A QEvent that carries an optional destroy callback and a shared copy of a Variant.
///
/// `callback` runs exactly once, when the event is destroyed: after delivery when Qt deletes a
/// posted event, or when an undelivered event goes away with its receiver. An exception out of
/// the callback ends the process.
class QT_UTIL_EXPORT CustomEvent : public QEvent {
 public:
  /// An event of `type` without callback or params.
  explicit CustomEvent(QEvent::Type type);
  /// Runs `callback` if it is set.
  ~CustomEvent() override;

  /// Replaces `params` with a private copy of `*params`; nullptr clears them.
  void SetParams(const base::variant::Variant* params);

  /// Runs once when the event is destroyed; empty by default.
  std::function<void()> callback;
  /// The event's data, shared by copies of the pointer; null when none was set.
  std::shared_ptr<base::variant::Variant> params;
};

/// Sent synchronously by CustomEventUtils::CompressPostEvent to announce a layout request.
/// Its params map holds "compress_event_type", "compress_event" and "receiver".
class QT_UTIL_EXPORT CompressCustomEvent : public CustomEvent {
 public:
  /// An event of type EventType without params; CompressPostEvent sets them.
  CompressCustomEvent();
  /// Registered type number (hint 1005).
  static int EventType;
};

/// Posted by CustomEventUtils::DeleteObjectLater; deletes its receiver if still pending.
class QT_UTIL_EXPORT CustomDeleteEvent : public CustomEvent {
 public:
  /// An event of type EventType.
  CustomDeleteEvent();
  /// Registered type number (hint 1001).
  static int EventType;
};

/// Posted by CustomEventUtils::ActivateWidgetLater; activates its receiver's window.
class QT_UTIL_EXPORT ActivateWidgetEvent : public CustomEvent {
 public:
  /// An event of type EventType.
  ActivateWidgetEvent();
  /// Registered type number (hint 1002).
  static int EventType;
};

/// Posted by CustomEventUtils::DelayAction. Destroying it never runs `action`: only delivery
/// does.
class QT_UTIL_EXPORT DelayActionEvent : public QEvent {
 public:
  /// An event of type EventType that will run `action` when delivered.
  explicit DelayActionEvent(std::function<void()> action);
  /// Drops `action` without running it.
  ~DelayActionEvent() override;

  /// What delivery runs; the event's receiver is its context.
  std::function<void()> action;

  /// Registered type number (hint 1004).
  static int EventType;
};

// Type numbers of application events whose classes live in other modules of the client. Only
// the numbers are kept here, so that every module reads the same ones.

/// The application lost the active state.
class QT_UTIL_EXPORT ApplicationDeactiveEvent {
 public:
  /// Registered type number (hint 1003).
  static int EventType;
  /// EventType as a QEvent::Type.
  static QEvent::Type QEventType() { return static_cast<QEvent::Type>(EventType); }
};

/// A mouse button went down, as the window system reported it.
class QT_UTIL_EXPORT NativeMouseDownEvent {
 public:
  /// Registered type number (hint 1006).
  static int EventType;
  /// EventType as a QEvent::Type.
  static QEvent::Type QEventType() { return static_cast<QEvent::Type>(EventType); }
};

/// Layout of a widget is switched off for a while.
class QT_UTIL_EXPORT DisableLayoutEvent {
 public:
  /// Registered type number (hint 1007).
  static int EventType;
};

/// An image is to be added to the in-meeting chat input.
class QT_UTIL_EXPORT InmeetingAddImageToInput {
 public:
  /// Registered type number (hint 1008).
  static int EventType;
};

/// A magnification gesture.
class QT_UTIL_EXPORT MagnifyWithEvent {
 public:
  /// Registered type number (hint 1009).
  static int EventType;
};

/// A key was released, as the window system reported it.
class QT_UTIL_EXPORT NativeKeyBroadReleaseEvent {
 public:
  /// Registered type number (hint 1010).
  static int EventType;
};

/// The floating switch bar starts or ends a visibility change.
class QT_UTIL_EXPORT FloatSwitchBarVisibleChangeBeginEndEvent {
 public:
  /// Registered type number (hint 1011).
  static int EventType;
};

/// A window is about to be minimised.
class QT_UTIL_EXPORT WindowWillMiniaturizeEvent {
 public:
  /// Registered type number (hint 1013).
  static int EventType;
};

/// Defers deletions, window activations and arbitrary actions to the event loop.
///
/// The events are handled by one callback hooked into Qt's event delivery, ahead of the
/// receiver, every event filter and any QApplication::notify override. Call
/// InitCustomEventHandler once a QApplication exists; before that the deferring functions only
/// log "custom event handler didn't init". Meant for the thread that runs the main event loop.
class QT_UTIL_EXPORT CustomEventUtils {
 public:
  /// Hooks the dispatcher into Qt's event delivery; later calls do nothing. Returns whether the
  /// dispatcher is installed (false, with a log line, when Qt refused it).
  static bool InitCustomEventHandler();

  /// The hook itself: `data` is {receiver, event, bool* result}. Returns true when the event
  /// was one of ours and is handled (then `*data[2]` is the delivery's result).
  ///
  /// A null `data`, receiver or event is not ours: the answer is false and nothing is touched.
  /// A null result pointer is allowed; the event is handled and its result dropped.
  ///
  /// A CustomDeleteEvent deletes its receiver only when that receiver is in the pending-delete
  /// set and is not merely occupying the address of a pending object that died without its
  /// entry leaving (its connections were cut with QObject::disconnect() before it died, or it
  /// died on another thread before the queued erase ran): such a stale entry is dropped and the
  /// event swallowed, so that an object later allocated at that address is never deleted by a
  /// request made for another. A new DeleteObjectLater for the new object is honoured.
  static bool CustomEventHandler(void** data);

  /// Deletes `object` from the event loop unless something else destroys it first. Asking
  /// twice still deletes once. Null is ignored.
  ///
  /// The deletion happens when the event loop delivers the event, whichever loop that is. An
  /// object that calls DeleteObjectLater(this) and then, still inside its own method, runs a
  /// nested event loop (QDialog::exec, QEventLoop::exec, QCoreApplication::processEvents, a
  /// modal message box) is deleted inside that loop, under its own frame: any member it
  /// touches after the loop returns is freed memory. Either ask for the deletion as the last
  /// thing before returning to the event loop, or guard the method:
  ///
  ///     QPointer<Panel> self(this);
  ///     CustomEventUtils::DeleteObjectLater(this);
  ///     dialog.exec();
  ///     if (!self) return;  // deleted meanwhile: touch nothing of this object
  static void DeleteObjectLater(QObject* object);

  /// Activates the window of `widget` from the event loop. A null widget only logs.
  static void ActivateWidgetLater(QWidget* widget);

  /// Runs `action` on `context`'s thread from the event loop; never when `context` dies first.
  /// A null context or an empty action does nothing.
  static void DelayAction(QObject* context, std::function<void()> action);

  /// Tells `receiver` synchronously about a layout request with a CompressCustomEvent; never
  /// merges anything itself. Always returns false and sets `result` to false, except that a
  /// null `event` or `receiver` leaves `result` alone.
  static bool CompressPostEvent(QEvent* event, QObject* receiver, bool& result);

  /// Objects with a deletion on the way that still exist. Never null.
  static std::set<QObject*>* PendingDeleteListInstance();
};
