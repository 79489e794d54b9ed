// Window behaviour of VxQtUiUtil, and the operations that exist for another platform's window
// system and do nothing here.
#include <QClipboard>
#include <QDateTime>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QImage>
#include <QLocale>
#include <QMetaType>
#include <QPixmap>
#include <QUrl>
#include <QVariant>
#include <QWidget>

#include "base/common/include/logger.h"
#include "base/variant/variant.h"
#include "qt_util/scheme_controller.h"
#include "qt_util/ui_util.h"
#include "x_utils/x_utils.h"

namespace VxQtUiUtil {
namespace {

using UpdateRecord = std::shared_ptr<base::variant::Variant>;

constexpr char kUpdateRecordProperty[] = "widget-update-data-Ha6z6e";

bool g_ui_util_initialized = false;

// The update record's type is known to Qt from the moment the library loads, under the name
// the client's other modules use for it, so that they can read the property too.
const int g_update_record_type =
    qRegisterMetaType<UpdateRecord>("std::shared_ptr<framework::Variant>");

}  // namespace

void InitUIUtil() {
  if (g_ui_util_initialized) return;
  // The platform initialisation of other systems goes here; Linux needs none.
  g_ui_util_initialized = true;
}

void UnInitUIUtil() {
  g_ui_util_initialized = false;
}

void ShowWindow(QWidget* widget, bool activate) {
  if (!widget) return;
  if (!widget->isMinimized()) {
    widget->show();
  } else if (widget->windowState().testFlag(Qt::WindowMaximized)) {
    widget->showMaximized();
  } else {
    widget->showNormal();
  }
  if (!activate) return;
  widget->raise();
  widget->activateWindow();
  x_utils::SetWindowInputFocus(widget);
}

void SetupToolWindow(QWidget* widget) {
  if (!widget) return;
  widget->setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::Tool |
                         Qt::X11BypassWindowManagerHint);
  widget->setAttribute(Qt::WA_AlwaysStackOnTop, true);
  widget->setAttribute(Qt::WA_TranslucentBackground, true);
}

void SetupTopMost(QWidget* widget, bool onTop, bool show) {
  if (!widget) return;
  widget->setWindowFlag(Qt::WindowStaysOnTopHint, onTop);
  if (show) widget->show();
  // Also when not shown: a hidden window keeps the request as its hint for when it maps.
  x_utils::SetStayOnTop(widget->topLevelWidget(), onTop);
}

void BringToFront(QWidget* widget, bool front) {
  if (!widget) return;
  if (front) {
    widget->raise();
  } else {
    widget->lower();
  }
  // Qt keeps the restacking request in its buffer until its event loop next handles window
  // system events, which can be the next mouse move: the window would stay where it was.
  x_utils::FlushRequests();
}

void UpdateWidgetWindow(QWidget* widget) {
  if (widget && widget->internalWinId()) {
    widget->update();
    return;
  }
  QTU_LOG(base::log::kLevelWarning) << "update widget window should has a winId";
}

void UpdateWidgetVisible(QWidget* widget, bool visible) {
  if (!widget) return;
  if (visible) {
    widget->show();
  } else {
    widget->hide();
  }
}

bool IsWidgetNeedUpdate(QWidget* widget, const base::variant::Variant* data) {
  if (!data || !widget) return true;
  const QVariant recorded = widget->property(kUpdateRecordProperty);
  if (recorded.isValid() && recorded.userType() == g_update_record_type) {
    const auto& record = *static_cast<const UpdateRecord*>(recorded.constData());
    if (record && *record == *data) return false;
  }
  const UpdateRecord record = std::make_shared<base::variant::Variant>(*data);
  widget->setProperty(kUpdateRecordProperty, QVariant(g_update_record_type, &record));
  return true;
}

bool SaveImageToClipBoard(const std::string& base64) {
  if (base64.empty()) return false;
  const QByteArray bytes =
      QByteArray::fromBase64(QByteArray::fromRawData(base64.data(), int(base64.size())));
  QImage image;
  if (!image.loadFromData(bytes) || image.isNull()) return false;
  QGuiApplication::clipboard()->setImage(image, QClipboard::Clipboard);
  return true;
}

QString FormatTimeStamp(unsigned long seconds, const char* format, QLocale locale) {
  if (seconds == 0 || !format) return QString();
  // Narrowed to 32 bits as the client's time stamps have always been.
  const QDateTime time = QDateTime::fromSecsSinceEpoch(static_cast<quint32>(seconds));
  return locale.toString(time, QString::fromUtf8(format));
}

bool OpenURL(const QString& url) {
  return QDesktopServices::openUrl(QUrl(url, QUrl::TolerantMode));
}

void MakeWidgetAbove(QWidget* widget, QWidget* above) {
  SetWidgetOwnerShip(above, widget, true);
}

QString CurrentThreadCallStackSymbols() {
  return QString();
}

// Operations of another platform's window system. Each keeps the interface the client shares
// across platforms and answers with the fixed value its callers expect from Linux.

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
