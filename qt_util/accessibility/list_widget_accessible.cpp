#include "qt_util/accessibility/list_widget_accessible.h"

#include <QListWidget>

namespace {

QAccessibleInterface* ItemWidgetInterface(const QListWidget* list, QListWidgetItem* item) {
  if (!item) return nullptr;
  return QAccessible::queryAccessibleInterface(list->itemWidget(item));
}

}  // namespace

QAccessibleInterface* QTAccessibleUtils::ListWidgetAccessibleFactory(const QString& key,
                                                                     QObject* object) {
  if (key != QLatin1String("QListWidget") || !object || !object->isWidgetType()) return nullptr;
  return new QFListWidgetAccessible(static_cast<QWidget*>(object));
}

QFListWidgetAccessible::QFListWidgetAccessible(QWidget* widget)
    : QAccessibleWidget(widget, QAccessible::List, QString()) {}

QListWidget* QFListWidgetAccessible::List() const {
  return qobject_cast<QListWidget*>(widget());
}

QAccessibleInterface* QFListWidgetAccessible::childAt(int x, int y) const {
  QListWidget* list = List();
  if (!list) return nullptr;
  // The point is taken in the list's own coordinates, frame included, as this list has always
  // answered hit tests; the frame is a pixel or two, far thinner than any row.
  const QPoint local = list->mapFromGlobal(QPoint(x, y));
  return ItemWidgetInterface(list, list->itemAt(local));
}

QAccessibleInterface* QFListWidgetAccessible::child(int index) const {
  QListWidget* list = List();
  if (!list) return nullptr;
  return ItemWidgetInterface(list, list->item(index));
}

int QFListWidgetAccessible::childCount() const {
  QListWidget* list = List();
  return list ? list->count() : 0;
}

QFListWidgetItemAccessible::QFListWidgetItemAccessible(QListWidgetItem* item)
    : item(item), inner(nullptr), list_(item ? item->listWidget() : nullptr) {
  if (list_) inner = ItemWidgetInterface(list_, item);
  if (inner) inner_id_ = QAccessible::uniqueId(inner);
}

QAccessibleInterface* QFListWidgetItemAccessible::Inner() const {
  if (!inner || QAccessible::accessibleInterface(inner_id_) != inner) return nullptr;
  return inner;
}

bool QFListWidgetItemAccessible::isValid() const {
  QAccessibleInterface* target = Inner();
  return target && target->isValid();
}

QObject* QFListWidgetItemAccessible::object() const {
  QAccessibleInterface* target = Inner();
  return target ? target->object() : nullptr;
}

QAccessibleInterface* QFListWidgetItemAccessible::childAt(int x, int y) const {
  QAccessibleInterface* target = Inner();
  return target ? target->childAt(x, y) : nullptr;
}

QAccessibleInterface* QFListWidgetItemAccessible::parent() const {
  return list_ ? QAccessible::queryAccessibleInterface(list_.data()) : nullptr;
}

QAccessibleInterface* QFListWidgetItemAccessible::child(int index) const {
  QAccessibleInterface* target = Inner();
  return target ? target->child(index) : nullptr;
}

int QFListWidgetItemAccessible::childCount() const {
  QAccessibleInterface* target = Inner();
  return target ? target->childCount() : 0;
}

int QFListWidgetItemAccessible::indexOfChild(const QAccessibleInterface* child) const {
  QAccessibleInterface* target = Inner();
  return target ? target->indexOfChild(child) : -1;
}

QString QFListWidgetItemAccessible::text(QAccessible::Text t) const {
  QAccessibleInterface* target = Inner();
  return target ? target->text(t) : QString();
}

void QFListWidgetItemAccessible::setText(QAccessible::Text t, const QString& text) {
  if (QAccessibleInterface* target = Inner()) target->setText(t, text);
}

QRect QFListWidgetItemAccessible::rect() const {
  QAccessibleInterface* target = Inner();
  return target ? target->rect() : QRect();
}

QAccessible::Role QFListWidgetItemAccessible::role() const {
  QAccessibleInterface* target = Inner();
  return target ? target->role() : QAccessible::NoRole;
}

QAccessible::State QFListWidgetItemAccessible::state() const {
  QAccessibleInterface* target = Inner();
  if (target) return target->state();
  QAccessible::State gone;
  gone.invalid = true;
  return gone;
}
