#pragma once

/// @file
/// ControllerManager, the scheme-controller registry.

#include <memory>
#include <string>

#include "talvex_framework_export.h"

namespace talvex {
class SchemeControllerInterface;
}
namespace framework {
class Controller;  // qt_util/scheme_controller.h
}
class AppBaseView;

/// The process-wide registry of scheme controllers, keyed by scheme URL
/// (e.g. "talvex://page/home"). Safe to use from any thread.
class TALVEX_FRAMEWORK_EXPORT ControllerManager {
 public:
  /// The registry; created on first use and kept until the process ends.
  static ControllerManager* Instance();

  /// The controller registered under `scheme`. An unknown scheme, or any lookup while the
  /// registry is closed, gives the registry's shared default controller, a plain
  /// framework::Controller that answers every call with nothing. Never empty.
  std::shared_ptr<framework::Controller> IocFind(const std::string& scheme);

  /// Registers `controller` under `scheme`, replacing an earlier registration. An empty pointer
  /// is ignored, so that lookups keep their never-empty answer.
  void IocRegister(const std::string& scheme, std::shared_ptr<framework::Controller> controller);

  /// Removes the registration of `scheme`, if any.
  void IocUnregister(const std::string& scheme);

  /// While closed (during shutdown, say) every lookup gives the shared default controller;
  /// registrations are kept and come back when the registry is opened again.
  void SetClosed(bool closed);

  ControllerManager(const ControllerManager&) = delete;
  ControllerManager& operator=(const ControllerManager&) = delete;

 private:
  ControllerManager();
  ~ControllerManager();

  struct Data;
  std::unique_ptr<Data> data_;
};
