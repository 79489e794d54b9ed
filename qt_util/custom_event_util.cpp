#include "qt_util/custom_event_util.h"

#include <QCoreApplication>
#include <QPointer>
#include <QWidget>
#include <map>
#include <utility>

#include "base/common/include/logger.h"
#include "base/variant/variant.h"

// The order of the definitions below is the order in which the numbers are taken at load time,
// and so decides which number each class gets when a hint is already taken. Keep it as it is and
// insert nothing in between.

namespace {

// Two numbers reserved ahead of the table. Nothing in the library reads them; taking them here
// keeps anything that registers later off them.
[[maybe_unused]] const int g_reserved_event_type_a = QEvent::registerEventType(2001);
[[maybe_unused]] const int g_reserved_event_type_b = QEvent::registerEventType(2002);

// Cleared when the pending-delete set goes away at exit, so that an object destroyed even later
// (a static of another library) does not touch the dead set.
bool g_pending_delete_alive = false;

struct PendingDeleteSet {
  PendingDeleteSet() { g_pending_delete_alive = true; }
  ~PendingDeleteSet() { g_pending_delete_alive = false; }
  PendingDeleteSet(const PendingDeleteSet&) = delete;
  PendingDeleteSet& operator=(const PendingDeleteSet&) = delete;
  std::set<QObject*> objects_;
  // A guard per entry of `objects_`, made by DeleteObjectLater. An entry normally leaves the set
  // with its object's destroyed signal; an object whose connections were cut by a client's
  // disconnect(), or that dies on another thread before the queued erase runs, leaves its
  // address behind, and a new object may be allocated there. The guard, cleared by Qt whatever
  // path destroys the object, tells such a stale entry from a real request.
  std::map<QObject*, QPointer<QObject>> guards_;
};

PendingDeleteSet g_pending_delete;

bool g_handler_installed = false;

void ForgetPendingDelete(QObject* object) {
  if (!g_pending_delete_alive) return;
  g_pending_delete.objects_.erase(object);
  g_pending_delete.guards_.erase(object);
}

// Whether `receiver` itself, and not an object that died at its address, was asked to be
// deleted. A stale entry is dropped on the way. An entry without a guard was put in the set by
// hand (the set is public) and is taken at its word.
bool IsPendingDelete(QObject* receiver) {
  if (!g_pending_delete_alive || g_pending_delete.objects_.count(receiver) == 0) return false;
  const auto guard = g_pending_delete.guards_.find(receiver);
  if (guard != g_pending_delete.guards_.end() && guard->second.isNull()) {
    ForgetPendingDelete(receiver);
    return false;
  }
  return true;
}

}  // namespace

// Hint 1012 is skipped on purpose and must stay skipped, so that the numbers after it keep
// their values.
int CustomDeleteEvent::EventType = QEvent::registerEventType(1001);
int ActivateWidgetEvent::EventType = QEvent::registerEventType(1002);
int ApplicationDeactiveEvent::EventType = QEvent::registerEventType(1003);
int DelayActionEvent::EventType = QEvent::registerEventType(1004);
int CompressCustomEvent::EventType = QEvent::registerEventType(1005);
int NativeMouseDownEvent::EventType = QEvent::registerEventType(1006);
int DisableLayoutEvent::EventType = QEvent::registerEventType(1007);
int InmeetingAddImageToInput::EventType = QEvent::registerEventType(1008);
int MagnifyWithEvent::EventType = QEvent::registerEventType(1009);
int NativeKeyBroadReleaseEvent::EventType = QEvent::registerEventType(1010);
int FloatSwitchBarVisibleChangeBeginEndEvent::EventType = QEvent::registerEventType(1011);
int WindowWillMiniaturizeEvent::EventType = QEvent::registerEventType(1013);

CustomEvent::CustomEvent(QEvent::Type type) : QEvent(type) {}

// Destructors are noexcept: a throwing callback ends the process instead of unwinding through
// Qt's event loop, which cannot survive it.
CustomEvent::~CustomEvent() {
  if (callback) callback();
  params.reset();
}

void CustomEvent::SetParams(const base::variant::Variant* new_params) {
  if (new_params) {
    params = std::make_shared<base::variant::Variant>(*new_params);
  } else {
    params.reset();
  }
}

CompressCustomEvent::CompressCustomEvent()
    : CustomEvent(static_cast<QEvent::Type>(CompressCustomEvent::EventType)) {}

CustomDeleteEvent::CustomDeleteEvent()
    : CustomEvent(static_cast<QEvent::Type>(CustomDeleteEvent::EventType)) {}

ActivateWidgetEvent::ActivateWidgetEvent()
    : CustomEvent(static_cast<QEvent::Type>(ActivateWidgetEvent::EventType)) {}

DelayActionEvent::DelayActionEvent(std::function<void()> delayed_action)
    : QEvent(static_cast<QEvent::Type>(DelayActionEvent::EventType)),
      action(std::move(delayed_action)) {}

// Out of line so that the class's type information has one home, in this library: the
// dispatcher's dynamic_cast must recognise events built in client code.
DelayActionEvent::~DelayActionEvent() = default;

bool CustomEventUtils::InitCustomEventHandler() {
  if (!g_handler_installed) {
    g_handler_installed =
        QInternal::registerCallback(QInternal::EventNotifyCallback, &CustomEventHandler);
  }
  if (!g_handler_installed) QTU_LOG(base::log::kLevelFailure) << "custom event handler init failed";
  return g_handler_installed;
}

// Sits on the path of every event Qt delivers: foreign events cost the null checks and three
// comparisons of the type, and nothing else.
bool CustomEventUtils::CustomEventHandler(void** data) {
  // Qt always hands a full array; a direct caller may not, and then nothing here is ours.
  if (!data || !data[0] || !data[1]) return false;
  auto* receiver = static_cast<QObject*>(data[0]);
  auto* event = static_cast<QEvent*>(data[1]);
  bool ignored_result = false;
  auto* result = data[2] ? static_cast<bool*>(data[2]) : &ignored_result;
  const int type = event->type();

  if (type == CustomDeleteEvent::EventType) {
    // Only objects still pending are deleted: a second request, or an object destroyed by
    // another path in the meantime, has already left the set.
    if (IsPendingDelete(receiver)) delete receiver;
    *result = true;
    return true;
  }
  if (type == ActivateWidgetEvent::EventType) {
    auto* widget = qobject_cast<QWidget*>(receiver);
    if (!widget) {
      QTU_LOG(base::log::kLevelFailure) << "receiver is not a qwidget";
      return false;
    }
    widget->activateWindow();
    *result = true;
    return true;
  }
  if (type == DelayActionEvent::EventType) {
    auto* delayed = dynamic_cast<DelayActionEvent*>(event);
    if (delayed && delayed->action) delayed->action();
    *result = true;
    return true;
  }
  return false;
}

void CustomEventUtils::DeleteObjectLater(QObject* object) {
  if (!object) return;
  if (!g_handler_installed) {
    QTU_LOG(base::log::kLevelFailure) << "custom event handler didn't init";
    return;
  }
  g_pending_delete.objects_.insert(object);
  g_pending_delete.guards_[object] = object;
  // The application is the context so that the entry goes with the object whichever path
  // destroys it. Without an application the object itself has to serve: a context-less
  // connection would be refused and leave a stale entry behind.
  QObject* context = QCoreApplication::instance();
  if (!context) context = object;
  QObject::connect(object, &QObject::destroyed, context, [object] { ForgetPendingDelete(object); });
  QCoreApplication::postEvent(object, new CustomDeleteEvent(), Qt::NormalEventPriority);
}

void CustomEventUtils::ActivateWidgetLater(QWidget* widget) {
  if (!widget) {
    QTU_LOG(base::log::kLevelFailure) << "widget is nullptr";
    return;
  }
  if (!g_handler_installed) {
    QTU_LOG(base::log::kLevelFailure) << "custom event handler didn't init";
    return;
  }
  QCoreApplication::postEvent(widget, new ActivateWidgetEvent(), Qt::NormalEventPriority);
}

void CustomEventUtils::DelayAction(QObject* context, std::function<void()> action) {
  if (!context || !action) return;
  if (!g_handler_installed) {
    QTU_LOG(base::log::kLevelFailure) << "custom event handler didn't init";
    return;
  }
  QCoreApplication::postEvent(context, new DelayActionEvent(std::move(action)),
                              Qt::NormalEventPriority);
}

bool CustomEventUtils::CompressPostEvent(QEvent* event, QObject* receiver, bool& result) {
  if (!receiver || !event) return false;
  if (event->type() == QEvent::LayoutRequest) {
    CompressCustomEvent compress;
    base::variant::Variant params;
    params["compress_event_type"] = base::variant::Variant(static_cast<int>(event->type()));
    params["compress_event"] = base::variant::Variant(static_cast<void*>(event));
    params["receiver"] = base::variant::Variant(static_cast<void*>(receiver));
    compress.SetParams(&params);
    QCoreApplication::sendEvent(receiver, &compress);
  }
  result = false;
  return false;
}

std::set<QObject*>* CustomEventUtils::PendingDeleteListInstance() {
  return &g_pending_delete.objects_;
}
