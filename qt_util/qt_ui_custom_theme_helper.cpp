#include "qt_util/qt_ui_custom_theme_helper.h"

#include <QFile>
#include <atomic>
#include <mutex>

#include "base/common/include/logger.h"
#include "qt_util/scope_singleton_p.h"

namespace {

std::atomic<QTUICustomThemeHelper*> g_instance{nullptr};
std::mutex g_instance_mutex;

// What every operation does without a manager: its own level-1 line, recorded under its own
// name (the caller's __func__), and its fallback.
template <typename Fallback>
Fallback NoManager(const char* function, const char* text, Fallback fallback) {
  if (base::log::GetLogLevel() >= base::log::kLevelFailure) {
    __logwriter(base::log::kLevelFailure, std::string(QTU_LOG_FILE_NAME), __LINE__,
                std::string(function), base::log::PrintLog)
        << text;
  }
  return fallback;
}

}  // namespace

ICustomThemeManager::~ICustomThemeManager() = default;

QTUICustomThemeHelper* QTUICustomThemeHelper::SharedInstance() {
  return qt_util::internal::ScopeSingletonInstance(g_instance, g_instance_mutex,
                                                   [] { return new QTUICustomThemeHelper; });
}

QTUICustomThemeHelper::QTUICustomThemeHelper() {
  QTU_LOG(base::log::kLevelInfo) << "qt ui custom theme helper alloc";
}

QTUICustomThemeHelper::~QTUICustomThemeHelper() {
  QTU_LOG(base::log::kLevelInfo) << "qt ui custom theme helper dealloc";
  // The manager goes while the helper is still a whole QObject.
  manager_.reset();
}

bool QTUICustomThemeHelper::SetThemeManager(std::unique_ptr<ICustomThemeManager> manager) {
  manager_ = std::move(manager);
  return true;
}

int QTUICustomThemeHelper::CurrentThemeType() const {
  if (manager_) return manager_->CurrentThemeType();
  return NoManager(__func__,
                   "qt ui custom theme helper, current theme type failed! manager nullptr!", 1);
}

std::string QTUICustomThemeHelper::GetThemeColorStr(const std::string& token) const {
  if (manager_) return manager_->GetThemeColorStr(token);
  return NoManager(__func__,
                   "qt ui custom theme helper, get theme color str failed! manager nullptr!",
                   "#FF000000");
}

uint32_t QTUICustomThemeHelper::GetThemeColor(const std::string& token) const {
  if (manager_) return manager_->GetThemeColor(token);
  return NoManager(__func__, "qt ui custom theme helper, get theme color failed! manager nullptr!",
                   0);
}

uint32_t QTUICustomThemeHelper::GetThemeColorWithReplaceAlpha(const std::string& token,
                                                              const std::string& alpha) const {
  if (manager_) return manager_->GetThemeColorWithReplaceAlpha(token, alpha);
  return NoManager(__func__,
                   "qt ui custom theme helper, get theme color with alpha failed! manager nullptr!",
                   0);
}

bool QTUICustomThemeHelper::InstallAppThemeEventFilter(QObject* object) const {
  if (manager_) return manager_->InstallAppThemeEventFilter(object);
  return NoManager(
      __func__, "qt ui custom theme helper, install theme event failed! manager nullptr!", false);
}

QColor QTUICustomThemeHelper::GetThemeQColor(const std::string& token) const {
  if (manager_) return manager_->GetThemeQColor(token);
  return NoManager(__func__, "qt ui custom theme helper, get theme QColor failed! manager nullptr!",
                   QColor(Qt::black));
}

QString QTUICustomThemeHelper::GetCurrentThemeResPath(const QString& path) const {
  if (manager_) return manager_->GetCurrentThemeResPath(path);
  return NoManager(__func__, "qt ui custom theme helper, get current theme res path failed!", path);
}

QString QTUICustomThemeHelper::GenCurrentThemeQssPath(const QString& path) const {
  if (!manager_) {
    return NoManager(__func__, "qt ui custom theme helper, get current theme qss path failed!",
                     path);
  }
  QString result = path;
  if (QTUICustomThemeHelper::SharedInstance()->IsCurrentDarkType()) {
    const QString candidate = path + QStringLiteral("_dark");
    QFile file(candidate);
    if (file.open(QIODevice::ReadOnly)) {
      file.close();
      result = candidate;
    }
  }
  return result;
}

bool QTUICustomThemeHelper::IsCurrentDarkType() const {
  if (manager_) return manager_->IsCurrentDarkType();
  return NoManager(__func__, "qt ui custom theme helper, call is current dark type failed!", false);
}

bool QTUICustomThemeHelper::CheckThemeColorTokenValid(const QString& token) const {
  if (manager_) return manager_->CheckThemeColorTokenValid(token);
  return NoManager(__func__, "qt ui custom theme helper, check theme color token valid failed!",
                   false);
}

bool QTUICustomThemeHelper::CheckSetupQss(QWidget* widget, const QString& qss) {
  if (manager_) return manager_->CheckSetupQss(widget, qss);
  return NoManager(__func__, "qt ui custom theme helper, check setup qss failed!", true);
}
