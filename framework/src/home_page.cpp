#include "talvex_common/utils/home_page.h"

#include <atomic>
#include <mutex>
#include <optional>

#include "base/variant/variant.h"

namespace talvex_common::utils {
namespace {

std::atomic<bool> g_nx_home_page{false};

std::mutex& InfoMutex() {
  static std::mutex mutex;
  return mutex;
}

std::optional<base::variant::Variant>& StoredInfo() {
  static std::optional<base::variant::Variant> info;
  return info;
}

}  // namespace

bool IsNxHomePage() {
  return g_nx_home_page.load(std::memory_order_relaxed);
}

void SetNxHomePage(bool on) {
  g_nx_home_page.store(on, std::memory_order_relaxed);
}

bool GetHomeViewInfo(base::variant::Variant& info) {
  std::optional<base::variant::Variant> copy;
  {
    std::lock_guard<std::mutex> lock(InfoMutex());
    copy = StoredInfo();
  }
  if (!copy) return false;
  info = std::move(*copy);
  return true;
}

void SetHomeViewInfo(const base::variant::Variant& info) {
  std::optional<base::variant::Variant> next;
  if (info.GetType() == base::variant::kMap) next = info;
  std::lock_guard<std::mutex> lock(InfoMutex());
  StoredInfo().swap(next);
}

}  // namespace talvex_common::utils
