#include "qt_util/event_handler/window_status_extend.h"

// Every body here is empty on purpose: there is no native window-status source on this
// platform, and storing a handler that can never run would only keep its captures alive.

WindowStatusExtend::WindowStatusExtend() = default;
WindowStatusExtend::~WindowStatusExtend() = default;

void WindowStatusExtend::WindowWillEnterFullScreen(const WindowInfo*) {}
void WindowStatusExtend::WindowWillLeaveFullScreen(const WindowInfo*) {}
void WindowStatusExtend::WindowDidLeaveFullScreen(const WindowInfo*) {}
void WindowStatusExtend::WindowDidEnterFullScreen(const WindowInfo*) {}
void WindowStatusExtend::WindowDidResize(const WindowInfo*) {}
void WindowStatusExtend::WindowDidBecomeKey(const WindowInfo*) {}
void WindowStatusExtend::WindowDidResignKey(const WindowInfo*) {}

void WindowStatusExtend::SetObserverWidget(QWidget*) {}
void WindowStatusExtend::SetNativeWindowWillEnterFullScreenHandler(std::function<void()>&&) {}
void WindowStatusExtend::SetNativeWindowWillLeaveFullScreenHandler(std::function<void()>&&) {}
void WindowStatusExtend::SetNativeWindowDidEnterFullScreenHandler(std::function<void()>&&) {}
void WindowStatusExtend::SetNativeWindowDidLeaveFullScreenHandler(std::function<void()>&&) {}
void WindowStatusExtend::SetNativeWindowDidResizeHandler(std::function<void()>&&) {}
void WindowStatusExtend::SetNativeWindowDidBecomeKeyHandler(std::function<void()>&&) {}
void WindowStatusExtend::SetNativeWindowDidResignKeyHandler(std::function<void()>&&) {}

void WindowStatusExtend::LeaveFullScreen(std::function<void()>&&) {}

bool WindowStatusExtend::IsFullScreen() const {
  return false;
}
