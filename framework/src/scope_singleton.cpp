#include "base/singleton/scope_singleton.h"

#include <mutex>
#include <utility>
#include <vector>

namespace base {
namespace {

struct Registration {
  void* slot;
  std::function<void()> deleter;
};

// Never destroyed: a late registration from a static destructor must still find a live
// registry, and whatever is left at process exit is the client's leak to own.
struct Registry {
  std::mutex mutex;
  std::vector<Registration> entries;
};

Registry& GetRegistry() {
  static Registry* registry = new Registry;
  return *registry;
}

}  // namespace

void RegisterScopeSingleton(void* instance_slot, std::function<void()> deleter) {
  if (!deleter) return;
  Registry& registry = GetRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  registry.entries.push_back(Registration{instance_slot, std::move(deleter)});
}

void EndSingletonScope() {
  Registry& registry = GetRegistry();
  std::vector<Registration> ending;
  {
    std::lock_guard<std::mutex> lock(registry.mutex);
    ending.swap(registry.entries);
  }
  // Taking the list out first gives each deleter exactly one run even when a deleter ends the
  // scope again, and lets deleters register without deadlocking.
  for (auto it = ending.rbegin(); it != ending.rend(); ++it) {
    auto deleter = std::move(it->deleter);
    deleter();
  }
}

}  // namespace base
