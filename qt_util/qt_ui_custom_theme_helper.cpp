#include "qt_util/qt_ui_custom_theme_helper.h"

#include <QFile>
#include <atomic>
#include <mutex>

#include "base/common/include/logger.h"
#include "base/singleton/scope_singleton.h"

namespace {

// Atomic so that the unlocked first test of the double-checked creation is no data race.
std::atomic<QTUICustomThemeHelper*> g_instance{nullptr};
std::mutex g_instance_mutex;

}  // namespace

ICustomThemeManager::~ICustomThemeManager() = default;

QTUICustomThemeHelper* QTUICustomThemeHelper::SharedInstance() {
  QTUICustomThemeHelper* instance = g_instance.load(std::memory_order_acquire);
  if (instance) return instance;
  std::lock_guard<std::mutex> lock(g_instance_mutex);
  instance = g_instance.load(std::memory_order_relaxed);
  if (!instance) {
    instance = new QTUICustomThemeHelper;
    g_instance.store(instance, std::memory_order_release);
    base::RegisterScopeSingleton(&g_instance, [] {
      QTUICustomThemeHelper* dying = nullptr;
      {
        std::lock_guard<std::mutex> lock(g_instance_mutex);
        dying = g_instance.exchange(nullptr, std::memory_order_acq_rel);
      }
      // Outside the lock: the manager's destructor may well ask for the helper again.
      delete dying;
    });
  }
  return instance;
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
  if (!manager_) {
    QTU_LOG(base::log::kLevelFailure)
        << "qt ui custom theme helper, current theme type failed! manager nullptr!";
    return 1;
  }
  return manager_->CurrentThemeType();
}

std::string QTUICustomThemeHelper::GetThemeColorStr(const std::string& token) const {
  if (!manager_) {
    QTU_LOG(base::log::kLevelFailure)
        << "qt ui custom theme helper, get theme color str failed! manager nullptr!";
    return "#FF000000";
  }
  return manager_->GetThemeColorStr(token);
}

uint32_t QTUICustomThemeHelper::GetThemeColor(const std::string& token) const {
  if (!manager_) {
    QTU_LOG(base::log::kLevelFailure)
        << "qt ui custom theme helper, get theme color failed! manager nullptr!";
    return 0;
  }
  return manager_->GetThemeColor(token);
}

uint32_t QTUICustomThemeHelper::GetThemeColorWithReplaceAlpha(const std::string& token,
                                                              const std::string& alpha) const {
  if (!manager_) {
    QTU_LOG(base::log::kLevelFailure)
        << "qt ui custom theme helper, get theme color with alpha failed! manager nullptr!";
    return 0;
  }
  return manager_->GetThemeColorWithReplaceAlpha(token, alpha);
}

bool QTUICustomThemeHelper::InstallAppThemeEventFilter(QObject* object) const {
  if (!manager_) {
    QTU_LOG(base::log::kLevelFailure)
        << "qt ui custom theme helper, install theme event failed! manager nullptr!";
    return false;
  }
  return manager_->InstallAppThemeEventFilter(object);
}

QColor QTUICustomThemeHelper::GetThemeQColor(const std::string& token) const {
  if (!manager_) {
    QTU_LOG(base::log::kLevelFailure)
        << "qt ui custom theme helper, get theme QColor failed! manager nullptr!";
    return QColor(Qt::black);
  }
  return manager_->GetThemeQColor(token);
}

QString QTUICustomThemeHelper::GetCurrentThemeResPath(const QString& path) const {
  if (!manager_) {
    QTU_LOG(base::log::kLevelFailure)
        << "qt ui custom theme helper, get current theme res path failed!";
    return path;
  }
  return manager_->GetCurrentThemeResPath(path);
}

QString QTUICustomThemeHelper::GenCurrentThemeQssPath(const QString& path) const {
  if (!manager_) {
    QTU_LOG(base::log::kLevelFailure)
        << "qt ui custom theme helper, get current theme qss path failed!";
    return path;
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
  if (!manager_) {
    QTU_LOG(base::log::kLevelFailure)
        << "qt ui custom theme helper, call is current dark type failed!";
    return false;
  }
  return manager_->IsCurrentDarkType();
}

bool QTUICustomThemeHelper::CheckThemeColorTokenValid(const QString& token) const {
  if (!manager_) {
    QTU_LOG(base::log::kLevelFailure)
        << "qt ui custom theme helper, check theme color token valid failed!";
    return false;
  }
  return manager_->CheckThemeColorTokenValid(token);
}

bool QTUICustomThemeHelper::CheckSetupQss(QWidget* widget, const QString& qss) {
  if (!manager_) {
    QTU_LOG(base::log::kLevelFailure) << "qt ui custom theme helper, check setup qss failed!";
    return true;
  }
  return manager_->CheckSetupQss(widget, qss);
}
