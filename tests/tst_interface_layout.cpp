// Clients compiled against an older header call the library's interfaces by vtable slot: the
// slots of every interface a client implements or calls are pinned here.
#include <QtTest>

#include "qt_util/qt_ui_custom_theme_helper.h"
#include "support/interface_order.h"

class tst_InterfaceLayout : public QObject {
  Q_OBJECT

 private slots:
  void customThemeManager_operationsKeepTheirSlots();
};

void tst_InterfaceLayout::customThemeManager_operationsKeepTheirSlots() {
  if (!test_support::kHasVirtualSlots) QSKIP("vtable layout unknown on this target");
  using test_support::VirtualSlot;
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
  // Slots 0 and 1 hold the two destructor entries: the destructor is declared first.
  QList<int> expected;
  for (int slot = 2; slot < 12; ++slot) expected << slot;
  QCOMPARE(actual, expected);
}

QTEST_MAIN(tst_InterfaceLayout)
#include "tst_interface_layout.moc"
