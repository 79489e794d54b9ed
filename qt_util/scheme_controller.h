#pragma once

/// @file
/// framework::Controller, the default scheme controller.

#include <memory>
#include <string>

#include "base/variant/variant.h"
#include "qt_util/qt_util_export.h"
#include "scheme/scheme_controller_interface.h"

namespace framework {

/// The default scheme controller: it holds nothing and answers every call with nothing.
/// Page controllers derive from it and override what they serve; the registry hands out a
/// plain one for schemes that nobody registered, so callers must read an empty answer as
/// "not available".
///
/// Header-only so that the framework's registry can create one without linking qt_util.
class QT_UTIL_EXPORT Controller : public talvex::SchemeControllerInterface {
 public:
  /// An empty pointer: the default controller has no view.
  std::shared_ptr<AppBaseView> GetSchemeView() override { return {}; }
  ~Controller() override = default;
  /// Does nothing; the parameters are destroyed.
  void Call(const std::string& /*method*/,
            std::unique_ptr<base::variant::Variant> /*params*/) override {}
  /// An empty pointer for every method; the parameters are destroyed.
  std::unique_ptr<base::variant::Variant> CallHasResult(
      const std::string& /*method*/, std::unique_ptr<base::variant::Variant> /*params*/) override {
    return {};
  }
};

}  // namespace framework
