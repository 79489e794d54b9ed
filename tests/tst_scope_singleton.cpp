#include <QtTest>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "base/singleton/scope_singleton.h"

namespace {

// A client-style singleton: created on first use under a mutex and handed to the scope.
class Helper {
 public:
  static Helper* SharedInstance() {
    if (!instance_) {
      std::lock_guard<std::mutex> lock(mutex_);
      if (!instance_) {
        instance_ = new Helper;
        base::RegisterScopeSingleton(&instance_, [] {
          Helper* dying = nullptr;
          {
            std::lock_guard<std::mutex> lock(mutex_);
            dying = instance_;
            instance_ = nullptr;
          }
          delete dying;
        });
      }
    }
    return instance_;
  }
  static Helper* Peek() { return instance_; }
  static int destroyed;
  ~Helper() { ++destroyed; }

 private:
  static Helper* instance_;
  static std::mutex mutex_;
};
Helper* Helper::instance_ = nullptr;
std::mutex Helper::mutex_;
int Helper::destroyed = 0;

}  // namespace

class tst_ScopeSingleton : public QObject {
  Q_OBJECT

 private slots:
  void init() { base::EndSingletonScope(); }  // start every test from an empty scope
  void cleanup() { base::EndSingletonScope(); }

  void deleters_runNewestFirst() {
    std::vector<int> order;
    int instances[3];
    for (int i = 0; i < 3; ++i) {
      base::RegisterScopeSingleton(&instances[i], [&order, i] { order.push_back(i); });
    }
    QVERIFY(order.empty());  // nothing runs before the scope ends
    base::EndSingletonScope();
    QCOMPARE(order, (std::vector<int>{2, 1, 0}));
  }

  void deleters_runOnce() {
    int runs = 0;
    base::RegisterScopeSingleton(&runs, [&runs] { ++runs; });
    base::EndSingletonScope();
    base::EndSingletonScope();
    QCOMPARE(runs, 1);
  }

  void sameSlotTwice_runsBothDeleters() {
    int runs = 0;
    base::RegisterScopeSingleton(&runs, [&runs] { runs += 1; });
    base::RegisterScopeSingleton(&runs, [&runs] { runs += 10; });
    base::EndSingletonScope();
    QCOMPARE(runs, 11);
  }

  void registrationAfterTheEnd_runsAtTheNextEnd() {
    int first = 0;
    int second = 0;
    base::RegisterScopeSingleton(&first, [&first] { ++first; });
    base::EndSingletonScope();
    base::RegisterScopeSingleton(&second, [&second] { ++second; });
    QCOMPARE(second, 0);
    base::EndSingletonScope();
    QCOMPARE(first, 1);
    QCOMPARE(second, 1);
  }

  void registrationFromADeleter_belongsToTheNextScope() {
    int late = 0;
    int early = 0;
    base::RegisterScopeSingleton(&early, [&] {
      ++early;
      base::RegisterScopeSingleton(&late, [&late] { ++late; });
    });
    base::EndSingletonScope();
    QCOMPARE(early, 1);
    QCOMPARE(late, 0);
    base::EndSingletonScope();
    QCOMPARE(late, 1);
    QCOMPARE(early, 1);
  }

  void endingFromADeleter_runsNothingTwice() {
    int outer = 0;
    int inner = 0;
    base::RegisterScopeSingleton(&inner, [&inner] { ++inner; });
    base::RegisterScopeSingleton(&outer, [&outer] {
      ++outer;
      base::EndSingletonScope();
    });
    base::EndSingletonScope();
    QCOMPARE(outer, 1);
    QCOMPARE(inner, 1);
  }

  void emptyDeleter_isIgnored() {
    int runs = 0;
    base::RegisterScopeSingleton(&runs, std::function<void()>());
    base::RegisterScopeSingleton(&runs, [&runs] { ++runs; });
    base::EndSingletonScope();
    QCOMPARE(runs, 1);
  }

  void lazySingleton_isDestroyedAndRecreatedAcrossScopes() {
    Helper::destroyed = 0;
    Helper* first = Helper::SharedInstance();
    QVERIFY(first);
    QCOMPARE(Helper::SharedInstance(), first);
    base::EndSingletonScope();
    QCOMPARE(Helper::destroyed, 1);
    QCOMPARE(Helper::Peek(), nullptr);
    QVERIFY(Helper::SharedInstance());
    base::EndSingletonScope();
    QCOMPARE(Helper::destroyed, 2);
  }

  void registrationFromTwoThreads_keepsEveryDeleterAndEachThreadsOrder() {
    constexpr int kPerThread = 2000;
    std::mutex mutex;
    std::vector<int> order;  // thread * kPerThread + index
    std::atomic<bool> go{false};
    auto work = [&](int thread) {
      while (!go.load()) std::this_thread::yield();
      for (int i = 0; i < kPerThread; ++i) {
        const int tag = thread * kPerThread + i;
        base::RegisterScopeSingleton(&order, [&mutex, &order, tag] {
          std::lock_guard<std::mutex> lock(mutex);
          order.push_back(tag);
        });
      }
    };
    std::thread a(work, 0);
    std::thread b(work, 1);
    go = true;
    a.join();
    b.join();
    base::EndSingletonScope();
    QCOMPARE(order.size(), size_t(2 * kPerThread));
    // Each thread's registrations come back newest first.
    int last[2] = {kPerThread, kPerThread};
    for (int tag : order) {
      const int thread = tag / kPerThread;
      const int index = tag % kPerThread;
      QVERIFY2(index < last[thread], "a thread's deleters ran out of order");
      last[thread] = index;
    }
    QCOMPARE(last[0], 0);
    QCOMPARE(last[1], 0);
  }
};

QTEST_GUILESS_MAIN(tst_ScopeSingleton)
#include "tst_scope_singleton.moc"
