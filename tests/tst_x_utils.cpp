// Runs under xvfb with the xcb platform: the requests must reach a real X server.
#include <QApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <QtTest>
#include <cstdlib>
#include <memory>

#include "support/x11_watch.h"
#include "x_utils/x_utils.h"

using test_support::InputFocus;
using test_support::RootWatcher;

namespace {

// Records the X errors Qt reports, so a test can tell that a request was refused.
QStringList g_warnings;
void RecordWarnings(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type != QtDebugMsg && type != QtInfoMsg) g_warnings.append(text);
}

}  // namespace

class tst_XUtils : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase() { QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb")); }

  void init() {
    g_warnings.clear();
    previous_handler_ = qInstallMessageHandler(RecordWarnings);
  }
  void cleanup() {
    qInstallMessageHandler(previous_handler_);
    QVERIFY2(g_warnings.isEmpty(), qPrintable(g_warnings.join('\n')));
  }

  void setWindowInputFocus_movesTheXFocusToAShownWindow() {
    QWidget first;
    QWidget second;
    first.setGeometry(50, 50, 200, 100);
    second.setGeometry(300, 50, 200, 100);
    first.show();
    second.show();
    QVERIFY(QTest::qWaitForWindowExposed(&first));
    QVERIFY(QTest::qWaitForWindowExposed(&second));
    const auto first_id = static_cast<xcb_window_t>(first.winId());
    const auto second_id = static_cast<xcb_window_t>(second.winId());

    x_utils::SetWindowInputFocus(&second);
    QCOMPARE(InputFocus(), second_id);
    x_utils::SetWindowInputFocus(&first);
    QCOMPARE(InputFocus(), first_id);
    x_utils::SetWindowInputFocus(&second);
    QCOMPARE(InputFocus(), second_id);
  }

  void setWindowInputFocus_ofAChild_focusesItsWindow() {
    QWidget window;
    window.setGeometry(50, 200, 200, 100);
    QWidget* child = new QWidget(&window);
    QWidget other;
    other.setGeometry(300, 200, 200, 100);
    window.show();
    other.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(QTest::qWaitForWindowExposed(&other));
    x_utils::SetWindowInputFocus(&other);
    QCOMPARE(InputFocus(), static_cast<xcb_window_t>(other.winId()));
    x_utils::SetWindowInputFocus(child);
    QCOMPARE(InputFocus(), static_cast<xcb_window_t>(window.winId()));
  }

  void setWindowInputFocus_skipsHiddenAndNullWindows() {
    QWidget shown;
    shown.setGeometry(50, 350, 200, 100);
    shown.show();
    QVERIFY(QTest::qWaitForWindowExposed(&shown));
    x_utils::SetWindowInputFocus(&shown);
    const xcb_window_t before = InputFocus();
    QCOMPARE(before, static_cast<xcb_window_t>(shown.winId()));

    QWidget hidden;
    hidden.winId();  // a native window that was never mapped: X would refuse it focus
    QVERIFY(hidden.internalWinId() != 0);
    x_utils::SetWindowInputFocus(&hidden);
    x_utils::SetWindowInputFocus(nullptr);
    QCOMPARE(InputFocus(), before);
    QCoreApplication::processEvents();  // any X error would be reported by now
  }

  void setStayOnTop_sendsTheNetWmStateAboveRequest() {
    RootWatcher watcher;
    QVERIFY(watcher.IsValid());
    QWidget window;
    window.setGeometry(50, 500, 200, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    watcher.Sync();
    watcher.TakeStateMessages();  // whatever Qt itself sent while mapping
    const auto id = static_cast<xcb_window_t>(window.winId());

    x_utils::SetStayOnTop(&window, true);
    watcher.Sync();
    auto messages = watcher.TakeStateMessages();
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages[0].window, id);
    QCOMPARE(messages[0].action, 1u);  // add
    QCOMPARE(messages[0].first, watcher.Above());
    QCOMPARE(messages[0].second, 0u);
    QCOMPARE(messages[0].source, 1u);  // a normal application

    x_utils::SetStayOnTop(&window, false);
    watcher.Sync();
    messages = watcher.TakeStateMessages();
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages[0].window, id);
    QCOMPARE(messages[0].action, 0u);  // remove
    QCOMPARE(messages[0].first, watcher.Above());
  }

  // Changing a shown window's flags makes Qt replace its native window while the widget keeps
  // reporting the destroyed one's id; both requests must reach the window that is on screen.
  void afterAFlagChange_requestsReachTheLiveWindow() {
    RootWatcher watcher;
    QVERIFY(watcher.IsValid());
    QWidget other;
    other.setGeometry(300, 650, 200, 100);
    QWidget window;
    window.setGeometry(50, 650, 200, 100);
    other.show();
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&other));
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const auto first_id = static_cast<xcb_window_t>(window.windowHandle()->winId());
    window.setWindowFlag(Qt::WindowStaysOnTopHint, true);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const auto live_id = static_cast<xcb_window_t>(window.windowHandle()->winId());
    QVERIFY(live_id != first_id);  // Qt did replace the native window

    x_utils::SetWindowInputFocus(&other);
    QCOMPARE(InputFocus(), static_cast<xcb_window_t>(other.windowHandle()->winId()));
    x_utils::SetWindowInputFocus(&window);
    QCOMPARE(InputFocus(), live_id);

    watcher.Sync();
    watcher.TakeStateMessages();
    x_utils::SetStayOnTop(&window, false);
    watcher.Sync();
    const auto messages = watcher.TakeStateMessages();
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages[0].window, live_id);
    QCOMPARE(messages[0].action, 0u);  // remove
    QCOMPARE(messages[0].first, watcher.Above());
  }

  void setStayOnTop_ofAHiddenWindow_setsQtsHintInstead() {
    RootWatcher watcher;
    QVERIFY(watcher.IsValid());
    QWidget window;
    QVERIFY(!window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    x_utils::SetStayOnTop(&window, true);
    QVERIFY(window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QVERIFY(!window.isVisible());
    watcher.Sync();
    QCOMPARE(watcher.TakeStateMessages().size(), 0);
    x_utils::SetStayOnTop(&window, false);
    QVERIFY(!window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    x_utils::SetStayOnTop(nullptr, true);
    watcher.Sync();
    QCOMPARE(watcher.TakeStateMessages().size(), 0);
  }

  // A property change buffered on Qt's connection reaches the server through FlushRequests
  // alone: the test reads it on a connection of its own and neither sends anything on Qt's
  // connection nor runs the event loop, either of which would send the buffer too.
  void flushRequests_sendsWhatQtBuffered() {
    xcb_connection_t* qt = test_support::QtConnection();
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(qt)).data->root;
    const xcb_atom_t atom = test_support::Atom(qt, "QT_UTIL_FLUSH_PROBE");
    QVERIFY(atom != XCB_ATOM_NONE);
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> reader(
        xcb_connect(nullptr, nullptr), &xcb_disconnect);
    QVERIFY(!xcb_connection_has_error(reader.get()));
    const auto probe = [&]() -> uint32_t {
      std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
          xcb_get_property_reply(
              reader.get(), xcb_get_property(reader.get(), 0, root, atom, XCB_ATOM_CARDINAL, 0, 1),
              nullptr),
          &std::free);
      if (!reply || xcb_get_property_value_length(reply.get()) != 4) return 0;
      return *static_cast<uint32_t*>(xcb_get_property_value(reply.get()));
    };
    QCOMPARE(probe(), 0u);

    const uint32_t value = 0x51F7u;
    xcb_change_property(qt, XCB_PROP_MODE_REPLACE, root, atom, XCB_ATOM_CARDINAL, 32, 1, &value);
    x_utils::FlushRequests();
    const QDeadlineTimer deadline(2000);
    while (probe() != value && !deadline.hasExpired()) QThread::msleep(10);
    QCOMPARE(probe(), value);

    xcb_delete_property(reader.get(), root, atom);
    xcb_flush(reader.get());
  }

 private:
  QtMessageHandler previous_handler_ = nullptr;
};

QTEST_MAIN(tst_XUtils)
#include "tst_x_utils.moc"
