#include <QPointer>
#include <QWidget>
#include <QtTest>
#include <memory>

#include "base/singleton/scope_singleton.h"
#include "qt_util/qt_ui_monitor_helper.h"
#include "support/log_capture.h"

namespace {

// A shown meeting window with one child panel of 100x40 at window position (10, 20).
struct MeetingWindow {
  QWidget window;
  QWidget* panel;

  MeetingWindow() : panel(new QWidget(&window)) {
    window.resize(400, 300);
    panel->setGeometry(10, 20, 100, 40);
    window.show();
  }
};

struct HitRow {
  const char* name;
  QPoint point;
  bool hit;
};

}  // namespace

class tst_QtUiMonitorHelper : public QObject {
  Q_OBJECT

 private slots:
  void cleanup();

  void sharedInstance_isStableUntilTheScopeEnds();
  void noRegisteredWidget_isNoHit();
  void hitTest_edgesAreInclusive_data();
  void hitTest_edgesAreInclusive();
  void hitTest_mapsNestedWidgetsToTheirWindow();
  void hiddenWidget_isNeverHit();
  void registeringTwice_keepsOneEntryAndAnswersTrue();
  void dontCreateNative_keepsTheFirstKey();
  void nullWidget_logsAndFails();
  void destroyEvent_removesTheEntryFromEveryRegistry();
  void widgetDeletedByItsParent_leavesTheRegistries();
  void webHitTest_isFalseEvenOverAVisibleWebWidget();
  void changeToNativeAlert_changesNothing();
};

// Every test starts with a fresh, empty helper.
void tst_QtUiMonitorHelper::cleanup() {
  base::EndSingletonScope();
}

void tst_QtUiMonitorHelper::sharedInstance_isStableUntilTheScopeEnds() {
  QTUIMonitorHelper* first = QTUIMonitorHelper::SharedInstance();
  QVERIFY(first);
  QCOMPARE(QTUIMonitorHelper::SharedInstance(), first);

  QWidget widget;
  QVERIFY(first->AddMonitorRectWidget(&widget));
  QPointer<QTUIMonitorHelper> watch(first);
  base::EndSingletonScope();
  QVERIFY(watch.isNull());

  QTUIMonitorHelper* second = QTUIMonitorHelper::SharedInstance();
  QVERIFY(second);
  QVERIFY(second->MonitorRectWidgets().isEmpty());
}

void tst_QtUiMonitorHelper::noRegisteredWidget_isNoHit() {
  QTUIMonitorHelper* helper = QTUIMonitorHelper::SharedInstance();
  QVERIFY(!helper->IsInUIRectInMeeting(QPoint(0, 0)));
  QVERIFY(!helper->IsInUIRectInMeeting(QPoint(50, 30)));
}

void tst_QtUiMonitorHelper::hitTest_edgesAreInclusive_data() {
  QTest::addColumn<QPoint>("point");
  QTest::addColumn<bool>("hit");
  const HitRow rows[] = {
      {"top-left corner", QPoint(10, 20), true},
      {"bottom-right pixel", QPoint(109, 59), true},
      {"centre", QPoint(60, 40), true},
      {"one right of the last column", QPoint(110, 20), false},
      {"one below the last row", QPoint(10, 60), false},
      {"one left of the first column", QPoint(9, 20), false},
      {"one above the first row", QPoint(10, 19), false},
  };
  for (const HitRow& row : rows) QTest::newRow(row.name) << row.point << row.hit;
}

void tst_QtUiMonitorHelper::hitTest_edgesAreInclusive() {
  QFETCH(QPoint, point);
  QFETCH(bool, hit);
  MeetingWindow meeting;
  QTUIMonitorHelper* helper = QTUIMonitorHelper::SharedInstance();
  QVERIFY(helper->AddMonitorRectWidget(meeting.panel));
  QCOMPARE(helper->IsInUIRectInMeeting(point), hit);
}

void tst_QtUiMonitorHelper::hitTest_mapsNestedWidgetsToTheirWindow() {
  MeetingWindow meeting;
  // A toolbar button inside the panel: its window position is the panel's plus its own.
  auto* button = new QWidget(meeting.panel);
  button->setGeometry(5, 6, 20, 10);
  button->show();
  QTUIMonitorHelper* helper = QTUIMonitorHelper::SharedInstance();
  helper->AddMonitorRectWidget(button);
  QVERIFY(helper->IsInUIRectInMeeting(QPoint(15, 26)));
  QVERIFY(helper->IsInUIRectInMeeting(QPoint(34, 35)));
  QVERIFY(!helper->IsInUIRectInMeeting(QPoint(5, 6)));  // the button's own coordinates
  QVERIFY(!helper->IsInUIRectInMeeting(QPoint(35, 26)));
}

void tst_QtUiMonitorHelper::hiddenWidget_isNeverHit() {
  MeetingWindow meeting;
  QTUIMonitorHelper* helper = QTUIMonitorHelper::SharedInstance();
  helper->AddMonitorRectWidget(meeting.panel);
  QVERIFY(helper->IsInUIRectInMeeting(QPoint(60, 40)));
  meeting.panel->hide();
  QVERIFY(!helper->IsInUIRectInMeeting(QPoint(60, 40)));
  meeting.panel->show();
  meeting.window.hide();  // shown itself, but no longer visible with its window
  QVERIFY(!helper->IsInUIRectInMeeting(QPoint(60, 40)));
}

void tst_QtUiMonitorHelper::registeringTwice_keepsOneEntryAndAnswersTrue() {
  QWidget widget;
  QTUIMonitorHelper* helper = QTUIMonitorHelper::SharedInstance();
  QVERIFY(helper->AddMonitorRectWidget(&widget));
  QVERIFY(helper->AddMonitorRectWidget(&widget));
  QCOMPARE(helper->MonitorRectWidgets(), QSet<QObject*>{&widget});
  QVERIFY(helper->AddMonitorRectWebWidget(&widget));
  QVERIFY(helper->AddMonitorRectWebWidget(&widget));
  QCOMPARE(helper->MonitorRectWebWidgets(), QSet<QObject*>{&widget});
}

void tst_QtUiMonitorHelper::dontCreateNative_keepsTheFirstKey() {
  QWidget video;
  QWidget chat;
  QTUIMonitorHelper* helper = QTUIMonitorHelper::SharedInstance();
  QVERIFY(helper->AddMonitorDontCreateNativeWidget(&video, QStringLiteral("video tile")));
  QVERIFY(helper->AddMonitorDontCreateNativeWidget(&video, QStringLiteral("second key")));
  QVERIFY(helper->AddMonitorDontCreateNativeWidget(&chat, QString()));
  QCOMPARE(helper->DontCreateNativeWidgets().size(), 2);
  QCOMPARE(helper->DontCreateNativeWidgets().value(&video), QStringLiteral("video tile"));
  QVERIFY(helper->DontCreateNativeWidgets().contains(&chat));
  // The rectangle registries are separate.
  QVERIFY(helper->MonitorRectWidgets().isEmpty());
}

void tst_QtUiMonitorHelper::nullWidget_logsAndFails() {
  LogCapture capture(6);
  QTUIMonitorHelper* helper = QTUIMonitorHelper::SharedInstance();
  QVERIFY(!helper->AddMonitorRectWidget(nullptr));
  QVERIFY(!helper->AddMonitorRectWebWidget(nullptr));
  QSet<QObject*> own_set;
  QVERIFY(!helper->AddMonitorWidget(own_set, nullptr));
  QVERIFY(!helper->AddMonitorDontCreateNativeWidget(nullptr, QStringLiteral("key")));
  QCOMPARE(capture.Count(1, "[qt ui monitor helper] add monitor widget failed!"), 3);
  QCOMPARE(capture.Count(1, "[qt ui monitor helper] add monitor dont create native widget failed!"),
           1);
  QCOMPARE(capture.Size(), size_t(4));
  QVERIFY(own_set.isEmpty());
  QVERIFY(helper->MonitorRectWidgets().isEmpty());
  QVERIFY(helper->MonitorRectWebWidgets().isEmpty());
  QVERIFY(helper->DontCreateNativeWidgets().isEmpty());
}

void tst_QtUiMonitorHelper::destroyEvent_removesTheEntryFromEveryRegistry() {
  QWidget leaving;
  QWidget staying;
  QTUIMonitorHelper* helper = QTUIMonitorHelper::SharedInstance();
  for (QWidget* widget : {&leaving, &staying}) {
    helper->AddMonitorRectWidget(widget);
    helper->AddMonitorRectWebWidget(widget);
    helper->AddMonitorDontCreateNativeWidget(widget, QStringLiteral("key"));
  }
  // Another type does not count, only QEvent::Destroy.
  QEvent other(QEvent::User);
  QCoreApplication::sendEvent(&leaving, &other);
  QCOMPARE(helper->MonitorRectWidgets().size(), 2);

  QEvent destroy(QEvent::Destroy);
  QCoreApplication::sendEvent(&leaving, &destroy);
  QCOMPARE(helper->MonitorRectWidgets(), QSet<QObject*>{&staying});
  QCOMPARE(helper->MonitorRectWebWidgets(), QSet<QObject*>{&staying});
  QCOMPARE(helper->DontCreateNativeWidgets().keys(), QList<QObject*>{&staying});
}

void tst_QtUiMonitorHelper::widgetDeletedByItsParent_leavesTheRegistries() {
  auto meeting = std::make_unique<MeetingWindow>();
  auto* web = new QWidget(&meeting->window);
  QTUIMonitorHelper* helper = QTUIMonitorHelper::SharedInstance();
  helper->AddMonitorRectWidget(meeting->panel);
  helper->AddMonitorRectWebWidget(web);
  helper->AddMonitorDontCreateNativeWidget(meeting->panel, QStringLiteral("toolbar"));
  QWidget unrelated;
  helper->AddMonitorRectWidget(&unrelated);

  meeting.reset();  // deletes the panel and the web widget as its children
  QCOMPARE(helper->MonitorRectWidgets(), QSet<QObject*>{&unrelated});
  QVERIFY(helper->MonitorRectWebWidgets().isEmpty());
  QVERIFY(helper->DontCreateNativeWidgets().isEmpty());
  QVERIFY(!helper->IsInUIRectInMeeting(QPoint(60, 40)));
}

void tst_QtUiMonitorHelper::webHitTest_isFalseEvenOverAVisibleWebWidget() {
  MeetingWindow meeting;
  QTUIMonitorHelper* helper = QTUIMonitorHelper::SharedInstance();
  QVERIFY(helper->AddMonitorRectWebWidget(meeting.panel));
  QVERIFY(meeting.panel->isVisible());
  QVERIFY(!helper->IsInWebUIRectInMeetingWithMeetingWnd(&meeting.window, QPoint(60, 40)));
  QVERIFY(!helper->IsInWebUIRectInMeeting(&meeting.window, meeting.panel, QPoint(60, 40)));
  // The web registry is not part of the plain hit test.
  QVERIFY(!helper->IsInUIRectInMeeting(QPoint(60, 40)));
}

void tst_QtUiMonitorHelper::changeToNativeAlert_changesNothing() {
  LogCapture capture(6);
  QWidget widget;
  QTUIMonitorHelper* helper = QTUIMonitorHelper::SharedInstance();
  helper->AddMonitorDontCreateNativeWidget(&widget, QStringLiteral("video tile"));
  helper->ShowChangeToNativeWindowAlert(QStringLiteral("video tile"));
  QCOMPARE(helper->DontCreateNativeWidgets().value(&widget), QStringLiteral("video tile"));
  QCOMPARE(capture.Size(), size_t(0));
  QVERIFY(QApplication::topLevelWidgets().contains(&widget));
  QCOMPARE(QApplication::topLevelWidgets().size(), 1);  // no alert window came up
}

QTEST_MAIN(tst_QtUiMonitorHelper)
#include "tst_qt_ui_monitor_helper.moc"
