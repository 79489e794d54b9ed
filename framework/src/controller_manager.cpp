#include "scheme/controller_manager.h"

#include <map>
#include <mutex>

#include "qt_util/scheme_controller.h"

namespace talvex {
SchemeControllerInterface::~SchemeControllerInterface() = default;
}  // namespace talvex

struct ControllerManager::Data {
  std::mutex mutex;
  std::map<std::string, std::shared_ptr<framework::Controller>> controllers;
  std::shared_ptr<framework::Controller> default_controller;
  bool closed = false;
};

ControllerManager::ControllerManager() : data_(std::make_unique<Data>()) {}

ControllerManager::~ControllerManager() = default;

ControllerManager* ControllerManager::Instance() {
  // Never destroyed: controllers may be looked up from static destructors of other libraries.
  static ControllerManager* instance = new ControllerManager;
  return instance;
}

std::shared_ptr<framework::Controller> ControllerManager::IocFind(const std::string& scheme) {
  std::lock_guard<std::mutex> lock(data_->mutex);
  if (!data_->closed) {
    const auto it = data_->controllers.find(scheme);
    if (it != data_->controllers.end()) return it->second;
  }
  if (!data_->default_controller) {
    data_->default_controller = std::make_shared<framework::Controller>();
  }
  return data_->default_controller;
}

void ControllerManager::IocRegister(const std::string& scheme,
                                    std::shared_ptr<framework::Controller> controller) {
  if (!controller) return;
  std::shared_ptr<framework::Controller> previous;
  {
    std::lock_guard<std::mutex> lock(data_->mutex);
    auto& slot = data_->controllers[scheme];
    previous = std::move(slot);
    slot = std::move(controller);
  }
  // `previous` is released here, outside the lock: its destructor may call back into us.
}

void ControllerManager::IocUnregister(const std::string& scheme) {
  std::shared_ptr<framework::Controller> removed;
  {
    std::lock_guard<std::mutex> lock(data_->mutex);
    const auto it = data_->controllers.find(scheme);
    if (it == data_->controllers.end()) return;
    removed = std::move(it->second);
    data_->controllers.erase(it);
  }
}

void ControllerManager::SetClosed(bool closed) {
  std::lock_guard<std::mutex> lock(data_->mutex);
  data_->closed = closed;
}
