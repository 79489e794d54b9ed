// Window behaviour of VxQtUiUtil.
#include <QClipboard>
#include <QDateTime>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QImage>
#include <QLocale>
#include <QMetaType>
#include <QUrl>
#include <QVariant>
#include <QWidget>

#include "base/variant/variant.h"
#include "qt_util/qt_compat_p.h"
#include "qt_util/ui_util_p.h"
#include "qt_util/ui_util_platform_noops.h"
#include "qt_util/ui_util_window.h"
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
  QTU_UI_UTIL_LOG(base::log::kLevelWarning) << "update widget window should has a winId";
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
  widget->setProperty(kUpdateRecordProperty,
                      qt_util::internal::VariantOfType(g_update_record_type, &record));
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

}  // namespace VxQtUiUtil
