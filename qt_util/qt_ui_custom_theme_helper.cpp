#include "qt_util/qt_ui_custom_theme_helper.h"

#include <QFile>
#include <atomic>
#include <mutex>

#include "base/common/include/logger.h"
#include "qt_util/scope_singleton_p.h"

namespace {

std::atomic<QTUICustomThemeHelper*> g_instance{nullptr};
std::mutex g_instance_mutex;

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
