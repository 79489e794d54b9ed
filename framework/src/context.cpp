#include "talvex_common/utils/context.h"

#include <QCoreApplication>
#include <mutex>

namespace talvex_common::utils::context {
namespace {

std::mutex& NameMutex() {
  static std::mutex mutex;
  return mutex;
}

std::string& StoredName() {
  static std::string name;
  return name;
}

}  // namespace

std::string GetAppName() {
  {
    std::lock_guard<std::mutex> lock(NameMutex());
    if (!StoredName().empty()) return StoredName();
  }
  return QCoreApplication::applicationName().toUtf8().toStdString();
}

void SetAppName(const std::string& utf8) {
  std::lock_guard<std::mutex> lock(NameMutex());
  StoredName() = utf8;
}

}  // namespace talvex_common::utils::context
