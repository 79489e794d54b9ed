#include "qt_util/event_handler/session_event_observer.h"

#include <memory>
#include <mutex>

#include "base/common/include/logger.h"

namespace {

std::shared_ptr<SessionEventObserver> g_instance;
std::mutex g_instance_mutex;

}  // namespace

SessionEventObserver::SessionEventObserver(ConstructionKey) {}

SessionEventObserver* SessionEventObserver::Instance() {
  std::lock_guard<std::mutex> lock(g_instance_mutex);
  if (!g_instance) g_instance = std::make_shared<SessionEventObserver>(ConstructionKey());
  return g_instance.get();
}

void SessionEventObserver::ConnectSessionChangeEvent(QObject* receiver,
                                                     std::function<void(bool)> handler) {
  if (!receiver || !handler) {
    QTU_LOG(base::log::kLevelFailure)
        << "ConnectSessionChangeEvent: " << (receiver ? "empty handler" : "null receiver");
    return;
  }
  connect(this, &SessionEventObserver::NotifySessionChange, receiver, std::move(handler));
}

void SessionEventObserver::DisconnectSessionChangeEvent(QObject* receiver) {
  if (!receiver) {
    QTU_LOG(base::log::kLevelFailure) << "DisconnectSessionChangeEvent: null receiver";
    return;
  }
  disconnect(receiver);
}
