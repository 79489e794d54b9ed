// The window-system calls on a platform other than X11 (offscreen, Wayland): they change
// nothing, and they open no X connection even though DISPLAY names an X server, as it does in a
// Wayland session that also runs XWayland. The display here is a trap that counts connections.
#include <QApplication>
#include <QWidget>
#include <QWindow>
#include <QtTest>
#include <memory>

#include "qt_util/ui_util_window.h"
#include "support/x11_display_trap.h"
#include "x_utils/x_utils.h"

class tst_XUtilsOtherPlatforms : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase() {
    QVERIFY(QGuiApplication::platformName() != QStringLiteral("xcb"));
    QVERIFY2(!CurrentX11DisplayTrap()->display().isEmpty(), "no socket for the trap display");
    QCOMPARE(qgetenv("DISPLAY"), CurrentX11DisplayTrap()->display());
  }

  // Each function ends with the proof that nothing talked to the X display.
  void cleanup() { QCOMPARE(CurrentX11DisplayTrap()->connections(), 0); }

  void setStayOnTop_isAHarmlessNoOp() {
    QWidget shown;
    shown.show();
    QVERIFY(QTest::qWaitForWindowExposed(&shown));
    const Qt::WindowFlags flags = shown.windowFlags();
    x_utils::SetStayOnTop(&shown, true);
    QCOMPARE(shown.windowFlags(), flags);
    QCOMPARE(shown.windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint), false);
    QVERIFY(shown.isVisible());

    // On X11 a hidden window gets the hint instead; elsewhere nothing at all happens.
    QWidget hidden;
    x_utils::SetStayOnTop(&hidden, true);
    QVERIFY(!hidden.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QVERIFY(!hidden.testAttribute(Qt::WA_WState_Created));  // no native window was made
    x_utils::SetStayOnTop(nullptr, false);
  }

  void setWindowInputFocus_isAHarmlessNoOp() {
    QWidget hidden;
    x_utils::SetWindowInputFocus(&hidden);
    QVERIFY(!hidden.testAttribute(Qt::WA_WState_Created));
    QVERIFY(!hidden.isVisible());
    QWidget shown;
    shown.show();
    QVERIFY(QTest::qWaitForWindowExposed(&shown));
    x_utils::SetWindowInputFocus(&shown);
    x_utils::SetWindowInputFocus(nullptr);
    QVERIFY(shown.isVisible());
  }

  void flushRequests_isAHarmlessNoOp() {
    x_utils::FlushRequests();
    QWidget shown;
    shown.show();
    QVERIFY(QTest::qWaitForWindowExposed(&shown));
    x_utils::FlushRequests();
    QVERIFY(shown.isVisible());
  }

  // The window operations built on them keep their Qt part and skip the X part.
  void windowOperations_openNoXConnection() {
    QWidget window;
    window.resize(200, 120);
    VxQtUiUtil::ShowWindow(&window, true);
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    VxQtUiUtil::SetupTopMost(&window, true, true);
    QVERIFY(window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    VxQtUiUtil::SetupTopMost(&window, false, true);
    QVERIFY(!window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    VxQtUiUtil::BringToFront(&window, true);
    VxQtUiUtil::BringToFront(&window, false);
    QVERIFY(window.isVisible());
  }
};

QTU_TEST_MAIN_WITH_X11_TRAP(tst_XUtilsOtherPlatforms)

#include "tst_x_utils_other_platforms.moc"
