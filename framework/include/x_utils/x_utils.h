#pragma once

/// @file
/// Window-system pinning, input focus and request delivery (X11; no-ops elsewhere).
/// Per-platform results (X11, Wayland, offscreen): docs/platforms.md.

#include "talvex_framework_export.h"

class QWidget;

/// Window-system requests that Qt has no portable call for. They act on X11 (the xcb platform)
/// through the connection Qt already holds and do nothing on every other platform. A child
/// widget stands for its top-level window; a null widget is ignored. GUI thread.
namespace x_utils {

/// Asks the window manager to keep `window` above other windows (`on_top`) or to release it,
/// with the EWMH _NET_WM_STATE client message for _NET_WM_STATE_ABOVE. A window that is not
/// shown yet has nothing for the window manager to act on; its Qt::WindowStaysOnTopHint is set
/// to match instead, which Qt turns into the same state when it maps the window.
TALVEX_FRAMEWORK_EXPORT void SetStayOnTop(const QWidget* window, bool on_top);

/// Gives `window` the X input focus. Windows that are not shown are skipped, since X refuses
/// focus to a window that is not viewable.
TALVEX_FRAMEWORK_EXPORT void SetWindowInputFocus(const QWidget* window);

/// Sends the requests Qt has buffered on its X connection to the server now. Qt sends them when
/// its event loop next handles X events, so a request made in between (a raise() or lower()
/// from a click handler or a timer) can otherwise wait until the next input event, such as a
/// mouse move. Call it after such a request when its effect must show at once.
TALVEX_FRAMEWORK_EXPORT void FlushRequests();

}  // namespace x_utils
