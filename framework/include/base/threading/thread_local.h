#pragma once

/// @file
/// Per-thread values freed when their thread ends.

#include <string>

#include "talvex_framework_export.h"

namespace base::threading {

/// Per-thread storage of raw pointers under string keys.
///
/// Each thread sees only its own values. A value is freed with the deleter handed over
/// with it when it is replaced, and when its thread ends (for the main thread: at process
/// exit). Once a thread's store has been torn down, GetValue gives nullptr and SetValue
/// frees the value it is given at once, so late callers never reach freed memory.
class TALVEX_FRAMEWORK_EXPORT ThreadLocal {
 public:
  /// The value stored under `key` on this thread, or nullptr when unset.
  static void* GetValue(const std::string& key);

  /// Stores `value` under `key` on this thread; a previous value under the key is freed
  /// with its own deleter. `deleter` may be null for values that need no freeing.
  static void SetValue(const std::string& key, void* value, void (*deleter)(void*));

  /// Creates this thread's store if it does not exist yet, so that its teardown at thread
  /// exit is arranged before the first value is stored.
  static void EnsureInitializedForCurrentThread();
};

}  // namespace base::threading
