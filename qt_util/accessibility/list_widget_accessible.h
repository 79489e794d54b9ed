#pragma once

/// @file
/// Accessibility for list widgets whose rows carry item widgets.
///
/// Behaviour on X11, Wayland and the offscreen platform: docs/platforms.md.

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
  /// The accessible interface of row `index`'s item widget; null for a row without one or an
  /// index out of range.
  QAccessibleInterface* child(int index) const override;
  /// The number of rows, with or without item widgets.
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
  /// Stands for `item`'s item widget as it is now; null or a row without one gives an invalid
  /// interface.
  explicit QFListWidgetItemAccessible(QListWidgetItem* item);

  /// Whether the item widget's interface still exists and is valid.
  bool isValid() const override;
  /// The item widget, or null.
  QObject* object() const override;
  /// The item widget's child at the global point, or null.
  QAccessibleInterface* childAt(int x, int y) const override;
  /// The list's interface, or null once the list is gone.
  QAccessibleInterface* parent() const override;
  /// The item widget's child `index`, or null.
  QAccessibleInterface* child(int index) const override;
  /// The item widget's child count, or 0.
  int childCount() const override;
  /// The item widget's index of `child`, or -1.
  int indexOfChild(const QAccessibleInterface* child) const override;
  /// The item widget's text `t`, or an empty string.
  QString text(QAccessible::Text t) const override;
  /// Sets the item widget's text `t`; does nothing without one.
  void setText(QAccessible::Text t, const QString& text) override;
  /// The item widget's rectangle in global coordinates, or an empty rectangle.
  QRect rect() const override;
  /// The item widget's role, or QAccessible::NoRole.
  QAccessible::Role role() const override;
  /// The item widget's state, or a state with only `invalid` set.
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
