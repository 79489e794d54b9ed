#pragma once

/// @file
/// Operations the client's other desktop platforms carry out with their own window systems:
/// sheets, tracking areas, native panels, window levels, title bars, permission prompts. The
/// interface is shared, so they stay here and, on Linux, do nothing or return the fixed value
/// their documentation gives. Include \<QPixmap>, "base/variant/variant.h" or
/// "qt_util/scheme_controller.h" where a call needs them complete.
/// Per-platform results (X11, Wayland, offscreen): docs/platforms.md.

#include <QPoint>
#include <QRect>
#include <QString>
#include <memory>
#include <string>

#include "qt_util/qt_util_export.h"

class QPixmap;
class QWidget;

namespace base::variant {
class Variant;
}
namespace framework {
class Controller;
}

/// Free functions for windows, screens, images and style sheets of the client's widgets.
namespace VxQtUiUtil {

/// No effect on Linux.
QT_UTIL_EXPORT void ActivateCurrentApp();
/// No effect on Linux.
QT_UTIL_EXPORT void SupportAutoSplitScreen(QWidget* widget, bool support);
/// No effect on Linux.
QT_UTIL_EXPORT void SetWidgetOwnerShip(QWidget* widget, QWidget* owner, bool own);
/// No effect on Linux.
QT_UTIL_EXPORT void SetFixedPositonProp(QWidget* widget, bool fixed);
/// No effect on Linux.
QT_UTIL_EXPORT void BeginSheet(QWidget* sheet, QWidget* parent);
/// No effect on Linux.
QT_UTIL_EXPORT void EndSheet(QWidget* sheet);
/// No effect on Linux.
QT_UTIL_EXPORT void EndAllSheet(QWidget* parent);
/// No effect on Linux.
QT_UTIL_EXPORT void ClearWindowBackground(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void TitleBarFullSizeContentView(QWidget* widget, bool on);
/// No effect on Linux.
QT_UTIL_EXPORT void SetWindowShowShadow(QWidget* widget, bool show);
/// No effect on Linux.
QT_UTIL_EXPORT void SetDisableVisualEffect(QWidget* widget, bool disable);
/// No effect on Linux.
QT_UTIL_EXPORT void ShowMediaNotAccessible(QWidget* widget, const base::variant::Variant* info);
/// No effect on Linux.
QT_UTIL_EXPORT void OpenSystemPreference(const base::variant::Variant* info);
/// No effect on Linux.
QT_UTIL_EXPORT void SetTitleVisible(QWidget* widget, bool visible);
/// No effect on Linux.
QT_UTIL_EXPORT void SetTitleBarVisible(QWidget* widget, bool visible);
/// No effect on Linux.
QT_UTIL_EXPORT void WidgetAppearOnlyOneSpace(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void WidgetShowAllWorkSapceWithoutFullScreen(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void RelativeToTrackWindow(QWidget* widget, unsigned long windowId);
/// No effect on Linux.
QT_UTIL_EXPORT void AddNSPanelMask(QWidget* widget, bool add);
/// No effect on Linux.
QT_UTIL_EXPORT void MinimizeWindow(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void DeminimizeWindow(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetWindowResizable(QWidget* widget, bool resizable);
/// No effect on Linux.
QT_UTIL_EXPORT void SetWindowMovable(QWidget* widget, bool movable);
/// No effect on Linux.
QT_UTIL_EXPORT void SetWindowFullScreenState(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetWindowNoFullScreenMode(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void NativeWindowToggleFullScreen(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetTitleBarMinBtnVisible(QWidget* widget, bool visible);
/// No effect on Linux.
QT_UTIL_EXPORT void SetTitleBarZoomBtnVisible(QWidget* widget, bool visible);
/// No effect on Linux.
QT_UTIL_EXPORT void SetTitleBarCloseBtnVisible(QWidget* widget, bool visible);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupTitleBarStyle(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupTitleBarOnlyCloseStyle(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupTitleBarCloseAndMinStyle(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupTitleBarBackgroundColor(QWidget* widget, unsigned int color);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupTitleBarTitleColor(QWidget* widget, unsigned int color);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupTitleBarTitleSize(QWidget* widget, int size);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupWndNormalLevel(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupWndMediumLevel(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupWndHeightLevel(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupWndDockLevel(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void MakeKeyAndOrderFront(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void MakeFirstResponder(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void NativeWindowOrderOut(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void UpdateTrackingArea(QWidget* widget, const QRect& rect);
/// No effect on Linux.
QT_UTIL_EXPORT void RemoveAllTrackingArea(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void WidgetAddAccessibleParent(QWidget* widget, unsigned long long parent);
/// No effect on Linux.
QT_UTIL_EXPORT void WidgetRemoveAccessibleParent(unsigned long long parent);
/// No effect on Linux.
QT_UTIL_EXPORT void ChildWidgetAddSubView(QWidget* parent, QWidget* child, bool add);
/// No effect on Linux.
QT_UTIL_EXPORT void RemoveWidgetFromQTWindow(QWidget* window, QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void AddWidgetToNativeWindow(const void* nativeWindow, QWidget* widget, bool add);
/// No effect on Linux.
QT_UTIL_EXPORT void RemoveWidgetFromNativeWindow(const void* nativeWindow, QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void updateSupportWindowShareIfNeeded(unsigned long long windowId, bool support);
/// No effect on Linux.
QT_UTIL_EXPORT void MakeNativeWindowKeyAndOrderFront(const std::string& windowKey);
/// No effect on Linux.
QT_UTIL_EXPORT void ChangeAppIconWithTitle(const std::string& title);
/// No effect on Linux.
QT_UTIL_EXPORT void BindSchemeTopCenter(std::shared_ptr<framework::Controller> top,
                                        std::shared_ptr<framework::Controller> center, int level,
                                        std::string topScheme, std::string centerScheme);
/// No effect on Linux.
QT_UTIL_EXPORT void SetSchemeTopCenter(std::shared_ptr<framework::Controller> top,
                                       std::shared_ptr<framework::Controller> center, int level,
                                       std::string topScheme, std::string centerScheme);
/// No effect on Linux.
QT_UTIL_EXPORT void UnBindSchemeTopCenter(std::shared_ptr<framework::Controller> top,
                                          std::shared_ptr<framework::Controller> center,
                                          std::string topScheme, std::string centerScheme);
/// No effect on Linux.
QT_UTIL_EXPORT void SetOwnerShipByScheme(std::shared_ptr<framework::Controller> top,
                                         std::shared_ptr<framework::Controller> center,
                                         std::string topScheme, std::string centerScheme);

/// Always false on Linux.
QT_UTIL_EXPORT bool IsCalendarApplicationInstalled(const std::string& application);
/// Always false on Linux: no native window is asked, so callers treat the point as outside.
QT_UTIL_EXPORT bool IsNativePointInWindow(QPoint point, unsigned long long windowId);
/// Always false on Linux.
QT_UTIL_EXPORT bool IsFullSizeContent(QWidget* widget);
/// Always false on Linux.
QT_UTIL_EXPORT bool IsWindowOutOfScreenWithOffset(QWidget* widget, int dx, int dy);
/// Always false on Linux.
QT_UTIL_EXPORT bool RefreshWindowAppearance(QWidget* widget, bool dark);
/// Always false on Linux: the widget is not added.
QT_UTIL_EXPORT bool AddWidgetToQTWindow(QWidget* window, QWidget* widget, bool add);
/// Always false on Linux: the widget is not added.
QT_UTIL_EXPORT bool AddWidgetToQTWindowWithCheckWinId(QWidget* window, QWidget* widget, bool add,
                                                      bool checkWinId);
/// Always true on Linux, so that callers keyed by window name go on as if it succeeded.
QT_UTIL_EXPORT bool AddWidgetToNativeWindow(const std::string& windowKey, QWidget* widget);
/// Always true on Linux, so that callers keyed by window name go on as if it succeeded.
QT_UTIL_EXPORT bool RemoveWidgetFromNativeWindow(const std::string& windowKey, QWidget* widget);
/// Always 0 on Linux.
QT_UTIL_EXPORT int GetTitlebarHeight(QWidget* widget);
/// Always 0 on Linux.
QT_UTIL_EXPORT unsigned long long GetPositionWndId(unsigned long long windowId);
/// Always a null pixmap on Linux.
QT_UTIL_EXPORT QPixmap GetAppResourceImage(const char* name);
/// Always QRect(0, 0, 0, 0) on Linux.
QT_UTIL_EXPORT QRect GetTitleBarCloseButtonRect(QWidget* widget);

}  // namespace VxQtUiUtil

/// System permission prompts of another platform; no effect on Linux.
class QT_UTIL_EXPORT VxQtPermissionUtil {
 public:
  /// Always 0 on Linux: no alert is shown.
  static int ShowPermissionAlert(const base::variant::Variant* info);
  /// No effect on Linux.
  static void GoToSystemSettingForMicPermission();
  /// No effect on Linux.
  static void GoToSystemSetting(const QString& page);
  /// Always false on Linux.
  static bool RequestPPTAnnotationPermission();
};

/// System commands of another platform; no effect on Linux.
class QT_UTIL_EXPORT VxQtCmdUtil {
 public:
  /// No effect on Linux.
  static void RebootAudioDriver(const char* driver);
};

/// Devices and companion applications of the client's machine.
namespace qt_util::device {

/// Always false on Linux.
QT_UTIL_EXPORT bool IsOutlookReady();

}  // namespace qt_util::device
