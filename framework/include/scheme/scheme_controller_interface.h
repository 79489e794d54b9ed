#pragma once

/// @file
/// The abstract scheme controller.

#include <memory>
#include <string>

#include "talvex_framework_export.h"

namespace base::variant {
class Variant;
}

/// A page's view as the client's UI code knows it; opaque to the framework.
class AppBaseView;

namespace talvex {

/// What a scheme controller answers to: a page reached through a scheme URL, called by operation
/// name with a Variant of arguments. Implementations are registered with ControllerManager.
class TALVEX_FRAMEWORK_EXPORT SchemeControllerInterface {
 public:
  /// The page's view, or an empty pointer when the page has none.
  virtual std::shared_ptr<AppBaseView> GetSchemeView() = 0;
  virtual ~SchemeControllerInterface();
  /// Runs `method` with `params` (which may be empty); the controller owns the parameters.
  virtual void Call(const std::string& method, std::unique_ptr<base::variant::Variant> params) = 0;
  /// Runs `method` with `params` and returns its answer; an empty pointer means that the
  /// controller has no answer, which callers treat as "not available".
  virtual std::unique_ptr<base::variant::Variant> CallHasResult(
      const std::string& method, std::unique_ptr<base::variant::Variant> params) = 0;
};

}  // namespace talvex
