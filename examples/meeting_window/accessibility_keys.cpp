#include "accessibility_keys.h"

#include <QAbstractButton>

#include "qt_util/ui_util.h"

namespace meeting {

void SetButtonKeys(QWidget* root) {
  if (qobject_cast<QAbstractButton*>(root)) VxQtUiUtil::SetAccessibleKey(root, QString());
  for (QAbstractButton* button : root->findChildren<QAbstractButton*>()) {
    VxQtUiUtil::SetAccessibleKey(button, QString());
  }
}

bool HasKeys(const QWidget* widget) {
  const QString name = widget->objectName();
  return !name.isEmpty() && widget->accessibleName() == QStringLiteral("atg__%1__name").arg(name) &&
         widget->accessibleDescription() == QStringLiteral("atg__%1").arg(name);
}

}  // namespace meeting
