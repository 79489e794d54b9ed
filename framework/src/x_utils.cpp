#include "x_utils/x_utils.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>
#include <QtGlobal>
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
#include <QtGui/qguiapplication_platform.h>
#else
#include <QX11Info>
#endif
#include <cstdlib>
#include <cstring>

namespace x_utils {
namespace {

// EWMH: how a _NET_WM_STATE client message says what to do with the listed states.
constexpr uint32_t kNetWmStateRemove = 0;
constexpr uint32_t kNetWmStateAdd = 1;
// EWMH source indication: a normal application.
constexpr uint32_t kSourceApplication = 1;

xcb_atom_t InternAtom(xcb_connection_t* connection, const char* name) {
  const auto cookie =
      xcb_intern_atom(connection, 0, static_cast<uint16_t>(std::strlen(name)), name);
  xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection, cookie, nullptr);
  if (!reply) return XCB_ATOM_NONE;
  const xcb_atom_t atom = reply->atom;
  std::free(reply);
  return atom;
}

struct StateAtoms {
  xcb_atom_t state = XCB_ATOM_NONE;
  xcb_atom_t above = XCB_ATOM_NONE;
};

// Atoms live as long as the X server; they are looked up again only when Qt's connection
// changes (a new QGuiApplication).
StateAtoms GetStateAtoms(xcb_connection_t* connection) {
  static xcb_connection_t* cached_for = nullptr;
  static StateAtoms cached;
  if (cached_for != connection || cached.state == XCB_ATOM_NONE || cached.above == XCB_ATOM_NONE) {
    cached.state = InternAtom(connection, "_NET_WM_STATE");
    cached.above = InternAtom(connection, "_NET_WM_STATE_ABOVE");
    cached_for = connection;
  }
  return cached;
}

// Qt's connection when the application runs on X11, else null.
xcb_connection_t* X11Connection() {
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
  // Qt 6 removed QX11Info (and the X11 Extras module); the connection is on the application's
  // native interface, which exists only on the xcb platform.
  if (!qGuiApp) return nullptr;
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 ? x11->connection() : nullptr;
#else
  if (!QX11Info::isPlatformX11()) return nullptr;
  return QX11Info::connection();
#endif
}

// The root window of the screen `xid` is on, where window-manager requests about it go; 0 when
// the server does not answer. Asked of the server because neither Qt 5 nor Qt 6 names the root
// of a given window's screen in public API.
xcb_window_t RootOf(xcb_connection_t* connection, xcb_window_t xid) {
  xcb_query_tree_reply_t* reply =
      xcb_query_tree_reply(connection, xcb_query_tree(connection, xid), nullptr);
  if (!reply) return 0;
  const xcb_window_t root = reply->root;
  std::free(reply);
  return root;
}

// The X window of a shown top-level widget, or 0. Asked of the QWindow, not the widget: when a
// shown window's flags change, Qt replaces its native window but the widget keeps reporting the
// destroyed one's id.
xcb_window_t MappedWindow(const QWidget* top_level) {
  if (!top_level->isVisible()) return 0;
  const QWindow* window = top_level->windowHandle();
  if (!window || !window->handle()) return 0;
  return static_cast<xcb_window_t>(window->winId());
}

}  // namespace

void SetStayOnTop(const QWidget* window, bool on_top) {
  if (!window) return;
  xcb_connection_t* connection = X11Connection();
  if (!connection) return;
  const QWidget* top_level = window->window();
  const xcb_window_t xid = MappedWindow(top_level);
  if (!xid) {
    if (top_level->windowFlags().testFlag(Qt::WindowStaysOnTopHint) != on_top) {
      // The widget is only borrowed as const: changing the flag of a hidden window shows
      // nothing and is what the caller asked for.
      const_cast<QWidget*>(top_level)->setWindowFlag(Qt::WindowStaysOnTopHint, on_top);
    }
    return;
  }
  const StateAtoms atoms = GetStateAtoms(connection);
  if (atoms.state == XCB_ATOM_NONE || atoms.above == XCB_ATOM_NONE) return;
  const xcb_window_t root = RootOf(connection, xid);
  if (!root) return;

  xcb_client_message_event_t event;
  std::memset(&event, 0, sizeof(event));
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = xid;
  event.type = atoms.state;
  event.data.data32[0] = on_top ? kNetWmStateAdd : kNetWmStateRemove;
  event.data.data32[1] = atoms.above;
  event.data.data32[2] = 0;
  event.data.data32[3] = kSourceApplication;
  xcb_send_event(connection, 0, root,
                 XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                 reinterpret_cast<const char*>(&event));
  xcb_flush(connection);
}

void SetWindowInputFocus(const QWidget* window) {
  if (!window) return;
  xcb_connection_t* connection = X11Connection();
  if (!connection) return;
  const xcb_window_t xid = MappedWindow(window->window());
  if (!xid) return;
  // A window the window manager has not mapped yet refuses focus with BadMatch; that race is
  // not worth a warning in Qt's error log, so the request's error is dropped unread.
  const auto cookie =
      xcb_set_input_focus_checked(connection, XCB_INPUT_FOCUS_PARENT, xid, XCB_CURRENT_TIME);
  xcb_discard_reply(connection, cookie.sequence);
  xcb_flush(connection);
}

void FlushRequests() {
  xcb_connection_t* connection = X11Connection();
  if (!connection) return;
  xcb_flush(connection);
}

}  // namespace x_utils
