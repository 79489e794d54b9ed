#include <QAbstractButton>
#include <QCursor>
#include <QGuiApplication>
#include <QPushButton>
#include <QScrollBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <QtTest>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "qt_util/event_handler/event_hooker.h"
#include "support/log_capture.h"

namespace {

// Records the type of every event that reaches the object itself, i.e. that no filter ate.
template <typename Base>
class Probe : public Base {
 public:
  using Base::Base;
  int Received(QEvent::Type type) const { return received.count(type); }
  QList<QEvent::Type> received;

 protected:
  bool event(QEvent* event) override {
    received.append(event->type());
    return Base::event(event);
  }
};

// A scroll bar whose own menu would block in exec(); the probe only records it.
class ProbeScrollBar : public Probe<QScrollBar> {
 public:
  using Probe<QScrollBar>::Probe;
  int menus = 0;

 protected:
  void contextMenuEvent(QContextMenuEvent*) override { ++menus; }
};

struct QtMessage {
  QtMsgType type;
  QString text;
  QString file;
  int line;
  QString function;
};

std::vector<QtMessage>& QtMessages() {
  static std::vector<QtMessage> messages;
  return messages;
}

void CollectQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  QtMessages().push_back({type, text, QString::fromUtf8(context.file), context.line,
                          QString::fromUtf8(context.function)});
}

class QtMessageCapture {
 public:
  QtMessageCapture() : previous_(qInstallMessageHandler(&CollectQtMessage)) {
    QtMessages().clear();
  }
  ~QtMessageCapture() { qInstallMessageHandler(previous_); }
  QtMessageCapture(const QtMessageCapture&) = delete;
  QtMessageCapture& operator=(const QtMessageCapture&) = delete;

  std::vector<QtMessage> Matching(const QString& prefix) const {
    std::vector<QtMessage> found;
    for (const QtMessage& message : QtMessages()) {
      if (message.text.startsWith(prefix)) found.push_back(message);
    }
    return found;
  }

 private:
  QtMessageHandler previous_;
};

const QString kSignature = QStringLiteral("bool HandleGlobalEvent(QObject *, QEvent *)");

int CountPrefix(const LogCapture& capture, int level, const std::string& prefix) {
  int n = 0;
  for (const auto& record : capture.Records()) {
    n += record.level == level && record.text.compare(0, prefix.size(), prefix) == 0;
  }
  return n;
}

// What happened before the QApplication existed (see main below).
struct NoApplicationOutcome {
  std::vector<base::log::LogRecord> records;
} g_no_application;

}  // namespace

class tst_EventHooker : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase() {
    EventHooker::InitGlobalEventHooker();
    EventHooker::InitGlobalEventHooker();
  }

  void beforeApplication_logsAndInstallsNothing() {
    std::vector<std::string> texts;
    for (const auto& record : g_no_application.records) {
      QCOMPARE(record.level, 1);
      texts.push_back(record.text);
    }
    QCOMPARE(texts, (std::vector<std::string>{
                        "InitGlobalEventHooker called before the application object, not "
                        "installed",
                        "EventHooker created before the application object, no event is "
                        "filtered"}));
  }

  void release_emptyText_logsObjectNameAndStillClicks() {
    QWidget window;
    auto* button = new QPushButton(&window);
    button->setObjectName("saveButton");
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QSignalSpy clicked(button, &QAbstractButton::clicked);
    LogCapture capture(6);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(capture.Count(6, "button saveButton clicked"), 1);
    QCOMPARE(clicked.count(), 1);
  }

  void release_labelOrder_data() {
    QTest::addColumn<bool>("toolButton");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("objectName");
    QTest::addColumn<QString>("accessibleName");
    QTest::addColumn<QString>("accessibleDescription");
    QTest::addColumn<QString>("expected");  // empty: no click line
    struct Row {
      const char* name;
      QString text, object_name, accessible_name, accessible_description, expected;
    };
    const QString utf8_text = QStringLiteral("Enregistrer \u00e9");
    const Row rows[] = {
        {"text first", "Save", "saveButton", "Save file", "Saves", "Save"},
        {"object name second", "", "saveButton", "Save file", "Saves", "saveButton"},
        {"accessible name third", "", "", "Save file", "Saves", "Save file"},
        {"accessible description last", "", "", "", "Saves", "Saves"},
        {"no label, no line", "", "", "", "", ""},
        {"utf-8 text", utf8_text, "", "", "", utf8_text},
    };
    for (bool tool_button : {false, true}) {
      for (const Row& row : rows) {
        QTest::addRow("%s, %s", tool_button ? "QToolButton" : "QPushButton", row.name)
            << tool_button << row.text << row.object_name << row.accessible_name
            << row.accessible_description << row.expected;
      }
    }
  }
  void release_labelOrder() {
    QFETCH(bool, toolButton);
    QFETCH(QString, text);
    QFETCH(QString, objectName);
    QFETCH(QString, accessibleName);
    QFETCH(QString, accessibleDescription);
    QFETCH(QString, expected);
    QWidget window;
    QAbstractButton* button = toolButton ? static_cast<QAbstractButton*>(new QToolButton(&window))
                                         : new QPushButton(&window);
    button->setText(text);
    button->setObjectName(objectName);
    button->setAccessibleName(accessibleName);
    button->setAccessibleDescription(accessibleDescription);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QSignalSpy clicked(button, &QAbstractButton::clicked);
    LogCapture capture(6);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(clicked.count(), 1);
    if (expected.isEmpty()) {
      QCOMPARE(CountPrefix(capture, 6, "button "), 0);
    } else {
      QCOMPARE(capture.Count(6, "button " + expected.toUtf8().toStdString() + " clicked"), 1);
      QCOMPARE(CountPrefix(capture, 6, "button "), 1);
      const auto records = capture.Records();
      const auto it = std::find_if(records.begin(), records.end(), [](const auto& record) {
        return record.text.compare(0, 7, "button ") == 0;
      });
      QCOMPARE(it->file, std::string("event_hooker.cpp"));
      QCOMPARE(it->function, std::string("HandleButtonClick"));
    }
  }

  void release_clickLineOnlyAtLevel6() {
    QWidget window;
    auto* button = new QPushButton("Quiet", &window);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    LogCapture capture(5);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(capture.Size(), size_t(0));
  }

  void release_outsideButton_logsNothing() {
    QWidget window;
    auto* button = new QPushButton("Drag off", &window);
    button->setGeometry(10, 10, 80, 30);
    window.resize(200, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QSignalSpy clicked(button, &QAbstractButton::clicked);
    LogCapture capture(6);
    QTest::mousePress(button, Qt::LeftButton, {}, QPoint(5, 5));
    QTest::mouseRelease(button, Qt::LeftButton, {}, QPoint(150, 60));
    QCOMPARE(CountPrefix(capture, 6, "button "), 0);
    QCOMPARE(clicked.count(), 0);
  }

  void release_rightButton_logsNothing() {
    QWidget window;
    auto* button = new QPushButton("Right", &window);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    LogCapture capture(6);
    QTest::mouseClick(button, Qt::RightButton);
    QCOMPARE(capture.Size(), size_t(0));
  }

  void press_rightButton_logsNothing() {
    QWidget window;
    window.setObjectName("rightTarget");
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    LogCapture capture(6);
    QtMessageCapture messages;
    QTest::mousePress(&window, Qt::RightButton);
    QTest::mousePress(&window, Qt::MiddleButton);
    QCOMPARE(capture.Size(), size_t(0));
    QVERIFY(messages.Matching("Click Widget").empty());
  }

  void press_logsWidgetStackWithCursorPosition() {
    QWidget window;
    auto* button = new QPushButton("OK", &window);
    button->setObjectName("okButton");
    button->setAccessibleName("Confirm");
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCursor::setPos(QPoint(37, 45));
    // Wayland lets a client neither move the cursor nor read its global position: there Qt
    // answers (0, 0), and the line carries that.
    const bool wayland = QGuiApplication::platformName() == QLatin1String("wayland");
    const QPoint cursor = QCursor::pos();
    QCOMPARE(cursor, wayland ? QPoint(0, 0) : QPoint(37, 45));
    LogCapture capture(6);
    QTest::mousePress(button, Qt::LeftButton);
    const std::string expected = "Click Widget Stack okButton ,accessibleName:Confirm, pos={" +
                                 std::to_string(cursor.x()) + "," + std::to_string(cursor.y()) +
                                 "}";
    QCOMPARE(capture.Count(6, expected), 1);
    QCOMPARE(CountPrefix(capture, 6, "Click Widget Stack "), 1);
    for (const auto& record : capture.Records()) {
      if (record.text != expected) continue;
      QCOMPARE(record.file, std::string("event_hooker.cpp"));
      QCOMPARE(record.function, std::string("HandleGlobalEvent"));
    }
    QTest::mouseRelease(button, Qt::LeftButton);
  }

  void press_stackLineOnlyAtLevel6() {
    QWidget window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    LogCapture capture(5);
    QTest::mousePress(&window, Qt::LeftButton);
    QCOMPARE(capture.Size(), size_t(0));
  }

  void press_writesClickWidgetDebugMessageAtAnyLogLevel_data() {
    QTest::addColumn<bool>("shown");
    QTest::addColumn<QString>("expected");
    QTest::newRow("shown") << true
                           << "Click Widget ObjName: pressMe, ClassName: QPushButton, Visible: 1, "
                              "Hidden: 0";
    QTest::newRow("never shown") << false
                                 << "Click Widget ObjName: pressMe, ClassName: QPushButton, "
                                    "Visible: 0, Hidden: 1";
  }
  void press_writesClickWidgetDebugMessageAtAnyLogLevel() {
    QFETCH(bool, shown);
    QFETCH(QString, expected);
    QPushButton button("Press");
    button.setObjectName("pressMe");
    if (shown) {
      button.show();
      QVERIFY(QTest::qWaitForWindowExposed(&button));
    }
    LogCapture capture(0);
    QtMessageCapture messages;
    QTest::mousePress(&button, Qt::LeftButton);
    const auto found = messages.Matching("Click Widget ");
    QCOMPARE(int(found.size()), 1);
    QCOMPARE(found[0].type, QtDebugMsg);
    QCOMPARE(found[0].text, expected);
    QCOMPARE(found[0].function, kSignature);
    QVERIFY2(found[0].file.endsWith("event_hooker.cpp"), qPrintable(found[0].file));
    QVERIFY(found[0].line > 0);
    QTest::mouseRelease(&button, Qt::LeftButton);
  }

  void show_topLevelWritesDebugMessage_childDoesNot() {
    QtMessageCapture messages;
    QWidget window;
    window.setObjectName("topWindow");
    window.resize(160, 90);
    auto* child = new QWidget(&window);
    child->setObjectName("childWidget");
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const auto found = messages.Matching("Widget Show without parent widget");
    QCOMPARE(int(found.size()), 1);
    const QString expected = QString::asprintf(
        "Widget Show without parent widget [%p, %s], (%d, %d)", static_cast<const void*>(&window),
        "topWindow", window.geometry().width(), window.geometry().height());
    QCOMPARE(found[0].text, expected);
    QVERIFY(found[0].text.endsWith("(160, 90)"));
    QCOMPARE(found[0].type, QtDebugMsg);
    QCOMPARE(found[0].function, kSignature);
    QVERIFY(found[0].file.endsWith("event_hooker.cpp"));
    QVERIFY(found[0].line > 0);
    QVERIFY(child->isVisible());
  }

  void contextMenu_scrollBarSwallowed_data() {
    QTest::addColumn<int>("orientation");
    QTest::newRow("vertical") << int(Qt::Vertical);
    QTest::newRow("horizontal") << int(Qt::Horizontal);
  }
  void contextMenu_scrollBarSwallowed() {
    QFETCH(int, orientation);
    QWidget window;
    auto* bar = new ProbeScrollBar(Qt::Orientation(orientation), &window);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    for (auto reason : {QContextMenuEvent::Mouse, QContextMenuEvent::Keyboard}) {
      QContextMenuEvent menu(reason, QPoint(2, 2), QPoint(2, 2));
      QVERIFY(QCoreApplication::sendEvent(bar, &menu));
    }
    QCOMPARE(bar->Received(QEvent::ContextMenu), 0);
    QCOMPARE(bar->menus, 0);
  }

  void contextMenu_otherWidgetsReceiveIt() {
    QWidget window;
    auto* widget = new Probe<QWidget>(&window);
    auto* button = new Probe<QPushButton>("b", &window);
    Probe<QObject> plain;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QContextMenuEvent first(QContextMenuEvent::Mouse, QPoint(1, 1), QPoint(1, 1));
    QCoreApplication::sendEvent(widget, &first);
    QContextMenuEvent second(QContextMenuEvent::Mouse, QPoint(1, 1), QPoint(1, 1));
    QCoreApplication::sendEvent(button, &second);
    QEvent bare(QEvent::ContextMenu);
    QCoreApplication::sendEvent(&plain, &bare);
    QCOMPARE(widget->Received(QEvent::ContextMenu), 1);
    QCOMPARE(button->Received(QEvent::ContextMenu), 1);
    QCOMPARE(plain.Received(QEvent::ContextMenu), 1);
  }

  // The hooker swallows scroll-bar context menus and nothing else: every other event
  // reaches widgets, buttons and scroll bars alike.
  void otherEvents_neverSwallowed() {
    QWidget window;
    auto* widget = new Probe<QWidget>(&window);
    auto* button = new Probe<QPushButton>("b", &window);
    auto* bar = new ProbeScrollBar(Qt::Vertical, &window);
    window.resize(200, 200);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    LogCapture capture(6);
    QtMessageCapture messages;  // keeps the hooker's debug lines out of the test output

    const QList<QObject*> targets{widget, button, bar};
    for (QObject* target : targets) {
      auto* receiver = static_cast<QWidget*>(target);
      // Qt itself drops button-less moves to widgets that do not track the mouse.
      receiver->setMouseTracking(true);
      const QPoint inside = receiver->rect().center();
      const QPoint global = receiver->mapToGlobal(inside);
      std::vector<std::unique_ptr<QEvent>> events;
      events.emplace_back(new QMouseEvent(QEvent::MouseButtonPress, inside, global, Qt::LeftButton,
                                          Qt::LeftButton, Qt::NoModifier));
      events.emplace_back(new QMouseEvent(QEvent::MouseButtonRelease, inside, global,
                                          Qt::LeftButton, Qt::NoButton, Qt::NoModifier));
      events.emplace_back(new QMouseEvent(QEvent::MouseButtonPress, inside, global, Qt::RightButton,
                                          Qt::RightButton, Qt::NoModifier));
      events.emplace_back(new QMouseEvent(QEvent::MouseButtonRelease, inside, global,
                                          Qt::RightButton, Qt::NoButton, Qt::NoModifier));
      events.emplace_back(new QMouseEvent(QEvent::MouseMove, inside, global, Qt::NoButton,
                                          Qt::NoButton, Qt::NoModifier));
      events.emplace_back(new QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a"));
      events.emplace_back(new QWheelEvent(QPointF(inside), QPointF(global), QPoint(),
                                          QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                                          Qt::NoScrollPhase, false));
      events.emplace_back(new QShowEvent);
      events.emplace_back(new QHideEvent);
      events.emplace_back(new QFocusEvent(QEvent::FocusIn));
      events.emplace_back(new QEvent(QEvent::Enter));
      events.emplace_back(new QEvent(QEvent::User));
      for (const auto& event : events) {
        const QEvent::Type type = event->type();
        const int before = target == bar      ? bar->Received(type)
                           : target == widget ? widget->Received(type)
                                              : button->Received(type);
        QCoreApplication::sendEvent(target, event.get());
        const int after = target == bar      ? bar->Received(type)
                          : target == widget ? widget->Received(type)
                                             : button->Received(type);
        QVERIFY2(after == before + 1, qPrintable(QStringLiteral("event type %1 to %2 was swallowed")
                                                     .arg(int(type))
                                                     .arg(target->metaObject()->className())));
      }
    }
  }

  void bareEventsWithMouseTypes_ignoredSafely() {
    Probe<QObject> plain;
    LogCapture capture(6);
    for (QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      QEvent bare(type);
      QCoreApplication::sendEvent(&plain, &bare);
      QCOMPARE(plain.Received(type), 1);
    }
    QCOMPARE(capture.Size(), size_t(0));
  }

  void initAgain_stillOneFilter() {
    EventHooker::InitGlobalEventHooker();
    EventHooker::InitGlobalEventHooker();
    QWidget window;
    auto* button = new QPushButton("Once", &window);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    LogCapture capture(6);
    QtMessageCapture messages;
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(CountPrefix(capture, 6, "Click Widget Stack "), 1);
    QCOMPARE(capture.Count(6, "button Once clicked"), 1);
    QCOMPARE(int(messages.Matching("Click Widget ObjName").size()), 1);
  }

  void ownHooker_lastCallbackDecides() {
    Probe<QObject> target;
    EventHooker hooker;
    int first_calls = 0;
    hooker.RegisterEventCallback([&](QObject* watched, QEvent* event) {
      if (watched != &target) return false;
      ++first_calls;
      return event->type() == QEvent::User;
    });
    QEvent user(QEvent::User);
    QEvent other(QEvent::Type(QEvent::User + 1));
    QCoreApplication::sendEvent(&target, &user);
    QCoreApplication::sendEvent(&target, &other);
    QCOMPARE(target.Received(QEvent::User), 0);
    QCOMPARE(target.Received(QEvent::Type(QEvent::User + 1)), 1);
    QCOMPARE(first_calls, 2);

    int second_calls = 0;
    hooker.RegisterEventCallback([&](QObject* watched, QEvent*) {
      second_calls += watched == &target;
      return false;
    });
    QCoreApplication::sendEvent(&target, &user);
    QCOMPARE(target.Received(QEvent::User), 1);
    QCOMPARE(first_calls, 2);
    QCOMPARE(second_calls, 1);

    hooker.RegisterEventCallback(nullptr);
    QCoreApplication::sendEvent(&target, &user);
    QCOMPARE(target.Received(QEvent::User), 2);
    QCOMPARE(second_calls, 1);
  }

  // The callback's captures fit in std::function's own storage: replacing the callback on the
  // spot would overwrite them under the running call, which would then read the new ones.
  void ownHooker_callbackReplacesItself_runningCallKeepsItsCaptures() {
    Probe<QObject> target;
    EventHooker hooker;
    struct Shared {
      EventHooker* hooker;
      QObject* target;
      QList<int> seen;
    } shared{&hooker, &target, {}};
    hooker.RegisterEventCallback([state = &shared, tag = 1](QObject* watched, QEvent*) {
      if (watched != state->target) return false;
      state->hooker->RegisterEventCallback([state, tag = 2](QObject* watched, QEvent*) {
        if (watched == state->target) state->seen << tag;
        return false;
      });
      state->seen << tag;
      return true;
    });
    QEvent user(QEvent::User);
    QCoreApplication::sendEvent(&target, &user);
    QCOMPARE(shared.seen, QList<int>{1});
    QCOMPARE(target.Received(QEvent::User), 0);
    // The new callback serves the next event and lets it through.
    QCoreApplication::sendEvent(&target, &user);
    QCOMPARE(shared.seen, (QList<int>{1, 2}));
    QCOMPARE(target.Received(QEvent::User), 1);
  }

  // The replaced callback owns the only reference to its payload; it must outlive its own call
  // (ASan reports the use after free otherwise) and go away right after it.
  void ownHooker_callbackReplacesItself_isReleasedAfterItsCall() {
    Probe<QObject> target;
    EventHooker hooker;
    auto payload = std::make_shared<std::string>("first callback");
    std::weak_ptr<std::string> watch = payload;
    std::string read_after_replacing;
    int second_calls = 0;
    hooker.RegisterEventCallback([&, payload = std::move(payload)](QObject* watched, QEvent*) {
      if (watched != &target) return false;
      hooker.RegisterEventCallback([&](QObject* watched, QEvent*) {
        second_calls += watched == &target;
        return false;
      });
      read_after_replacing = *payload;
      return false;
    });
    QEvent user(QEvent::User);
    QCoreApplication::sendEvent(&target, &user);
    QCOMPARE(read_after_replacing, std::string("first callback"));
    QVERIFY(watch.expired());
    QCOMPARE(second_calls, 0);
    QCoreApplication::sendEvent(&target, &user);
    QCOMPARE(second_calls, 1);
  }

  void ownHooker_callbackClearsItself_nextEventPassesFreely() {
    Probe<QObject> target;
    EventHooker hooker;
    int calls = 0;
    hooker.RegisterEventCallback([&](QObject* watched, QEvent*) {
      if (watched != &target) return false;
      ++calls;
      hooker.RegisterEventCallback(nullptr);
      return true;
    });
    QEvent user(QEvent::User);
    QCoreApplication::sendEvent(&target, &user);
    QCoreApplication::sendEvent(&target, &user);
    QCOMPARE(calls, 1);
    QCOMPARE(target.Received(QEvent::User), 1);
  }

  void ownHooker_destroyedStopsFiltering() {
    Probe<QObject> target;
    {
      EventHooker hooker;
      hooker.RegisterEventCallback([&](QObject* watched, QEvent*) { return watched == &target; });
      QEvent user(QEvent::User);
      QCoreApplication::sendEvent(&target, &user);
      QCOMPARE(target.Received(QEvent::User), 0);
    }
    QEvent user(QEvent::User);
    QCoreApplication::sendEvent(&target, &user);
    QCOMPARE(target.Received(QEvent::User), 1);
  }
};

// Runs the "no application yet" case first, then the tests proper under a QApplication.
int main(int argc, char** argv) {
  {
    LogCapture capture(6);
    EventHooker::InitGlobalEventHooker();
    EventHooker orphan;
    orphan.RegisterEventCallback([](QObject*, QEvent*) { return true; });
    g_no_application.records = capture.Records();
  }
  QApplication app(argc, argv);
  app.setAttribute(Qt::AA_Use96Dpi, true);
  tst_EventHooker test;
  QTEST_SET_MAIN_SOURCE_PATH
  return QTest::qExec(&test, argc, argv);
}

#include "tst_event_hooker.moc"
