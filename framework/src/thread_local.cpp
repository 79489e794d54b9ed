#include "base/threading/thread_local.h"

#include <unordered_map>

namespace base::threading {
namespace {

struct Entry {
  void* value;
  void (*deleter)(void*);
};

void Free(const Entry& entry) {
  if (entry.deleter && entry.value) entry.deleter(entry.value);
}

// A trivially destructible flag outlives the store itself, so that calls made after the
// store's destructor ran (from other thread-exit destructors) can tell.
thread_local bool t_torn_down = false;

struct Store {
  std::unordered_map<std::string, Entry> entries_;

  ~Store() {
    t_torn_down = true;
    // A deleter may itself touch the store; take the entries out first.
    auto taken = std::move(entries_);
    entries_.clear();
    for (auto& item : taken) Free(item.second);
  }
};

Store* CurrentStore() {
  if (t_torn_down) return nullptr;
  thread_local Store store;
  return &store;
}

}  // namespace

void* ThreadLocal::GetValue(const std::string& key) {
  if (t_torn_down) return nullptr;
  Store* store = CurrentStore();
  auto it = store->entries_.find(key);
  return it == store->entries_.end() ? nullptr : it->second.value;
}

void ThreadLocal::SetValue(const std::string& key, void* value, void (*deleter)(void*)) {
  Store* store = CurrentStore();
  if (!store) {
    Free(Entry{value, deleter});
    return;
  }
  auto [it, inserted] = store->entries_.try_emplace(key, Entry{value, deleter});
  if (!inserted) {
    Entry previous = it->second;
    it->second = Entry{value, deleter};
    if (previous.value != value) Free(previous);
  }
}

void ThreadLocal::EnsureInitializedForCurrentThread() {
  CurrentStore();
}

}  // namespace base::threading
