#include "qt_util/event_handler/monitor_event_observer.h"

struct MonitorEventObserver::SharedState {};

MonitorEventObserver::MonitorEventObserver(QObject* parent)
    : QObject(parent), state_(std::make_shared<SharedState>()) {}

MonitorEventObserver::~MonitorEventObserver() = default;

bool MonitorEventObserver::EnableAsyn(bool async, int delay) {
  this->async = async;
  this->delay = delay;
  return async;
}
