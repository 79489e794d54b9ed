#pragma once

/// @file
/// Singletons destroyed when the framework scope ends.

#include <functional>

#include "talvex_framework_export.h"

namespace base {

/// Registers a singleton with the current singleton scope: `deleter` runs once when the scope
/// ends. `instance_slot` names the singleton (usually the address of the static pointer that
/// holds it) and is kept only for diagnostics; the same slot may be registered more than once,
/// and each registration's deleter then runs. An empty deleter is ignored.
///
/// Safe to call from any thread, also while a scope is ending: a registration made during or
/// after EndSingletonScope() belongs to the next scope and runs at the next end.
TALVEX_FRAMEWORK_EXPORT void RegisterScopeSingleton(void* instance_slot,
                                                    std::function<void()> deleter);

/// Ends the singleton scope: runs every deleter registered so far, newest first, each exactly
/// once, on the calling thread and without holding the registry's lock (so a deleter may
/// register or use other singletons). The client calls it before its QApplication goes away;
/// calling it again with nothing registered does nothing.
TALVEX_FRAMEWORK_EXPORT void EndSingletonScope();

}  // namespace base
