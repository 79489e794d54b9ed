// Style sheets and accessibility keys of VxQtUiUtil.
#include <QListWidgetItem>
#include <QVariant>
#include <QWidget>
#include <optional>

#include "qt_util/file_text_p.h"
#include "qt_util/qt_ui_custom_theme_helper.h"
#include "qt_util/ui_util_p.h"
#include "qt_util/ui_util_style.h"

namespace VxQtUiUtil {
namespace {

// The client's UI automation finds widgets by these forms; never change them.
QString DescriptionKey(const QString& key) {
  return QStringLiteral("atg__%1").arg(key);
}
QString NameKey(const QString& key) {
  return QStringLiteral("atg__%1__name").arg(key);
}

// Style sheets have always been read as plain UTF-8 bytes, up to a NUL.
std::optional<QString> StyleSheetText(const QString& path) {
  return qt_util::internal::ReadFileText(path, qt_util::internal::FileTextDecoding::kUtf8UpToNul);
}

}  // namespace

void SetupQss(QWidget* widget, const QString& path, bool checkTheme) {
  if (!widget) return;
  if (checkTheme && !QTUICustomThemeHelper::SharedInstance()->CheckSetupQss(widget, path)) return;
  if (const std::optional<QString> qss = StyleSheetText(path)) {
    widget->setStyleSheet(*qss);
  } else {
    QTU_UI_UTIL_LOG(base::log::kLevelFailure) << "qss not found";
  }
  // Marked even when the file was missing: selectors on the marker must match every widget
  // that went through here.
  widget->setProperty("widget-config", QStringLiteral("widget__config--main"));
}

QString GetQss(const QString& path) {
  return StyleSheetText(path).value_or(QString());
}

void SetAccessibleKey(QWidget* widget, const QString& key) {
  if (!widget) return;
  const QString used = key.isEmpty() ? widget->objectName() : key;
  if (used.isEmpty()) {
    QTU_UI_UTIL_LOG(base::log::kLevelFailure) << "key & objectName is empty";
    return;
  }
  SetAccessibleInfo(widget, NameKey(used), DescriptionKey(used));
}

void SetAccessibleKey(QListWidgetItem* item, const QString& key) {
  if (!item) return;
  if (key.isEmpty()) {
    // The widget variant's text, although an item has no object name to fall back on.
    QTU_UI_UTIL_LOG(base::log::kLevelFailure) << "key & objectName is empty";
    return;
  }
  item->setData(Qt::AccessibleTextRole, QVariant(DescriptionKey(key)));
  item->setData(Qt::UserRole, QVariant(NameKey(key)));
}

QString AccessibleKeyOfRes(const QString& res) {
  if (res.isEmpty()) {
    QTU_UI_UTIL_LOG(base::log::kLevelFailure) << "res is empty";
    return res;
  }
  const int slash = res.lastIndexOf(QLatin1Char('/'));
  return slash >= 0 ? res.mid(slash + 1) : res;
}

void SetAccessibleName(QWidget* widget, const QString& name) {
  if (widget) widget->setAccessibleName(name);
}

void SetAccessibleDesc(QWidget* widget, const QString& desc) {
  if (widget) widget->setAccessibleDescription(desc);
}

void SetAccessibleInfo(QWidget* widget, const QString& name, const QString& desc) {
  SetAccessibleName(widget, name);
  SetAccessibleDesc(widget, desc);
}

}  // namespace VxQtUiUtil
