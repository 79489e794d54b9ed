#include "qt_util/event_handler/event_observer.h"

#include <set>

#include "base/common/include/logger.h"

namespace {

// The only owner of every observer. Erasing an observer destroys it, and with it (as their
// context object) both of its destroyed-connections.
std::set<std::shared_ptr<EventObserver>> g_observers;

void Unregister(EventObserver* observer) {
  // The temporary from lock() keeps the observer alive until the statement ends, so the erase
  // never runs on a half-destroyed object.
  if (const std::shared_ptr<EventObserver> owned = observer->weak_from_this().lock()) {
    g_observers.erase(owned);
  }
}

}  // namespace

EventObserver::EventObserver() = default;

EventObserver::~EventObserver() = default;

bool EventObserver::eventFilter(QObject* watched, QEvent* event) {
  if (!callback) return QObject::eventFilter(watched, event);
  // A callback may destroy the listener (or delete another object that ends the listening):
  // the observer then leaves the registry mid-call, and must outlive this frame. An observer a
  // client made and installed itself has no owning pointer, and nothing here to keep alive.
  const std::shared_ptr<EventObserver> self = weak_from_this().lock();
  ++running_;
  const bool consumed = callback(watched, event);
  if (--running_ == 0) released_ = nullptr;
  return consumed || QObject::eventFilter(watched, event);
}

void EventObserver::ReleaseCallback() {
  if (running_ > 0) released_ = std::move(callback);
  callback = nullptr;
}

void QtEventObserver::ListenEvent(QObject* target, QObject* listener,
                                  std::function<bool(QObject*, QEvent*)> callback) {
  if (!target || !listener) {
    QTU_LOG(base::log::kLevelFailure) << "ListenEvent: null " << (target ? "listener" : "target");
    return;
  }
  auto observer = std::make_shared<EventObserver>();
  if (callback) {
    EventObserver* raw = observer.get();
    raw->callback = std::move(callback);
    target->installEventFilter(raw);
    QObject::connect(target, &QObject::destroyed, raw, [target, raw] {
      target->removeEventFilter(raw);
      Unregister(raw);
    });
    QObject::connect(listener, &QObject::destroyed, raw, [raw] {
      raw->ReleaseCallback();
      Unregister(raw);
    });
  }
  g_observers.insert(std::move(observer));
}

std::size_t QtEventObserver::ObserverCount() {
  return g_observers.size();
}
