#pragma once

// X11 observation for tests that run under xvfb with the xcb platform (label x11): Qt's own
// connection, the server's input focus, and a second client that sees the window-manager
// requests sent to the root window.
//
//   test_support::RootWatcher watcher;            // before the request
//   ... code under test sends _NET_WM_STATE ...
//   watcher.Sync();
//   const auto messages = watcher.TakeStateMessages();
//
// Link Qt5::GuiPrivate and xcb.

#include <qpa/qplatformnativeinterface.h>
#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QList>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace test_support {

inline xcb_connection_t* QtConnection() {
  return static_cast<xcb_connection_t*>(
      QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("connection"));
}

// Asked on Qt's own connection, so the answer comes after every request Qt sent before.
inline xcb_window_t InputFocus() {
  xcb_connection_t* connection = QtConnection();
  std::unique_ptr<xcb_get_input_focus_reply_t, decltype(&std::free)> reply(
      xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr), &std::free);
  return reply ? reply->focus : xcb_window_t(XCB_WINDOW_NONE);
}

inline xcb_atom_t Atom(xcb_connection_t* connection, const char* name) {
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

}  // namespace test_support
