#pragma once

// The process-wide helpers that the framework's singleton scope ends (the theme helper, the UI
// monitor helper) are created the same way; private to the library.

#include <atomic>
#include <mutex>

#include "base/singleton/scope_singleton.h"

namespace qt_util::internal {

/// The instance in `slot`, created with `create()` on the first call (from any thread: the
/// unlocked test is atomic, the creation happens once under `mutex`) and registered with
/// base::RegisterScopeSingleton. When the scope ends, the slot is cleared under `mutex` and the
/// instance deleted outside it, so that its destructor may ask for other singletons; the next
/// call then creates a new one.
template <typename T, typename Create>
T* ScopeSingletonInstance(std::atomic<T*>& slot, std::mutex& mutex, Create create) {
  T* instance = slot.load(std::memory_order_acquire);
  if (instance) return instance;
  std::lock_guard<std::mutex> lock(mutex);
  instance = slot.load(std::memory_order_relaxed);
  if (instance) return instance;
  instance = create();
  slot.store(instance, std::memory_order_release);
  base::RegisterScopeSingleton(&slot, [&slot, &mutex] {
    T* ending = nullptr;
    {
      std::lock_guard<std::mutex> lock(mutex);
      ending = slot.exchange(nullptr, std::memory_order_acq_rel);
    }
    delete ending;
  });
  return instance;
}

}  // namespace qt_util::internal
