#pragma once

// Shared by the dispatcher's suites (tst_custom_event_dispatcher*.cpp): a seam in Qt's
// registration of notify callbacks, and a recorder of what Qt hands to that hook. Include it in
// exactly one source file of an executable: it defines Qt's registration function.

#include <dlfcn.h>

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <vector>

namespace test_support {

// Fault injection for the one failure Qt never produces on its own: a refused registration.
inline bool g_refuse_registration = false;
inline int g_registration_requests = 0;

struct Delivery {
  QObject* receiver;
  int type;
};

// Everything Qt hands to the notify hook, seen by a callback registered ahead of the
// dispatcher's: it observes and never handles.
inline std::vector<Delivery> g_hook_seen;

inline bool RecordingHook(void** data) {
  g_hook_seen.push_back({static_cast<QObject*>(data[0]), static_cast<QEvent*>(data[1])->type()});
  return false;
}

inline int Count(const std::vector<Delivery>& list, QObject* receiver, int type) {
  int n = 0;
  for (const Delivery& d : list) n += d.receiver == receiver && d.type == type;
  return n;
}

inline int HookCount(QObject* receiver, int type) {
  return Count(g_hook_seen, receiver, type);
}

inline void Drain() {
  // Twice: a handler may post follow-up work.
  QCoreApplication::sendPostedEvents();
  QCoreApplication::processEvents();
}

}  // namespace test_support

// This executable's definition of Qt's registration function takes the place of Qt's own for
// every caller in the process, the library included (the dynamic linker looks in the executable
// first). It counts the requests, refuses them while asked to, and otherwise hands them to Qt.
bool QInternal::registerCallback(QInternal::Callback cb, qInternalCallback callback) {
  ++test_support::g_registration_requests;
  if (test_support::g_refuse_registration) return false;
  using Register = bool (*)(QInternal::Callback, qInternalCallback);
  static const auto qt_register = reinterpret_cast<Register>(
      dlsym(RTLD_NEXT, "_ZN9QInternal16registerCallbackENS_8CallbackEPFbPPvE"));
  return qt_register && qt_register(cb, callback);
}
