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
