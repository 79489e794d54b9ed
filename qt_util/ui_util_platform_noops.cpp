// The operations of VxQtUiUtil, VxQtPermissionUtil, VxQtCmdUtil and qt_util::device that exist
// for another platform's window system. Each keeps the interface the client shares across
// platforms and answers with the fixed value its callers expect from Linux.
#include <QPixmap>

#include "qt_util/scheme_controller.h"
#include "qt_util/ui_util_platform_noops.h"

namespace VxQtUiUtil {

void ActivateCurrentApp() {}
void SupportAutoSplitScreen(QWidget*, bool) {}
void SetWidgetOwnerShip(QWidget*, QWidget*, bool) {}
void SetFixedPositonProp(QWidget*, bool) {}
void BeginSheet(QWidget*, QWidget*) {}
void EndSheet(QWidget*) {}
void EndAllSheet(QWidget*) {}
void ClearWindowBackground(QWidget*) {}
void TitleBarFullSizeContentView(QWidget*, bool) {}
void SetWindowShowShadow(QWidget*, bool) {}
void SetDisableVisualEffect(QWidget*, bool) {}
void ShowMediaNotAccessible(QWidget*, const base::variant::Variant*) {}
void OpenSystemPreference(const base::variant::Variant*) {}
void SetTitleVisible(QWidget*, bool) {}
void SetTitleBarVisible(QWidget*, bool) {}
void WidgetAppearOnlyOneSpace(QWidget*) {}
void WidgetShowAllWorkSapceWithoutFullScreen(QWidget*) {}
void RelativeToTrackWindow(QWidget*, unsigned long) {}
void AddNSPanelMask(QWidget*, bool) {}
void MinimizeWindow(QWidget*) {}
void DeminimizeWindow(QWidget*) {}
void SetWindowResizable(QWidget*, bool) {}
void SetWindowMovable(QWidget*, bool) {}
void SetWindowFullScreenState(QWidget*) {}
void SetWindowNoFullScreenMode(QWidget*) {}
void NativeWindowToggleFullScreen(QWidget*) {}
void SetTitleBarMinBtnVisible(QWidget*, bool) {}
void SetTitleBarZoomBtnVisible(QWidget*, bool) {}
void SetTitleBarCloseBtnVisible(QWidget*, bool) {}
void SetupTitleBarStyle(QWidget*) {}
void SetupTitleBarOnlyCloseStyle(QWidget*) {}
void SetupTitleBarCloseAndMinStyle(QWidget*) {}
void SetupTitleBarBackgroundColor(QWidget*, unsigned int) {}
void SetupTitleBarTitleColor(QWidget*, unsigned int) {}
void SetupTitleBarTitleSize(QWidget*, int) {}
void SetupWndNormalLevel(QWidget*) {}
void SetupWndMediumLevel(QWidget*) {}
void SetupWndHeightLevel(QWidget*) {}
void SetupWndDockLevel(QWidget*) {}
void MakeKeyAndOrderFront(QWidget*) {}
void MakeFirstResponder(QWidget*) {}
void NativeWindowOrderOut(QWidget*) {}
void UpdateTrackingArea(QWidget*, const QRect&) {}
void RemoveAllTrackingArea(QWidget*) {}
void WidgetAddAccessibleParent(QWidget*, unsigned long long) {}
void WidgetRemoveAccessibleParent(unsigned long long) {}
void ChildWidgetAddSubView(QWidget*, QWidget*, bool) {}
void RemoveWidgetFromQTWindow(QWidget*, QWidget*) {}
void AddWidgetToNativeWindow(const void*, QWidget*, bool) {}
void RemoveWidgetFromNativeWindow(const void*, QWidget*) {}
void updateSupportWindowShareIfNeeded(unsigned long long, bool) {}
void MakeNativeWindowKeyAndOrderFront(const std::string&) {}
void ChangeAppIconWithTitle(const std::string&) {}
void BindSchemeTopCenter(std::shared_ptr<framework::Controller>,
                         std::shared_ptr<framework::Controller>, int, std::string, std::string) {}
void SetSchemeTopCenter(std::shared_ptr<framework::Controller>,
                        std::shared_ptr<framework::Controller>, int, std::string, std::string) {}
void UnBindSchemeTopCenter(std::shared_ptr<framework::Controller>,
                           std::shared_ptr<framework::Controller>, std::string, std::string) {}
void SetOwnerShipByScheme(std::shared_ptr<framework::Controller>,
                          std::shared_ptr<framework::Controller>, std::string, std::string) {}

bool IsCalendarApplicationInstalled(const std::string&) {
  return false;
}
bool IsNativePointInWindow(QPoint, unsigned long long) {
  return false;
}
bool IsFullSizeContent(QWidget*) {
  return false;
}
bool IsWindowOutOfScreenWithOffset(QWidget*, int, int) {
  return false;
}
bool RefreshWindowAppearance(QWidget*, bool) {
  return false;
}
bool AddWidgetToQTWindow(QWidget*, QWidget*, bool) {
  return false;
}
bool AddWidgetToQTWindowWithCheckWinId(QWidget*, QWidget*, bool, bool) {
  return false;
}
// Keyed by a native window's name, these report success so that callers carry on with their
// Qt-side layout; the widget-based variants above report failure so that callers fall back.
bool AddWidgetToNativeWindow(const std::string&, QWidget*) {
  return true;
}
bool RemoveWidgetFromNativeWindow(const std::string&, QWidget*) {
  return true;
}
int GetTitlebarHeight(QWidget*) {
  return 0;
}
unsigned long long GetPositionWndId(unsigned long long) {
  return 0;
}
QPixmap GetAppResourceImage(const char*) {
  return QPixmap();
}
QRect GetTitleBarCloseButtonRect(QWidget*) {
  return QRect(0, 0, 0, 0);
}

}  // namespace VxQtUiUtil

int VxQtPermissionUtil::ShowPermissionAlert(const base::variant::Variant*) {
  return 0;
}
void VxQtPermissionUtil::GoToSystemSettingForMicPermission() {}
void VxQtPermissionUtil::GoToSystemSetting(const QString&) {}
bool VxQtPermissionUtil::RequestPPTAnnotationPermission() {
  return false;
}

void VxQtCmdUtil::RebootAudioDriver(const char*) {}

namespace qt_util::device {

bool IsOutlookReady() {
  return false;
}

}  // namespace qt_util::device
