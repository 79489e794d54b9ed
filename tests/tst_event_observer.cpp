#include <QtCore/private/qobject_p.h>

#include <QtTest>
#include <vector>

#include "qt_util/event_handler/event_observer.h"
#include "support/log_capture.h"

namespace {

const QEvent::Type kProbe = static_cast<QEvent::Type>(QEvent::registerEventType());
const QEvent::Type kOther = static_cast<QEvent::Type>(QEvent::registerEventType());

// Counts the probe events that reach it.
class Target : public QObject {
 public:
  int received = 0;
  int other_received = 0;

  int DestroyedReceivers() const { return receivers(SIGNAL(destroyed(QObject*))); }

 protected:
  bool event(QEvent* event) override {
    if (event->type() == kProbe) ++received;
    if (event->type() == kOther) ++other_received;
    return QObject::event(event);
  }
};

void Send(QObject* target, QEvent::Type type = kProbe) {
  QEvent event(type);
  QCoreApplication::sendEvent(target, &event);
}

// Live event filters of an object (Qt leaves a null entry behind for a destroyed filter).
int FilterCount(QObject* object) {
  auto* d = QObjectPrivate::get(object);
  if (!d->extraData) return 0;
  int live = 0;
  for (const auto& filter : d->extraData->eventFilters) live += !filter.isNull();
  return live;
}

}  // namespace

class tst_EventObserver : public QObject {
  Q_OBJECT

 private slots:
  void callbackAnswer_decidesWhetherTargetSeesEvent_data() {
    QTest::addColumn<bool>("answer");
    QTest::addColumn<int>("expectedAtTarget");
    QTest::newRow("true keeps the event") << true << 0;
    QTest::newRow("false lets it through") << false << 1;
  }
  void callbackAnswer_decidesWhetherTargetSeesEvent() {
    QFETCH(bool, answer);
    QFETCH(int, expectedAtTarget);
    Target target;
    QObject listener;
    int calls = 0;
    QObject* seen = nullptr;
    QtEventObserver::ListenEvent(&target, &listener, [&](QObject* watched, QEvent* event) {
      if (event->type() != kProbe) return false;
      ++calls;
      seen = watched;
      return answer;
    });

    Send(&target);
    QCOMPARE(calls, 1);
    QCOMPARE(seen, &target);
    QCOMPARE(target.received, expectedAtTarget);
    // Other event types are not swallowed by a callback that only claims the probe.
    Send(&target, kOther);
    QCOMPARE(target.other_received, 1);
  }

  void listenerDestroyed_stopsCallbackAndTargetBehavesAsBefore() {
    const size_t before = QtEventObserver::ObserverCount();
    Target target;
    auto* listener = new QObject;
    int calls = 0;
    QtEventObserver::ListenEvent(&target, listener, [&](QObject*, QEvent* event) {
      if (event->type() != kProbe) return false;
      ++calls;
      return true;
    });
    QCOMPARE(QtEventObserver::ObserverCount(), before + 1);
    Send(&target);
    QCOMPARE(calls, 1);
    QCOMPARE(target.received, 0);

    delete listener;
    QCOMPARE(QtEventObserver::ObserverCount(), before);
    QCOMPARE(FilterCount(&target), 0);
    Send(&target);
    QCOMPARE(calls, 1);
    QCOMPARE(target.received, 1);
  }

  void targetDestroyed_observerLeavesRegistry() {
    const size_t before = QtEventObserver::ObserverCount();
    auto* target = new Target;
    Target listener;
    int calls = 0;
    QtEventObserver::ListenEvent(target, &listener, [&](QObject*, QEvent*) {
      ++calls;
      return false;
    });
    QCOMPARE(QtEventObserver::ObserverCount(), before + 1);
    delete target;
    QCOMPARE(QtEventObserver::ObserverCount(), before);
    // The listener's connection went with the observer: its death changes nothing more.
    QCOMPARE(listener.DestroyedReceivers(), 0);
  }

  void emptyCallback_installsNoFilterAndStaysRegistered() {
    const size_t before = QtEventObserver::ObserverCount();
    {
      Target target;
      Target listener;
      QtEventObserver::ListenEvent(&target, &listener, {});
      QCOMPARE(FilterCount(&target), 0);
      QCOMPARE(target.DestroyedReceivers(), 0);
      QCOMPARE(listener.DestroyedReceivers(), 0);
      Send(&target);
      QCOMPARE(target.received, 1);
      QCOMPARE(QtEventObserver::ObserverCount(), before + 1);
    }
    // Such an observer has nothing that would remove it: it stays until the process ends.
    QCOMPARE(QtEventObserver::ObserverCount(), before + 1);
  }

  void severalObservers_newestFirstAndFirstTrueStops() {
    Target target;
    QObject listener;
    std::vector<int> order;
    auto listen = [&](int id, bool answer) {
      QtEventObserver::ListenEvent(&target, &listener, [&order, id, answer](QObject*, QEvent* e) {
        if (e->type() != kProbe) return false;
        order.push_back(id);
        return answer;
      });
    };
    listen(1, false);
    listen(2, true);
    listen(3, false);

    Send(&target);
    QCOMPARE(order, (std::vector<int>{3, 2}));
    QCOMPARE(target.received, 0);
  }

  void sameObjectAsTargetAndListener() {
    const size_t before = QtEventObserver::ObserverCount();
    auto* object = new Target;
    int calls = 0;
    QtEventObserver::ListenEvent(object, object, [&](QObject*, QEvent* event) {
      calls += event->type() == kProbe;
      return false;
    });
    Send(object);
    QCOMPARE(calls, 1);
    QCOMPARE(object->received, 1);
    delete object;
    QCOMPARE(QtEventObserver::ObserverCount(), before);
  }

  void registryEmptyAgainAfterBothDie_data() {
    QTest::addColumn<bool>("listenerFirst");
    QTest::newRow("listener dies first") << true;
    QTest::newRow("target dies first") << false;
  }
  void registryEmptyAgainAfterBothDie() {
    const size_t before = QtEventObserver::ObserverCount();
    auto* target = new Target;
    auto* listener = new QObject;
    QtEventObserver::ListenEvent(target, listener, [](QObject*, QEvent*) { return false; });
    QtEventObserver::ListenEvent(target, listener, [](QObject*, QEvent*) { return false; });
    QCOMPARE(QtEventObserver::ObserverCount(), before + 2);
    QFETCH(bool, listenerFirst);
    if (listenerFirst) {
      delete listener;
      QCOMPARE(QtEventObserver::ObserverCount(), before);
      delete target;
    } else {
      delete target;
      QCOMPARE(QtEventObserver::ObserverCount(), before);
      delete listener;
    }
    QCOMPARE(QtEventObserver::ObserverCount(), before);
  }

  void listenerDestroyedByCallback_endsListeningSafely() {
    const size_t before = QtEventObserver::ObserverCount();
    Target target;
    auto* listener = new QObject;
    auto payload = std::make_shared<int>(7);
    std::weak_ptr<int> watch = payload;
    int calls = 0;
    QtEventObserver::ListenEvent(&target, listener,
                                 [&, payload = std::move(payload)](QObject*, QEvent* event) {
                                   if (event->type() != kProbe) return false;
                                   ++calls;
                                   delete listener;
                                   listener = nullptr;
                                   // The callback's own captures are still usable here.
                                   return *payload == 7;
                                 });
    Send(&target);
    QCOMPARE(calls, 1);
    QCOMPARE(target.received, 0);
    QCOMPARE(QtEventObserver::ObserverCount(), before);
    QVERIFY(watch.expired());
    Send(&target);
    QCOMPARE(calls, 1);
    QCOMPARE(target.received, 1);
  }

  // Not the way the library makes them, but a client may: such an observer has no owner in the
  // registry and works as a plain filter around its callback.
  void observerInstalledByClient_filtersWithoutAnOwner() {
    const size_t before = QtEventObserver::ObserverCount();
    Target target;
    int calls = 0;
    {
      EventObserver observer;
      observer.callback = [&](QObject* watched, QEvent* event) {
        if (watched != &target || event->type() != kProbe) return false;
        ++calls;
        return true;
      };
      target.installEventFilter(&observer);
      Send(&target);
      QCOMPARE(calls, 1);
      QCOMPARE(target.received, 0);
      Send(&target, kOther);
      QCOMPARE(target.other_received, 1);
    }
    // Destroyed by its maker, it filters no more.
    Send(&target);
    QCOMPARE(calls, 1);
    QCOMPARE(target.received, 1);
    QCOMPARE(QtEventObserver::ObserverCount(), before);
  }

  void nullTargetOrListener_logsAndCreatesNothing() {
    const size_t before = QtEventObserver::ObserverCount();
    LogCapture capture(6);
    QObject object;
    QtEventObserver::ListenEvent(nullptr, &object, [](QObject*, QEvent*) { return true; });
    QtEventObserver::ListenEvent(&object, nullptr, [](QObject*, QEvent*) { return true; });
    QCOMPARE(capture.Texts(),
             (std::vector<std::string>{"ListenEvent: null target", "ListenEvent: null listener"}));
    QCOMPARE(capture.Records()[0].level, 1);
    QCOMPARE(QtEventObserver::ObserverCount(), before);
    QCOMPARE(FilterCount(&object), 0);
  }
};

QTEST_MAIN(tst_EventObserver)
#include "tst_event_observer.moc"
