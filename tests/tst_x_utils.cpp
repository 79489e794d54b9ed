// Runs under xvfb with the xcb platform: the requests must reach a real X server.
#include <qpa/qplatformnativeinterface.h>
#include <xcb/xcb.h>

#include <QApplication>
#include <QtTest>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "x_utils/x_utils.h"

namespace {

xcb_connection_t* QtConnection() {
  return static_cast<xcb_connection_t*>(
      QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("connection"));
}

// Asked on Qt's own connection, so the answer comes after every request Qt sent before.
xcb_window_t InputFocus() {
  xcb_connection_t* connection = QtConnection();
  std::unique_ptr<xcb_get_input_focus_reply_t, decltype(&std::free)> reply(
      xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr), &std::free);
  return reply ? reply->focus : xcb_window_t(XCB_WINDOW_NONE);
}

xcb_atom_t Atom(xcb_connection_t* connection, const char* name) {
  std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
      xcb_intern_atom_reply(
          connection,
          xcb_intern_atom(connection, 0, static_cast<uint16_t>(std::strlen(name)), name), nullptr),
      &std::free);
  return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

// A second client that watches the root window the way a window manager would, without taking
// over window management (it selects notification only), so the client messages sent to the
// root reach it while Qt's windows still map on their own.
class RootWatcher {
 public:
  RootWatcher() : connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_)) return;
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &mask);
    net_wm_state_ = Atom(connection_, "_NET_WM_STATE");  // the round trip makes the mask live
    above_ = Atom(connection_, "_NET_WM_STATE_ABOVE");
  }
  ~RootWatcher() { xcb_disconnect(connection_); }
  bool IsValid() const {
    return !xcb_connection_has_error(connection_) && net_wm_state_ != XCB_ATOM_NONE;
  }
  xcb_atom_t Above() const { return above_; }

  struct StateMessage {
    xcb_window_t window = XCB_WINDOW_NONE;
    uint32_t action = 0;
    uint32_t first = 0;
    uint32_t second = 0;
    uint32_t source = 0;
  };

  // Collects the _NET_WM_STATE messages that arrived so far.
  QList<StateMessage> TakeStateMessages() {
    QList<StateMessage> messages;
    while (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) {
      if ((event->response_type & 0x7F) == XCB_CLIENT_MESSAGE) {
        const auto* message = reinterpret_cast<xcb_client_message_event_t*>(event);
        if (message->type == net_wm_state_ && message->format == 32) {
          messages.append(StateMessage{message->window, message->data.data32[0],
                                       message->data.data32[1], message->data.data32[2],
                                       message->data.data32[3]});
        }
      }
      std::free(event);
    }
    return messages;
  }

  // Waits until the server has handled everything Qt sent so far and this client has read
  // what the server sent it back.
  void Sync() {
    InputFocus();
    Atom(connection_, "_NET_WM_STATE");
  }

 private:
  xcb_connection_t* connection_;
  xcb_window_t root_ = XCB_WINDOW_NONE;
  xcb_atom_t net_wm_state_ = XCB_ATOM_NONE;
  xcb_atom_t above_ = XCB_ATOM_NONE;
};

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

 private:
  QtMessageHandler previous_handler_ = nullptr;
};

QTEST_MAIN(tst_XUtils)
#include "tst_x_utils.moc"
