#pragma once

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
  virtual void WindowWillEnterFullScreen(const WindowInfo* info);
  virtual void WindowWillLeaveFullScreen(const WindowInfo* info);
  virtual void WindowDidLeaveFullScreen(const WindowInfo* info);
  virtual void WindowDidEnterFullScreen(const WindowInfo* info);
  virtual void WindowDidResize(const WindowInfo* info);
  virtual void WindowDidBecomeKey(const WindowInfo* info);
  virtual void WindowDidResignKey(const WindowInfo* info);

  void SetObserverWidget(QWidget* widget);
  void SetNativeWindowWillEnterFullScreenHandler(std::function<void()>&& handler);
  void SetNativeWindowWillLeaveFullScreenHandler(std::function<void()>&& handler);
  void SetNativeWindowDidEnterFullScreenHandler(std::function<void()>&& handler);
  void SetNativeWindowDidLeaveFullScreenHandler(std::function<void()>&& handler);
  void SetNativeWindowDidResizeHandler(std::function<void()>&& handler);
  void SetNativeWindowDidBecomeKeyHandler(std::function<void()>&& handler);
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
