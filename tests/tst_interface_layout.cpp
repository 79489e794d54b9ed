// The binary layout of the library's own interfaces. Clients compiled against an older header
// call virtual functions by vtable slot, and resolve signals (queued and string-based
// connections) by index: reordering a declaration breaks them without a compile error.
// One test function per interface.
#include <QtTest>

#include "qt_util/event_handler/monitor_event_observer.h"
#include "qt_util/event_handler/screen_observer.h"
#include "qt_util/event_handler/session_event_observer.h"
#include "qt_util/event_handler/window_status_extend.h"
#include "qt_util/html_parser.h"
#include "qt_util/qt_ui_custom_theme_helper.h"
#include "support/interface_order.h"

using test_support::DeclaredSignals;
using test_support::VirtualSlot;

class tst_InterfaceLayout : public QObject {
  Q_OBJECT

 private slots:
  void windowStatusExtend_notificationSlots();
  void parserOut_operationSlots();
  void screenObserver_signals();
  void monitorEventObserver_signals();
  void sessionEventObserver_signals();
  void customThemeManager_operationSlots();
};

// Platform layers elsewhere override these by slot; did-leave sits before did-enter, unlike the
// will pair, and must stay there.
void tst_InterfaceLayout::windowStatusExtend_notificationSlots() {
  if (!test_support::kHasVirtualSlots) QSKIP("vtable layout not readable on this target");
  // Slots 0 and 1 are the complete and the deleting destructor.
  QCOMPARE(VirtualSlot(&WindowStatusExtend::WindowWillEnterFullScreen), 2);
  QCOMPARE(VirtualSlot(&WindowStatusExtend::WindowWillLeaveFullScreen), 3);
  QCOMPARE(VirtualSlot(&WindowStatusExtend::WindowDidLeaveFullScreen), 4);
  QCOMPARE(VirtualSlot(&WindowStatusExtend::WindowDidEnterFullScreen), 5);
  QCOMPARE(VirtualSlot(&WindowStatusExtend::WindowDidResize), 6);
  QCOMPARE(VirtualSlot(&WindowStatusExtend::WindowDidBecomeKey), 7);
  QCOMPARE(VirtualSlot(&WindowStatusExtend::WindowDidResignKey), 8);
  // The rest of the interface is not virtual.
  QCOMPARE(VirtualSlot(&WindowStatusExtend::IsFullScreen), -1);
  QCOMPARE(VirtualSlot(&WindowStatusExtend::LeaveFullScreen), -1);
  QCOMPARE(VirtualSlot(&WindowStatusExtend::SetObserverWidget), -1);
}

// Client sinks are called by slot, in the order of the header.
void tst_InterfaceLayout::parserOut_operationSlots() {
  if (!test_support::kHasVirtualSlots) QSKIP("vtable layout not readable on this target");
  const QList<int> actual{
      VirtualSlot(&CParserOut::BeginBulletList), VirtualSlot(&CParserOut::EndBulletList),
      VirtualSlot(&CParserOut::BulletItem),      VirtualSlot(&CParserOut::NumberedItem),
      VirtualSlot(&CParserOut::EndNumberedList), VirtualSlot(&CParserOut::SetAlignment),
      VirtualSlot(&CParserOut::NewParagraph),    VirtualSlot(&CParserOut::ResetParagraph),
      VirtualSlot(&CParserOut::LineBreak),       VirtualSlot(&CParserOut::BeginRow),
      VirtualSlot(&CParserOut::EndRow),          VirtualSlot(&CParserOut::BeginCell),
      VirtualSlot(&CParserOut::EndCell),         VirtualSlot(&CParserOut::AddColumn),
      VirtualSlot(&CParserOut::Reserved),        VirtualSlot(&CParserOut::WriteText),
      VirtualSlot(&CParserOut::InsertImage),     VirtualSlot(&CParserOut::InsertObject)};
  // After the two destructor entries, one slot each, without gaps.
  QList<int> expected;
  for (int slot = 2; slot < 20; ++slot) expected << slot;
  QCOMPARE(actual, expected);
}

void tst_InterfaceLayout::screenObserver_signals() {
  QCOMPARE(DeclaredSignals(QtScreenObserver::staticMetaObject),
           (QStringList{"OnScreenGeometryChanged(QScreen*,QRect)",
                        "OnPrimaryScreenChanged(QScreen*)", "OnScreenListChanged()"}));
}

void tst_InterfaceLayout::monitorEventObserver_signals() {
  QCOMPARE(DeclaredSignals(MonitorEventObserver::staticMetaObject),
           (QStringList{"NotifyDisplayChange()", "NotifyDpiChanged()",
                        "NotifySettingWorkAreaChange()"}));
}

void tst_InterfaceLayout::sessionEventObserver_signals() {
  QCOMPARE(DeclaredSignals(SessionEventObserver::staticMetaObject),
           QStringList{"NotifySessionChange(bool)"});
}

// The client's theme engine implements these; the destructor is declared first.
void tst_InterfaceLayout::customThemeManager_operationSlots() {
  if (!test_support::kHasVirtualSlots) QSKIP("vtable layout not readable on this target");
  const QList<int> actual{VirtualSlot(&ICustomThemeManager::CurrentThemeType),
                          VirtualSlot(&ICustomThemeManager::GetThemeColorStr),
                          VirtualSlot(&ICustomThemeManager::GetThemeColor),
                          VirtualSlot(&ICustomThemeManager::GetThemeColorWithReplaceAlpha),
                          VirtualSlot(&ICustomThemeManager::InstallAppThemeEventFilter),
                          VirtualSlot(&ICustomThemeManager::GetThemeQColor),
                          VirtualSlot(&ICustomThemeManager::GetCurrentThemeResPath),
                          VirtualSlot(&ICustomThemeManager::IsCurrentDarkType),
                          VirtualSlot(&ICustomThemeManager::CheckThemeColorTokenValid),
                          VirtualSlot(&ICustomThemeManager::CheckSetupQss)};
  // After the two destructor entries, one slot each, without gaps.
  QList<int> expected;
  for (int slot = 2; slot < 12; ++slot) expected << slot;
  QCOMPARE(actual, expected);
}

QTEST_MAIN(tst_InterfaceLayout)
#include "tst_interface_layout.moc"
