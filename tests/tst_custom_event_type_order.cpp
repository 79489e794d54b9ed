// The order in which the library takes its event-type numbers while it loads. That order only
// shows when the hints are already taken, so this executable does not link the library: it takes
// every hint first and then loads the library itself. Each taken hint then falls back to the
// highest free number, and the numbers count down in the order in which they were asked for.
#include <dlfcn.h>

#include <QtTest>
#include <string>
#include <vector>

namespace {

// The classes whose numbers the library exports, in the order it must take them.
const char* const kLoadOrder[] = {
    "CustomDeleteEvent",
    "ActivateWidgetEvent",
    "ApplicationDeactiveEvent",
    "DelayActionEvent",
    "CompressCustomEvent",
    "NativeMouseDownEvent",
    "DisableLayoutEvent",
    "InmeetingAddImageToInput",
    "MagnifyWithEvent",
    "NativeKeyBroadReleaseEvent",
    "FloatSwitchBarVisibleChangeBeginEndEvent",
    "WindowWillMiniaturizeEvent",
};

// The linker name of `<name>::EventType`.
std::string EventTypeSymbol(const std::string& name) {
  return "_ZN" + std::to_string(name.size()) + name + "9EventTypeE";
}

}  // namespace

class tst_CustomEventTypeOrder : public QObject {
  Q_OBJECT

 private slots:
  void typeNumbers_hintsTaken_countDownInLoadOrder() {
    QVERIFY2(!dlopen(QT_UTIL_LIBRARY_FILE, RTLD_NOW | RTLD_NOLOAD),
             "the library was loaded before the test could take its hints");

    // Every hint the library asks for, except 1012, which it must leave alone.
    std::vector<int> hints{2001, 2002};
    for (int hint = 1001; hint <= 1011; ++hint) hints.push_back(hint);
    hints.push_back(1013);
    for (int hint : hints) QCOMPARE(QEvent::registerEventType(hint), hint);

    void* library = dlopen(QT_UTIL_LIBRARY_FILE, RTLD_NOW | RTLD_GLOBAL);
    QVERIFY2(library, dlerror());

    // The two unit-private numbers come first and take the two highest; the table follows.
    int expected = QEvent::MaxUser - 2;
    for (const char* name : kLoadOrder) {
      const std::string symbol = EventTypeSymbol(name);
      const auto* number = static_cast<const int*>(dlsym(library, symbol.c_str()));
      QVERIFY2(number, symbol.c_str());
      QCOMPARE(*number, expected);
      --expected;
    }
    // Nothing in the library took 1012 nor anything else on the way.
    QCOMPARE(QEvent::registerEventType(1012), 1012);
    QCOMPARE(QEvent::registerEventType(), expected);
  }
};

QTEST_MAIN(tst_CustomEventTypeOrder)
#include "tst_custom_event_type_order.moc"
