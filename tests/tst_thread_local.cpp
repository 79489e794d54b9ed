#include <QtTest>
#include <atomic>
#include <thread>

#include "base/threading/thread_local.h"

using base::threading::ThreadLocal;

namespace {
std::atomic<int> g_freed{0};
void CountingDeleter(void* value) {
  ++g_freed;
  delete static_cast<int*>(value);
}

// What a late caller saw after the thread's store had been torn down.
struct LateSeen {
  void* value_before_set = reinterpret_cast<void*>(1);
  void* value_after_set = reinterpret_cast<void*>(1);
  int freed_by_set = -1;
};
LateSeen g_late;

// Built before the store on its thread, so destroyed after it (thread-exit destructors run in
// reverse order of construction): its destructor stands for a late caller.
struct LateCaller {
  ~LateCaller() {
    g_late.value_before_set = ThreadLocal::GetValue("tst.late");
    const int freed_before = g_freed;
    ThreadLocal::SetValue("tst.late", new int(3), CountingDeleter);
    g_late.freed_by_set = g_freed - freed_before;
    g_late.value_after_set = ThreadLocal::GetValue("tst.late");
  }
};

// A deleter that looks into the store while the store is being torn down.
void* g_seen_by_deleter = reinterpret_cast<void*>(1);
void LookingDeleter(void* value) {
  g_seen_by_deleter = ThreadLocal::GetValue("tst.looking");
  delete static_cast<int*>(value);
}
}  // namespace

class tst_ThreadLocal : public QObject {
  Q_OBJECT

 private slots:
  void init() { g_freed = 0; }

  void unsetKey_givesNullptr() { QCOMPARE(ThreadLocal::GetValue("tst.never.set"), nullptr); }

  void valuesAreSeparatePerThread() {
    int mine = 1;
    ThreadLocal::SetValue("tst.separate", &mine, nullptr);
    void* seen_elsewhere = &mine;
    std::thread([&] { seen_elsewhere = ThreadLocal::GetValue("tst.separate"); }).join();
    QCOMPARE(seen_elsewhere, nullptr);
    QCOMPARE(ThreadLocal::GetValue("tst.separate"), static_cast<void*>(&mine));
    ThreadLocal::SetValue("tst.separate", nullptr, nullptr);
  }

  void threadExit_freesValuesWithTheirDeleter() {
    std::thread([] {
      ThreadLocal::EnsureInitializedForCurrentThread();
      ThreadLocal::SetValue("tst.a", new int(1), CountingDeleter);
      ThreadLocal::SetValue("tst.b", new int(2), CountingDeleter);
    }).join();
    QCOMPARE(g_freed.load(), 2);
  }

  void callsAfterTheStoreIsGone_seeNothingAndFreeAtOnce() {
    g_late = LateSeen();
    std::thread([] {
      thread_local LateCaller late;
      (void)&late;  // constructed here, before the store
      ThreadLocal::EnsureInitializedForCurrentThread();
      ThreadLocal::SetValue("tst.late", new int(1), CountingDeleter);
    }).join();
    QCOMPARE(g_late.value_before_set, nullptr);  // the first value went with the store
    QCOMPARE(g_late.freed_by_set, 1);            // the late value is not kept, and not leaked
    QCOMPARE(g_late.value_after_set, nullptr);
    QCOMPARE(g_freed.load(), 2);
  }

  void deleterLookingIntoTheStore_seesNothing() {
    g_seen_by_deleter = reinterpret_cast<void*>(1);
    std::thread([] { ThreadLocal::SetValue("tst.looking", new int(1), LookingDeleter); }).join();
    QCOMPARE(g_seen_by_deleter, nullptr);
  }

  void replacingAValue_freesThePreviousOne() {
    int* second = new int(2);
    ThreadLocal::SetValue("tst.replace", new int(1), CountingDeleter);
    ThreadLocal::SetValue("tst.replace", second, CountingDeleter);
    QCOMPARE(g_freed.load(), 1);
    QCOMPARE(ThreadLocal::GetValue("tst.replace"), static_cast<void*>(second));
    ThreadLocal::SetValue("tst.replace", second, CountingDeleter);  // same value: kept
    QCOMPARE(g_freed.load(), 1);
    ThreadLocal::SetValue("tst.replace", nullptr, nullptr);
    QCOMPARE(g_freed.load(), 2);
  }
};

QTEST_GUILESS_MAIN(tst_ThreadLocal)
#include "tst_thread_local.moc"
