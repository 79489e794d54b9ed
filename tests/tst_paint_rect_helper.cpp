// The helper reads the top-level window's state only through Qt (QWidget::isMinimized,
// isHidden, isActiveWindow) and learns of changes through the QEvent::WindowStateChange,
// WindowActivate and WindowDeactivate events Qt delivers to the window. Qt delivers the same
// state and events whether the client or a window manager minimises or activates the window, so
// the offscreen platform, which keeps the states Qt asks for, exercises exactly the paths a real
// window manager would; an X server without a window manager would minimise nothing at all.
#include <QtCore/private/qobject_p.h>

#include <QApplication>
#include <QMouseEvent>
#include <QPointer>
#include <QRandomGenerator>
#include <QTimer>
#include <QWidget>
#include <QtTest>
#include <algorithm>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

#include "qt_util/custom_event_util.h"
#include "qt_util/paint_rect_helper.h"
#include "support/paint_rect_meeting.h"

namespace {

using Report = test_support::PaintReport;
using Recorder = test_support::PaintRecorder;

struct Meeting : test_support::MeetingTile {
  // Shows and activates the window; false when the platform did not activate it.
  bool ShowActive() {
    window->show();
    if (!QTest::qWaitForWindowExposed(window.get())) return false;
    window->activateWindow();
    return QTest::qWaitForWindowActive(window.get());
  }
};

// A shown, active meeting whose tile is bound to a recording helper.
struct BoundMeeting : Meeting {
  Recorder recorder;
  QTPaintRectHelper helper;

  // False when the window could not be activated; then nothing is bound.
  bool Start(QTPaintRectHelper::BindType type) {
    if (!ShowActive()) return false;
    helper.BindWidget(tile, recorder.Callback(), type);
    return true;
  }
};

QRect GlobalRect(const QWidget* widget) {
  return QRect(widget->mapToGlobal(QPoint(0, 0)), widget->size());
}

bool HasEventFilter(QObject* target, const QObject* filter) {
  const QObjectPrivate* d = QObjectPrivate::get(target);
  if (!d->extraData) return false;
  for (const QPointer<QObject>& entry : d->extraData->eventFilters) {
    if (entry == filter) return true;
  }
  return false;
}

int LiveEventFilterCount(QObject* target) {
  const QObjectPrivate* d = QObjectPrivate::get(target);
  if (!d->extraData) return 0;
  int count = 0;
  for (const QPointer<QObject>& entry : d->extraData->eventFilters) count += !entry.isNull();
  return count;
}

void SendCustom(QObject* receiver, QEvent::Type type) {
  QEvent event(type);
  QCoreApplication::sendEvent(receiver, &event);
}

void SendLeftPress(QWidget* widget) {
  QMouseEvent press(QEvent::MouseButtonPress, QPointF(2, 2), widget->mapToGlobal(QPoint(2, 2)),
                    Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(widget, &press);
}

constexpr auto kDefault = QTPaintRectHelper::BindType(QTPaintRectHelper::CheckParentVisible |
                                                      QTPaintRectHelper::CheckTopWindowState);
constexpr auto kAllRules = kDefault | QTPaintRectHelper::HideOnMousePress;

}  // namespace

class tst_PaintRectHelper : public QObject {
  Q_OBJECT

 private slots:
  void bindInActiveWindow_reportsVisibleOnceWithGlobalRect();
  void recomputeWithNothingChanged_callsNothing();
  void topLevelMove_reportsTheNewRectWithTheSameFlag();
  void ancestorMove_reportsTheNewGlobalRect();
  void ancestorResizeAlone_recomputesNothing_boundWidgetResize_does();
  void minimised_withTopWindowState_isNotVisible();
  void minimised_withoutTopWindowState_followsIsHiddenOnly();
  void hiddenAncestor_withParentRule_isNotVisible();
  void inactiveWindow_isNotVisibleOnLinux();
  void mousePressInTheSameWindow_withType7_isNotVisibleUntilTheNextMove();
  void mousePressInAnotherWindow_changesNothing();
  void nativeMouseDown_recomputes();
  void noNativeWindow_reportsFalseWithAnEmptyRectAtTheOrigin();
  void applicationDeactivation_recomputesAfter100And200ms_notAtOnce();
  void applicationDeactivation_withoutTopWindowState_recomputesNothing();
  void rebinding_reportsTheOldWidgetFalseFirst();
  void formerlyBoundWidgetDestroyed_leavesTheCurrentBinding();
  void reparenting_movesTheFiltersToTheNewAncestorChain();
  void emptyCallback_computesNothing();
  void unbind_givesNoFinalCallbackAndRemovesEveryFilter();
  void destroyedAncestor_leavesTheWatchedList();
  void boundWidgetDestroyed_reportsFalseOnce();
  void helperDestroyedWhileBound_leavesNoFilterOrTimer();
  void resetData_reportsTheSameStateAgain();
  void fiftyHelpers_boundAndUnboundInRandomOrder();
};

void tst_PaintRectHelper::bindInActiveWindow_reportsVisibleOnceWithGlobalRect() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(kDefault));
  QCOMPARE(meeting.recorder.Count(), 1);
  QCOMPARE(meeting.recorder.Last().widget, meeting.tile);
  QVERIFY(meeting.recorder.Last().visible);
  QCOMPARE(meeting.recorder.Last().rect, GlobalRect(meeting.tile));
  QCOMPARE(meeting.recorder.Last().rect.size(), QSize(160, 90));
  QVERIFY(meeting.helper.EverVisible());
}

void tst_PaintRectHelper::recomputeWithNothingChanged_callsNothing() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(kDefault));
  meeting.helper.ReUpdate();
  meeting.helper.NotifyPaintRectChanged(QEvent::None);
  meeting.tile->show();  // already shown: no event, no change
  QCOMPARE(meeting.recorder.Count(), 1);
}

void tst_PaintRectHelper::topLevelMove_reportsTheNewRectWithTheSameFlag() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(kDefault));
  const QRect before = meeting.recorder.Last().rect;
  meeting.window->move(meeting.window->pos() + QPoint(37, 21));
  QTRY_COMPARE(meeting.recorder.Count(), 2);
  QVERIFY(meeting.recorder.Last().visible);
  QCOMPARE(meeting.recorder.Last().rect, before.translated(37, 21));
  QCOMPARE(meeting.recorder.Last().rect, GlobalRect(meeting.tile));
}

void tst_PaintRectHelper::ancestorMove_reportsTheNewGlobalRect() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(kDefault));
  const QRect before = meeting.recorder.Last().rect;
  meeting.panel->move(meeting.panel->pos() + QPoint(-7, 12));
  QCOMPARE(meeting.recorder.Count(), 2);
  QVERIFY(meeting.recorder.Last().visible);
  QCOMPARE(meeting.recorder.Last().rect, before.translated(-7, 12));
}

void tst_PaintRectHelper::ancestorResizeAlone_recomputesNothing_boundWidgetResize_does() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(kDefault));
  // Forgetting the last report makes any recomputation report, so none may happen here.
  meeting.helper.ResetData();
  meeting.panel->resize(meeting.panel->size() + QSize(30, 20));
  QCOMPARE(meeting.recorder.Count(), 1);

  meeting.tile->resize(200, 120);
  QCOMPARE(meeting.recorder.Count(), 2);
  QVERIFY(meeting.recorder.Last().visible);
  QCOMPARE(meeting.recorder.Last().rect, GlobalRect(meeting.tile));
  QCOMPARE(meeting.recorder.Last().rect.size(), QSize(200, 120));
}

void tst_PaintRectHelper::minimised_withTopWindowState_isNotVisible() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(QTPaintRectHelper::CheckTopWindowState));
  QVERIFY(meeting.recorder.Last().visible);
  meeting.window->showMinimized();
  QTRY_COMPARE(meeting.recorder.Count(), 2);
  QVERIFY(!meeting.recorder.Last().visible);
  QCOMPARE(meeting.recorder.Last().rect, GlobalRect(meeting.tile));
}

void tst_PaintRectHelper::minimised_withoutTopWindowState_followsIsHiddenOnly() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(QTPaintRectHelper::BindType(0)));
  QVERIFY(meeting.recorder.Last().visible);
  meeting.window->showMinimized();
  QTRY_VERIFY(meeting.window->isMinimized());
  meeting.panel->hide();  // an ancestor does not count without CheckParentVisible
  QCOMPARE(meeting.recorder.Count(), 1);
  meeting.panel->show();
  QCOMPARE(meeting.recorder.Count(), 1);

  meeting.tile->hide();
  QCOMPARE(meeting.recorder.Count(), 2);
  QVERIFY(!meeting.recorder.Last().visible);
  meeting.tile->show();
  QCOMPARE(meeting.recorder.Count(), 3);
  QVERIFY(meeting.recorder.Last().visible);
}

void tst_PaintRectHelper::hiddenAncestor_withParentRule_isNotVisible() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(QTPaintRectHelper::CheckParentVisible));
  meeting.panel->hide();
  QCOMPARE(meeting.recorder.Count(), 2);
  QVERIFY(!meeting.recorder.Last().visible);
  meeting.panel->show();
  QCOMPARE(meeting.recorder.Count(), 3);
  QVERIFY(meeting.recorder.Last().visible);
}

void tst_PaintRectHelper::inactiveWindow_isNotVisibleOnLinux() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(kDefault));
  QVERIFY(meeting.recorder.Last().visible);

  QWidget other;
  other.setGeometry(900, 80, 100, 100);
  other.show();
  QVERIFY(QTest::qWaitForWindowExposed(&other));
  other.activateWindow();
  QVERIFY(QTest::qWaitForWindowActive(&other));
  // No native point is inside a window on Linux, so an inactive window hides its tiles.
  QTRY_COMPARE(meeting.recorder.Count(), 2);
  QVERIFY(!meeting.recorder.Last().visible);
  QCOMPARE(meeting.recorder.Last().rect, GlobalRect(meeting.tile));

  meeting.window->activateWindow();
  QVERIFY(QTest::qWaitForWindowActive(meeting.window.get()));
  QTRY_COMPARE(meeting.recorder.Count(), 3);
  QVERIFY(meeting.recorder.Last().visible);
}

void tst_PaintRectHelper::mousePressInTheSameWindow_withType7_isNotVisibleUntilTheNextMove() {
  Meeting meeting;
  auto* toolbar = new QWidget(meeting.window.get());
  toolbar->setGeometry(0, 440, 640, 40);
  QVERIFY(meeting.ShowActive());
  Recorder recorder;
  QTPaintRectHelper helper;
  helper.BindWidget(meeting.tile, recorder.Callback(), kAllRules);
  QVERIFY(recorder.Last().visible);

  SendLeftPress(toolbar);  // not watched: the same top-level window is what counts
  QCOMPARE(recorder.Count(), 2);
  QVERIFY(!recorder.Last().visible);
  QCOMPARE(recorder.Last().rect, GlobalRect(meeting.tile));

  meeting.panel->move(meeting.panel->pos() + QPoint(1, 0));
  QCOMPARE(recorder.Count(), 3);
  QVERIFY(recorder.Last().visible);

  SendLeftPress(meeting.tile);  // a watched object
  QCOMPARE(recorder.Count(), 4);
  QVERIFY(!recorder.Last().visible);
  meeting.tile->hide();
  meeting.tile->show();
  QVERIFY(recorder.Last().visible);
}

void tst_PaintRectHelper::mousePressInAnotherWindow_changesNothing() {
  Meeting meeting;
  QVERIFY(meeting.ShowActive());
  QWidget chat;  // another top-level window, never shown: the press is all it gets
  Recorder recorder;
  QTPaintRectHelper helper;
  helper.BindWidget(meeting.tile, recorder.Callback(), kAllRules);
  SendLeftPress(&chat);
  QCOMPARE(recorder.Count(), 1);

  // Without HideOnMousePress a press in the window itself changes nothing either.
  QTPaintRectHelper plain;
  Recorder plain_recorder;
  plain.BindWidget(meeting.tile, plain_recorder.Callback(), kDefault);
  SendLeftPress(meeting.panel);
  QCOMPARE(plain_recorder.Count(), 1);
  QCOMPARE(recorder.Count(), 2);  // the type-7 helper did see it
  QVERIFY(!recorder.Last().visible);
}

void tst_PaintRectHelper::nativeMouseDown_recomputes() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(kAllRules));
  SendLeftPress(meeting.panel);
  QVERIFY(!meeting.recorder.Last().visible);

  // A native mouse-down anywhere recomputes without the press as its cause.
  QObject platform_layer;
  SendCustom(&platform_layer, NativeMouseDownEvent::QEventType());
  QCOMPARE(meeting.recorder.Count(), 3);
  QVERIFY(meeting.recorder.Last().visible);

  // Without CheckTopWindowState it is ignored.
  Recorder parent_only;
  QTPaintRectHelper other;
  other.BindWidget(meeting.tile, parent_only.Callback(), QTPaintRectHelper::CheckParentVisible);
  other.ResetData();
  SendCustom(&platform_layer, NativeMouseDownEvent::QEventType());
  QCOMPARE(parent_only.Count(), 1);
}

void tst_PaintRectHelper::noNativeWindow_reportsFalseWithAnEmptyRectAtTheOrigin() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(kDefault));
  QVERIFY(meeting.recorder.Last().visible);

  // Into a window that was never shown, so has no native window yet.
  QWidget unshown;
  unshown.resize(300, 200);
  QCOMPARE(unshown.effectiveWinId(), WId(0));
  meeting.tile->setParent(&unshown);
  meeting.tile->show();
  QCOMPARE(meeting.recorder.Last().widget, meeting.tile);
  QVERIFY(!meeting.recorder.Last().visible);
  QCOMPARE(meeting.recorder.Last().rect, QRect(0, 0, 0, 0));
  QCOMPARE(meeting.recorder.Last().rect.topLeft(), QPoint(0, 0));

  // A fresh binding there finds what a fresh meeting.helper starts from: nothing to report.
  Recorder fresh;
  QTPaintRectHelper second;
  second.BindWidget(meeting.tile, fresh.Callback(), kDefault);
  QCOMPARE(fresh.Count(), 0);
  QVERIFY(!second.EverVisible());
}

void tst_PaintRectHelper::applicationDeactivation_recomputesAfter100And200ms_notAtOnce() {
  Meeting meeting;
  QVERIFY(meeting.ShowActive());
  std::vector<bool> flags;
  QTPaintRectHelper helper;
  // Forgetting each report makes every recomputation report, so each one can be counted.
  helper.BindWidget(
      meeting.tile,
      [&](QWidget*, bool visible, QRect) {
        flags.push_back(visible);
        helper.ResetData();
      },
      kDefault);
  QCOMPARE(flags, std::vector<bool>{true});

  QObject application_layer;
  bool settled = false;
  SendCustom(&application_layer, ApplicationDeactiveEvent::QEventType());
  QTimer::singleShot(300, this, [&settled] { settled = true; });
  QCOMPARE(flags.size(), size_t(1));  // the window system has not settled yet
  QTRY_COMPARE_WITH_TIMEOUT(flags.size(), size_t(2), 2000);
  QTRY_COMPARE_WITH_TIMEOUT(flags.size(), size_t(3), 2000);
  // Both looks treat the window as deactivated, whose tiles are not visible on Linux.
  QCOMPARE(flags, (std::vector<bool>{true, false, false}));
  QTRY_VERIFY_WITH_TIMEOUT(settled, 2000);
  QCOMPARE(flags.size(), size_t(3));
}

void tst_PaintRectHelper::applicationDeactivation_withoutTopWindowState_recomputesNothing() {
  Meeting meeting;
  QVERIFY(meeting.ShowActive());
  int calls = 0;
  QTPaintRectHelper helper;
  helper.BindWidget(
      meeting.tile,
      [&](QWidget*, bool, QRect) {
        ++calls;
        helper.ResetData();
      },
      QTPaintRectHelper::CheckParentVisible);
  QCOMPARE(calls, 1);
  QObject application_layer;
  bool settled = false;
  SendCustom(&application_layer, ApplicationDeactiveEvent::QEventType());
  QTimer::singleShot(300, this, [&settled] { settled = true; });
  QTRY_VERIFY_WITH_TIMEOUT(settled, 2000);
  QCOMPARE(calls, 1);

  // Sent to a watched object, the deactivation is not a foreign event and starts nothing even
  // with CheckTopWindowState.
  helper.BindWidget(
      meeting.tile,
      [&](QWidget*, bool, QRect) {
        ++calls;
        helper.ResetData();
      },
      kDefault);
  const int bound = calls;
  settled = false;
  SendCustom(meeting.panel, ApplicationDeactiveEvent::QEventType());
  QTimer::singleShot(300, this, [&settled] { settled = true; });
  QTRY_VERIFY_WITH_TIMEOUT(settled, 2000);
  QCOMPARE(calls, bound);
}

void tst_PaintRectHelper::rebinding_reportsTheOldWidgetFalseFirst() {
  Meeting meeting;
  auto* second_tile = new QWidget(meeting.panel);
  second_tile->setGeometry(200, 6, 160, 90);
  QVERIFY(meeting.ShowActive());
  Recorder first;
  Recorder second;
  QTPaintRectHelper helper;
  helper.BindWidget(meeting.tile, first.Callback(), kDefault);
  QVERIFY(helper.EverVisible());
  helper.BindWidget(second_tile, second.Callback(), kDefault);

  // The old callback hears of the old widget; the new one of the new widget.
  QCOMPARE(first.Count(), 2);
  QCOMPARE(first.Last().widget, meeting.tile);
  QVERIFY(!first.Last().visible);
  QCOMPARE(first.Last().rect, QRect(0, 0, 0, 0));
  QCOMPARE(second.Count(), 1);
  QCOMPARE(second.Last().widget, second_tile);
  QVERIFY(second.Last().visible);
  QCOMPARE(second.Last().rect, GlobalRect(second_tile));

  // The old widget is no longer watched: its own resize reports nothing.
  meeting.tile->resize(10, 10);
  QCOMPARE(first.Count(), 2);
  QCOMPARE(second.Count(), 1);
}

void tst_PaintRectHelper::formerlyBoundWidgetDestroyed_leavesTheCurrentBinding() {
  Meeting meeting;
  auto* second_tile = new QWidget(meeting.panel);
  second_tile->setGeometry(200, 6, 160, 90);
  QVERIFY(meeting.ShowActive());
  Recorder recorder;
  QTPaintRectHelper helper;
  helper.BindWidget(meeting.tile, recorder.Callback(), kDefault);
  helper.BindWidget(second_tile, recorder.Callback(), kDefault);
  QCOMPARE(recorder.Count(), 3);
  delete meeting.tile;
  QCOMPARE(recorder.Count(), 3);
  second_tile->move(second_tile->pos() + QPoint(0, 10));
  QCOMPARE(recorder.Count(), 4);
  QCOMPARE(recorder.Last().widget, second_tile);
  QVERIFY(recorder.Last().visible);
}

void tst_PaintRectHelper::reparenting_movesTheFiltersToTheNewAncestorChain() {
  Meeting first;
  Meeting second;
  second.window->move(800, 80);
  QVERIFY(first.ShowActive());
  QVERIFY(second.ShowActive());
  Recorder recorder;
  QTPaintRectHelper helper;
  QWidget* tile = first.tile;
  helper.BindWidget(tile, recorder.Callback(), kDefault);
  QVERIFY(HasEventFilter(first.panel, &helper));
  QVERIFY(HasEventFilter(first.window.get(), &helper));

  tile->setParent(second.panel);
  tile->move(40, 40);
  tile->show();
  QVERIFY(HasEventFilter(tile, &helper));
  QVERIFY(HasEventFilter(second.panel, &helper));
  QVERIFY(HasEventFilter(second.window.get(), &helper));
  QVERIFY(!HasEventFilter(first.panel, &helper));
  QVERIFY(!HasEventFilter(first.window.get(), &helper));
  QVERIFY(HasEventFilter(qApp, &helper));
  QCOMPARE(helper.WatchedObjects(),
           (QList<QPointer<QObject>>{tile, second.panel, second.window.get()}));
  QVERIFY(recorder.Last().visible);
  QCOMPARE(recorder.Last().rect, GlobalRect(tile));

  // The old window no longer concerns the tile; the new one does.
  const int reports = recorder.Count();
  first.panel->move(first.panel->pos() + QPoint(9, 9));
  QCOMPARE(recorder.Count(), reports);
  second.panel->move(second.panel->pos() + QPoint(9, 9));
  QCOMPARE(recorder.Count(), reports + 1);
  QCOMPARE(recorder.Last().rect, GlobalRect(tile));
}

void tst_PaintRectHelper::emptyCallback_computesNothing() {
  Meeting meeting;
  QVERIFY(meeting.ShowActive());
  QTPaintRectHelper helper;
  helper.BindWidget(meeting.tile, {}, kDefault);
  helper.ReUpdate();
  meeting.panel->move(meeting.panel->pos() + QPoint(3, 3));
  // A computation would have found the tile visible.
  QVERIFY(!helper.EverVisible());
  // The binding itself is made: the filters are in place.
  QVERIFY(HasEventFilter(meeting.tile, &helper));
}

void tst_PaintRectHelper::unbind_givesNoFinalCallbackAndRemovesEveryFilter() {
  Meeting meeting;
  QVERIFY(meeting.ShowActive());
  Recorder recorder;
  QTPaintRectHelper helper;
  const int application_filters = LiveEventFilterCount(qApp);
  helper.BindWidget(meeting.tile, recorder.Callback(), kDefault);
  QVERIFY(HasEventFilter(qApp, &helper));
  QCOMPARE(helper.WatchedObjects().size(), 3);

  helper.UnbindWidget();
  QCOMPARE(recorder.Count(), 1);
  QVERIFY(!HasEventFilter(qApp, &helper));
  QVERIFY(!HasEventFilter(meeting.tile, &helper));
  QVERIFY(!HasEventFilter(meeting.panel, &helper));
  QVERIFY(!HasEventFilter(meeting.window.get(), &helper));
  QCOMPARE(LiveEventFilterCount(qApp), application_filters);
  QVERIFY(helper.WatchedObjects().isEmpty());

  helper.ReUpdate();
  meeting.panel->hide();
  delete meeting.tile;
  QCOMPARE(recorder.Count(), 1);
}

void tst_PaintRectHelper::destroyedAncestor_leavesTheWatchedList() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(kDefault));
  QCOMPARE(meeting.helper.WatchedObjects().size(), 3);

  // Connected after the meeting.helper's own handler, so it runs after it: the panel is gone from
  // the list while its children, the tile among them, still exist.
  int watched_when_panel_died = -1;
  bool panel_listed = true;
  connect(meeting.panel, &QObject::destroyed, this, [&](QObject* panel) {
    watched_when_panel_died = meeting.helper.WatchedObjects().size();
    panel_listed = false;
    for (const QPointer<QObject>& entry : meeting.helper.WatchedObjects()) {
      panel_listed = panel_listed || entry.data() == panel;
    }
  });
  delete meeting.panel;
  QCOMPARE(watched_when_panel_died, 2);
  QVERIFY(!panel_listed);
  // Then the tile died with it and was reported.
  QCOMPARE(meeting.recorder.Last().widget, meeting.tile);
  QVERIFY(!meeting.recorder.Last().visible);
  QVERIFY(meeting.helper.WatchedObjects().isEmpty());
  QVERIFY(!HasEventFilter(meeting.window.get(), &meeting.helper));
}

void tst_PaintRectHelper::boundWidgetDestroyed_reportsFalseOnce() {
  Meeting meeting;
  QVERIFY(meeting.ShowActive());
  Recorder recorder;
  QTPaintRectHelper helper;
  QWidget* tile = meeting.tile;
  helper.BindWidget(tile, recorder.Callback(), kDefault);
  // Bound twice to the same widget: still one report when it dies.
  helper.BindWidget(tile, recorder.Callback(), kDefault);
  const int before = recorder.Count();
  delete tile;
  QCOMPARE(recorder.Count(), before + 1);
  QCOMPARE(recorder.Last().widget, tile);
  QVERIFY(!recorder.Last().visible);
  QCOMPARE(recorder.Last().rect, QRect(0, 0, 0, 0));
  QVERIFY(!HasEventFilter(qApp, &helper));
  QVERIFY(!HasEventFilter(meeting.panel, &helper));

  helper.ReUpdate();
  meeting.window->move(meeting.window->pos() + QPoint(5, 5));
  QCoreApplication::processEvents();
  QCOMPARE(recorder.Count(), before + 1);
}

void tst_PaintRectHelper::helperDestroyedWhileBound_leavesNoFilterOrTimer() {
  Meeting meeting;
  QVERIFY(meeting.ShowActive());
  Recorder recorder;
  const int application_filters = LiveEventFilterCount(qApp);
  auto helper = std::make_unique<QTPaintRectHelper>();
  helper->BindWidget(meeting.tile, recorder.Callback(), kAllRules);
  // Two deactivation looks are pending when the helper goes.
  QObject application_layer;
  SendCustom(&application_layer, ApplicationDeactiveEvent::QEventType());
  helper.reset();
  QCOMPARE(LiveEventFilterCount(qApp), application_filters);
  QCOMPARE(LiveEventFilterCount(meeting.tile), 0);
  QCOMPARE(LiveEventFilterCount(meeting.panel), 0);
  QCOMPARE(LiveEventFilterCount(meeting.window.get()), 0);

  // Events and the deactivation looks after the helper is gone reach nothing (ASan watches).
  bool settled = false;
  QTimer::singleShot(300, this, [&settled] { settled = true; });
  meeting.window->move(meeting.window->pos() + QPoint(5, 5));
  SendLeftPress(meeting.panel);
  QTRY_VERIFY_WITH_TIMEOUT(settled, 2000);
  meeting.window.reset();
  QCOMPARE(recorder.Count(), 1);
}

void tst_PaintRectHelper::resetData_reportsTheSameStateAgain() {
  BoundMeeting meeting;
  QVERIFY(meeting.Start(kDefault));
  QVERIFY(meeting.helper.EverVisible());
  meeting.helper.ResetData();
  QVERIFY(!meeting.helper.EverVisible());
  meeting.helper.ReUpdate();
  QCOMPARE(meeting.recorder.Count(), 2);
  QVERIFY(meeting.recorder.Last().visible);
  QCOMPARE(meeting.recorder.Last().rect, meeting.recorder.reports.front().rect);
  QVERIFY(meeting.helper.EverVisible());
}

void tst_PaintRectHelper::fiftyHelpers_boundAndUnboundInRandomOrder() {
  Meeting meeting;
  std::vector<QWidget*> tiles;
  for (int i = 0; i < 10; ++i) {
    auto* tile = new QWidget(meeting.panel);
    tile->setGeometry(10 + 30 * i, 120, 28, 20);
    tiles.push_back(tile);
  }
  QVERIFY(meeting.ShowActive());
  const int application_filters = LiveEventFilterCount(qApp);

  QRandomGenerator random(14);
  std::vector<std::unique_ptr<QTPaintRectHelper>> helpers;
  std::vector<Recorder> recorders(50);
  const QTPaintRectHelper::BindType types[] = {
      QTPaintRectHelper::BindType(0), QTPaintRectHelper::CheckParentVisible, kDefault, kAllRules};
  for (int i = 0; i < 50; ++i) {
    helpers.push_back(std::make_unique<QTPaintRectHelper>());
    QWidget* tile = tiles[random.bounded(int(tiles.size()))];
    helpers.back()->BindWidget(tile, recorders[i].Callback(), types[random.bounded(4)]);
    QCOMPARE(recorders[i].Count(), 1);
    QCOMPARE(recorders[i].Last().widget, tile);
    QCOMPARE(recorders[i].Last().rect, GlobalRect(tile));
  }
  QCOMPARE(LiveEventFilterCount(qApp), application_filters + 50);

  // Unbind, rebind elsewhere or delete, in random order, with the window moving in between.
  std::vector<int> order(50);
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), std::mt19937(14));
  for (int step = 0; step < 50; ++step) {
    const int i = order[step];
    const int reports = recorders[i].Count();
    switch (random.bounded(3)) {
      case 0:
        helpers[i]->UnbindWidget();
        QCOMPARE(recorders[i].Count(), reports);
        break;
      case 1: {
        QWidget* tile = tiles[random.bounded(int(tiles.size()))];
        helpers[i]->BindWidget(tile, recorders[i].Callback(), kDefault);
        QCOMPARE(recorders[i].Last().widget, tile);
        QVERIFY(recorders[i].Last().visible);
        helpers[i]->UnbindWidget();
        break;
      }
      default:
        helpers[i].reset();
        break;
    }
    if (step % 10 == 0) {
      delete tiles.back();  // the helpers still bound to it report it gone
      tiles.pop_back();
      meeting.panel->move(meeting.panel->pos() + QPoint(1, 1));
    }
  }
  QCOMPARE(LiveEventFilterCount(qApp), application_filters);
  for (QWidget* tile : tiles) QCOMPARE(LiveEventFilterCount(tile), 0);
  QCOMPARE(LiveEventFilterCount(meeting.panel), 0);
  // Every report named a tile that existed and never claimed visibility with an empty rect.
  for (const Recorder& recorder : recorders) {
    for (const Report& report : recorder.reports) {
      QVERIFY(report.widget);
      QVERIFY(!report.visible || !report.rect.isEmpty());
    }
  }
}

QTEST_MAIN(tst_PaintRectHelper)
#include "tst_paint_rect_helper.moc"
