#include <QAccessible>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QtTest>

#include "qt_util/accessibility/list_widget_accessible.h"

namespace {

class NamedList : public QListWidget {
  Q_OBJECT
};

QPoint GlobalCenterOfRow(QListWidget& list, int row) {
  return list.viewport()->mapToGlobal(list.visualItemRect(list.item(row)).center());
}

}  // namespace

class tst_ListWidgetAccessible : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase() {
    QAccessible::installFactory(QTAccessibleUtils::ListWidgetAccessibleFactory);
    QAccessible::setActive(true);
  }
  void cleanupTestCase() {
    QAccessible::removeFactory(QTAccessibleUtils::ListWidgetAccessibleFactory);
  }

  void init() {
    list_ = new QListWidget;
    list_->resize(300, 400);
    const QStringList names{"first", "second", "third"};
    for (const QString& name : names) {
      auto* item = new QListWidgetItem(list_);
      item->setSizeHint(QSize(200, 40));
      auto* button = new QPushButton(name);
      list_->setItemWidget(item, button);
      widgets_ << button;
    }
    list_->show();
    QVERIFY(QTest::qWaitForWindowExposed(list_));
  }
  void cleanup() {
    delete list_;
    widgets_.clear();
  }

  void listInterface_isOursWithListRole() {
    QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(list_);
    QVERIFY(iface);
    QVERIFY(dynamic_cast<QFListWidgetAccessible*>(iface));
    QCOMPARE(iface->role(), QAccessible::List);
    QCOMPARE(iface->object(), list_);
  }

  void children_areTheRowsItemWidgets() {
    QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(list_);
    QCOMPARE(iface->childCount(), 3);
    for (int i = 0; i < 3; ++i) {
      QAccessibleInterface* child = iface->child(i);
      QVERIFY(child);
      QCOMPARE(child, QAccessible::queryAccessibleInterface(widgets_[i]));
      QCOMPARE(child->object(), widgets_[i]);
      QCOMPARE(child->text(QAccessible::Name), widgets_[i]->text());
    }
  }

  void rowWithoutItemWidget_givesNullChild() {
    new QListWidgetItem(QStringLiteral("plain"), list_);
    QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(list_);
    QCOMPARE(iface->childCount(), 4);
    QVERIFY(iface->child(2));
    QCOMPARE(iface->child(3), nullptr);
    QCOMPARE(iface->childAt(GlobalCenterOfRow(*list_, 3).x(), GlobalCenterOfRow(*list_, 3).y()),
             nullptr);
  }

  void childOutOfRange_isNull() {
    QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(list_);
    QCOMPARE(iface->child(-1), nullptr);
    QCOMPARE(iface->child(3), nullptr);
  }

  void childAt_findsRowWidgetUnderPoint() {
    QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(list_);
    for (int row = 0; row < 3; ++row) {
      const QPoint on_row = widgets_[row]->mapToGlobal(widgets_[row]->rect().center());
      QCOMPARE(iface->childAt(on_row.x(), on_row.y()),
               QAccessible::queryAccessibleInterface(widgets_[row]));
    }
  }

  // The row is looked up at the point in the list's own coordinates (frame included), not in
  // the viewport's: along a vertical line through the list, every hit is the row that itemAt
  // gives there.
  void childAt_looksUpRowInListCoordinates() {
    QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(list_);
    const int x = list_->width() / 2;
    int hits = 0;
    for (int y = -2; y < list_->height() + 2; ++y) {
      const QPoint global = list_->mapToGlobal(QPoint(x, y));
      QListWidgetItem* item = list_->itemAt(QPoint(x, y));
      QAccessibleInterface* expected =
          item ? QAccessible::queryAccessibleInterface(list_->itemWidget(item)) : nullptr;
      QCOMPARE(iface->childAt(global.x(), global.y()), expected);
      hits += expected != nullptr;
    }
    QCOMPARE(hits, 3 * 40);
  }

  void childAt_outsideEveryRow_isNull() {
    QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(list_);
    const QRect last = list_->visualItemRect(list_->item(2));
    QVERIFY(last.bottom() + 20 < list_->viewport()->height());
    const QPoint below_rows =
        list_->viewport()->mapToGlobal(QPoint(last.center().x(), last.bottom() + 20));
    QCOMPARE(iface->childAt(below_rows.x(), below_rows.y()), nullptr);
    const QPoint outside_list = list_->mapToGlobal(QPoint(-50, -50));
    QCOMPARE(iface->childAt(outside_list.x(), outside_list.y()), nullptr);
  }

  void factory_ignoresOtherKeysAndObjects_data() {
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("objectKind");  // 0 list, 1 plain QObject, 2 null, 3 named subclass
    QTest::newRow("QListView key") << "QListView" << 0;
    QTest::newRow("QWidget key") << "QWidget" << 0;
    QTest::newRow("lower case") << "qlistwidget" << 0;
    QTest::newRow("subclass name") << "NamedList" << 3;
    QTest::newRow("not a widget") << "QListWidget" << 1;
    QTest::newRow("null object") << "QListWidget" << 2;
  }
  void factory_ignoresOtherKeysAndObjects() {
    QFETCH(QString, key);
    QFETCH(int, objectKind);
    QObject plain;
    NamedList named;
    QObject* object = objectKind == 0   ? static_cast<QObject*>(list_)
                      : objectKind == 1 ? &plain
                      : objectKind == 3 ? &named
                                        : nullptr;
    QCOMPARE(QTAccessibleUtils::ListWidgetAccessibleFactory(key, object), nullptr);
  }

  void factory_acceptsListWidgetKey() {
    QAccessibleInterface* iface =
        QTAccessibleUtils::ListWidgetAccessibleFactory(QStringLiteral("QListWidget"), list_);
    QVERIFY(iface);
    QCOMPARE(iface->childCount(), 3);
    QAccessible::deleteAccessibleInterface(QAccessible::registerAccessibleInterface(iface));
  }

  // Qt asks the factories again with each base class name, so a subclass still ends up with
  // the list interface through the "QListWidget" key.
  void subclass_getsListInterfaceThroughBaseClassName() {
    NamedList named;
    named.setItemWidget(new QListWidgetItem(&named), new QLabel(QStringLiteral("row")));
    QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(&named);
    QVERIFY(dynamic_cast<QFListWidgetAccessible*>(iface));
    QCOMPARE(iface->childCount(), 1);
  }

  void listInterfaceOnOtherWidget_hasNoChildren() {
    QWidget plain;
    QFListWidgetAccessible iface(&plain);
    QCOMPARE(iface.childCount(), 0);
    QCOMPARE(iface.child(0), nullptr);
    QCOMPARE(iface.childAt(0, 0), nullptr);
  }

  void itemInterface_forwardsToItemWidget() {
    auto* item = new QListWidgetItem(list_);
    auto* edit = new QLineEdit(QStringLiteral("draft"));
    edit->setAccessibleName(QStringLiteral("subject"));
    list_->setItemWidget(item, edit);
    QAccessibleInterface* inner = QAccessible::queryAccessibleInterface(edit);

    QFListWidgetItemAccessible row(item);
    QVERIFY(row.isValid());
    QCOMPARE(row.object(), edit);
    QCOMPARE(row.role(), inner->role());
    QCOMPARE(row.role(), QAccessible::EditableText);
    QCOMPARE(row.text(QAccessible::Name), QStringLiteral("subject"));
    QCOMPARE(row.text(QAccessible::Value), QStringLiteral("draft"));
    QCOMPARE(row.rect(), inner->rect());
    QCOMPARE(row.state().editable, inner->state().editable);
    QVERIFY(row.state().editable);
    QCOMPARE(row.childCount(), inner->childCount());
    QCOMPARE(row.child(0), inner->child(0));
    QCOMPARE(row.indexOfChild(nullptr), inner->indexOfChild(nullptr));
    const QPoint center = edit->mapToGlobal(edit->rect().center());
    QCOMPARE(row.childAt(center.x(), center.y()), inner->childAt(center.x(), center.y()));
    QCOMPARE(row.parent(), QAccessible::queryAccessibleInterface(list_));

    row.setText(QAccessible::Value, QStringLiteral("final"));
    QCOMPARE(edit->text(), QStringLiteral("final"));
  }

  void itemInterfaceWithoutWidget_isInvalidAndAnswersEmpty() {
    auto* item = new QListWidgetItem(QStringLiteral("plain"), list_);
    QFListWidgetItemAccessible row(item);
    QVERIFY(!row.isValid());
    QCOMPARE(row.object(), nullptr);
    QCOMPARE(row.text(QAccessible::Name), QString());
    QCOMPARE(row.role(), QAccessible::NoRole);
    QVERIFY(row.state().invalid);
    QCOMPARE(row.childCount(), 0);
    QCOMPARE(row.child(0), nullptr);
    QCOMPARE(row.childAt(0, 0), nullptr);
    QCOMPARE(row.indexOfChild(nullptr), -1);
    QCOMPARE(row.rect(), QRect());
    row.setText(QAccessible::Name, QStringLiteral("ignored"));
    QCOMPARE(row.parent(), QAccessible::queryAccessibleInterface(list_));

    QFListWidgetItemAccessible null_row(nullptr);
    QVERIFY(!null_row.isValid());
    QCOMPARE(null_row.parent(), nullptr);
  }

  void itemInterface_outlivingItsWidget_turnsInvalid() {
    QFListWidgetItemAccessible row(list_->item(0));
    QVERIFY(row.isValid());
    QPointer<QPushButton> button = widgets_[0];
    // The list deletes the widget later; Qt drops the widget's interface with it.
    list_->removeItemWidget(list_->item(0));
    QTRY_VERIFY(button.isNull());
    QVERIFY(!row.isValid());
    QCOMPARE(row.object(), nullptr);
    QCOMPARE(row.text(QAccessible::Name), QString());
  }

 private:
  QListWidget* list_ = nullptr;
  QList<QPushButton*> widgets_;
};

QTEST_MAIN(tst_ListWidgetAccessible)
#include "tst_list_widget_accessible.moc"
