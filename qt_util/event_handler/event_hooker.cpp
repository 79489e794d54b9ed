#include "qt_util/event_handler/event_hooker.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QCursor>
#include <QEvent>
#include <QMessageLogger>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWidget>
#include <memory>

#include "base/common/include/logger.h"
#include "qt_util/string_utils.h"

namespace {

// The Qt messages below name the function this way whatever the compiler would print, so
// that handlers that group messages by function see one stable name.
constexpr char kHandleGlobalEventSignature[] = "bool HandleGlobalEvent(QObject *, QEvent *)";

std::shared_ptr<EventHooker> g_global_hooker;

bool HandleButtonClick(QAbstractButton* button) {
  QString label = button->text();
  if (label.isEmpty()) label = button->objectName();
  if (label.isEmpty()) label = button->accessibleName();
  if (label.isEmpty()) label = button->accessibleDescription();
  if (!label.isEmpty()) {
    QTU_LOG(base::log::kLevelInfo) << "button " << QTStringUtils::QStr2StdStr(label) << " clicked";
  }
  return false;
}

// A client may send a bare QEvent with a mouse type; it must not be read as a mouse event.
const QMouseEvent* LeftButtonEvent(const QEvent* event) {
  auto* mouse_event = dynamic_cast<const QMouseEvent*>(event);
  return mouse_event && mouse_event->button() == Qt::LeftButton ? mouse_event : nullptr;
}

// HandleGlobalEvent sees every event of the process, and nearly all of them leave it at the
// switch: its branches live in functions of their own so that it needs no stack frame to get
// there.

Q_NEVER_INLINE bool HandleRelease(QObject* watched, QEvent* event) {
  const QMouseEvent* mouse_event = LeftButtonEvent(event);
  if (!mouse_event) return false;
  auto* button = qobject_cast<QAbstractButton*>(watched);
  // A release dragged off the button is no click.
  if (!button || !button->isDown() || !button->rect().contains(mouse_event->pos())) {
    return false;
  }
  return HandleButtonClick(button);
}

// The press branch. An overload of HandleGlobalEvent rather than a helper of its own name,
// because its log line names HandleGlobalEvent as the function it comes from.
Q_NEVER_INLINE bool HandleGlobalEvent(QWidget* widget) {
  const QPoint cursor = QCursor::pos();
  QTU_LOG(base::log::kLevelInfo) << "Click Widget Stack "
                                 << QTStringUtils::QStr2StdStr(widget->objectName())
                                 << " ,accessibleName:"
                                 << QTStringUtils::QStr2StdStr(widget->accessibleName())
                                 << ", pos={" << cursor.x() << "," << cursor.y() << "}";
  QMessageLogger(__FILE__, __LINE__, kHandleGlobalEventSignature)
      .debug("Click Widget ObjName: %s, ClassName: %s, Visible: %d, Hidden: %d",
             widget->objectName().toUtf8().constData(), widget->metaObject()->className(),
             widget->isVisible() ? 1 : 0, widget->isHidden() ? 1 : 0);
  return false;
}

Q_NEVER_INLINE bool HandleShow(QObject* watched) {
  if (!watched->isWidgetType()) return false;
  auto* widget = static_cast<QWidget*>(watched);
  if (widget->parentWidget()) return false;
  const QRect geometry = widget->geometry();
  QMessageLogger(__FILE__, __LINE__, kHandleGlobalEventSignature)
      .debug("Widget Show without parent widget [%p, %s], (%d, %d)",
             static_cast<const void*>(widget), widget->objectName().toUtf8().constData(),
             geometry.width(), geometry.height());
  return false;
}

Q_NEVER_INLINE bool HandleContextMenu(QObject* watched) {
  // A scroll bar's own menu (scroll here, top, bottom...) is noise in the client's views.
  return watched->isWidgetType() && qobject_cast<QScrollBar*>(watched) != nullptr;
}

bool HandleGlobalEvent(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::MouseButtonRelease:
      return HandleRelease(watched, event);
    case QEvent::MouseButtonPress:
      if (!LeftButtonEvent(event) || !watched->isWidgetType()) return false;
      return HandleGlobalEvent(static_cast<QWidget*>(watched));
    case QEvent::Show:
      return HandleShow(watched);
    case QEvent::ContextMenu:
      return HandleContextMenu(watched);
    default:
      return false;
  }
}

}  // namespace

EventHooker::EventHooker(QObject* parent) : QObject(parent) {
  QCoreApplication* application = QCoreApplication::instance();
  if (!application) {
    QTU_LOG(base::log::kLevelFailure)
        << "EventHooker created before the application object, no event is filtered";
    return;
  }
  application->installEventFilter(this);
}

void EventHooker::RegisterEventCallback(std::function<bool(QObject*, QEvent*)> event_callback) {
  if (running_ > 0) {
    replacement_ = std::move(event_callback);
    replaced_ = true;
    return;
  }
  callback = std::move(event_callback);
}

bool EventHooker::eventFilter(QObject* watched, QEvent* event) {
  if (!callback) return QObject::eventFilter(watched, event);
  ++running_;
  const bool consumed = callback(watched, event);
  if (--running_ == 0 && replaced_) {
    replaced_ = false;
    callback = std::move(replacement_);
    replacement_ = nullptr;
  }
  return consumed || QObject::eventFilter(watched, event);
}

void EventHooker::InitGlobalEventHooker() {
  if (g_global_hooker) return;
  if (!QCoreApplication::instance()) {
    QTU_LOG(base::log::kLevelFailure)
        << "InitGlobalEventHooker called before the application object, not installed";
    return;
  }
  g_global_hooker = std::make_shared<EventHooker>();
  g_global_hooker->RegisterEventCallback(
      [](QObject* watched, QEvent* event) { return HandleGlobalEvent(watched, event); });
}
