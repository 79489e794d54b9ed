#pragma once

#include <QAccessibleInterface>
#include <QAccessibleWidget>
#include <QPointer>

#include "qt_util/qt_util_export.h"

class QListWidget;
class QListWidgetItem;

/// Accessibility hook for lists filled with item widgets (QListWidget::setItemWidget). Install
/// once after creating the application:
///
///   QAccessible::installFactory(QTAccessibleUtils::ListWidgetAccessibleFactory);
///
/// Every QListWidget then exposes the accessible interfaces of its item widgets as its
/// children, so that screen readers reach the controls placed on the rows.
class QT_UTIL_EXPORT QTAccessibleUtils {
 public:
  /// Returns a new QFListWidgetAccessible (owned by Qt) when `key` is "QListWidget" and
  /// `object` is a widget; null otherwise, leaving the object to Qt's own factories.
  static QAccessibleInterface* ListWidgetAccessibleFactory(const QString& key, QObject* object);
};

/// A list whose children are its rows' item widgets: child i is the accessible interface of
/// row i's item widget, null for a row without one.
class QT_UTIL_EXPORT QFListWidgetAccessible : public QAccessibleWidget {
 public:
  /// `widget` should be a QListWidget; for any other widget there are no children.
  explicit QFListWidgetAccessible(QWidget* widget);

  /// The item widget's interface of the row under the global point, or null.
  QAccessibleInterface* childAt(int x, int y) const override;
  QAccessibleInterface* child(int index) const override;
  int childCount() const override;

 private:
  QListWidget* List() const;
};

/// One row of a list, standing for the row's item widget: every query goes to the item
/// widget's interface, except parent(), which is the list. Made for a row without an item
/// widget (or once that widget is gone), it is invalid and answers every query with an empty
/// value.
class QT_UTIL_EXPORT QFListWidgetItemAccessible : public QAccessibleInterface {
 public:
  explicit QFListWidgetItemAccessible(QListWidgetItem* item);

  bool isValid() const override;
  QObject* object() const override;
  QAccessibleInterface* childAt(int x, int y) const override;
  QAccessibleInterface* parent() const override;
  QAccessibleInterface* child(int index) const override;
  int childCount() const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QString text(QAccessible::Text t) const override;
  void setText(QAccessible::Text t, const QString& text) override;
  QRect rect() const override;
  QAccessible::Role role() const override;
  QAccessible::State state() const override;

 private:
  // The item widget's interface while Qt still has it: Qt deletes an interface together with
  // its object, so `inner` alone could dangle.
  QAccessibleInterface* Inner() const;

  QListWidgetItem* item;
  QAccessibleInterface* inner;
  QAccessible::Id inner_id_ = 0;
  QPointer<QListWidget> list_;
};
