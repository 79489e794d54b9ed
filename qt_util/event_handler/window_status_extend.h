#pragma once

/// @file
/// The window-status interface (inert on this platform).

#include <functional>
#include <memory>

#include "qt_util/qt_util_export.h"

class QWidget;

/// Describes the native window in a window-status notification. Platform layers with a
/// native source of such notifications fill it; this platform has none and needs no fields.
struct QT_UTIL_EXPORT WindowInfo {};

/// Receiver of native window-status notifications (full-screen transitions, resizes, key
/// window changes) and the place to register handlers for them, so that shared window code
/// runs unchanged on every platform. This platform has no native source of these
/// notifications: every operation is inert, no handler is stored or ever called, and
/// IsFullScreen() is always false. Subclasses may override the notifications.
class QT_UTIL_EXPORT WindowStatusExtend : public std::enable_shared_from_this<WindowStatusExtend> {
 public:
  WindowStatusExtend();
  // The order of the virtual functions is part of the binary interface: keep it, including
  // did-leave before did-enter.
  virtual ~WindowStatusExtend();
  /// The window is about to enter native full screen. Does nothing here.
  virtual void WindowWillEnterFullScreen(const WindowInfo* info);
  /// The window is about to leave native full screen. Does nothing here.
  virtual void WindowWillLeaveFullScreen(const WindowInfo* info);
  /// The window has left native full screen. Does nothing here.
  virtual void WindowDidLeaveFullScreen(const WindowInfo* info);
  /// The window has entered native full screen. Does nothing here.
  virtual void WindowDidEnterFullScreen(const WindowInfo* info);
  /// The window was resized by the window system. Does nothing here.
  virtual void WindowDidResize(const WindowInfo* info);
  /// The window became the key (input) window. Does nothing here.
  virtual void WindowDidBecomeKey(const WindowInfo* info);
  /// The window stopped being the key (input) window. Does nothing here.
  virtual void WindowDidResignKey(const WindowInfo* info);

  /// Would watch `widget`'s native window; ignored here.
  void SetObserverWidget(QWidget* widget);
  /// Would be called before entering native full screen; dropped here, never called.
  void SetNativeWindowWillEnterFullScreenHandler(std::function<void()>&& handler);
  /// Would be called before leaving native full screen; dropped here, never called.
  void SetNativeWindowWillLeaveFullScreenHandler(std::function<void()>&& handler);
  /// Would be called after entering native full screen; dropped here, never called.
  void SetNativeWindowDidEnterFullScreenHandler(std::function<void()>&& handler);
  /// Would be called after leaving native full screen; dropped here, never called.
  void SetNativeWindowDidLeaveFullScreenHandler(std::function<void()>&& handler);
  /// Would be called after a native resize; dropped here, never called.
  void SetNativeWindowDidResizeHandler(std::function<void()>&& handler);
  /// Would be called when the window becomes the key window; dropped here, never called.
  void SetNativeWindowDidBecomeKeyHandler(std::function<void()>&& handler);
  /// Would be called when the window stops being the key window; dropped here, never called.
  void SetNativeWindowDidResignKeyHandler(std::function<void()>&& handler);

  /// Would leave native full screen and then call `completion`; here the completion is
  /// never called, since the window was never in native full screen.
  void LeaveFullScreen(std::function<void()>&& completion);

  /// Whether the window is in native full screen: always false here, even for a widget
  /// shown with QWidget::showFullScreen().
  bool IsFullScreen() const;

 private:
  // Slots of the platforms that fill them; they stay empty here.
  QWidget* observer_widget_ = nullptr;
  std::function<void()> will_enter_full_screen_handler_;
  std::function<void()> will_leave_full_screen_handler_;
  std::function<void()> did_enter_full_screen_handler_;
  std::function<void()> did_leave_full_screen_handler_;
  std::function<void()> did_resize_handler_;
  std::function<void()> did_become_key_handler_;
  std::function<void()> did_resign_key_handler_;
  std::function<void()> leave_full_screen_completion_;
};
