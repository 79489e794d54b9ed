// The window-system calls on a platform other than X11: they must change nothing.
#include <QApplication>
#include <QWidget>
#include <QWindow>
#include <QtTest>

#include "x_utils/x_utils.h"

class tst_XUtilsOffscreen : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase() { QCOMPARE(QGuiApplication::platformName(), QStringLiteral("offscreen")); }

  void setStayOnTop_isAHarmlessNoOp() {
    QWidget shown;
    shown.show();
    QVERIFY(QTest::qWaitForWindowExposed(&shown));
    const Qt::WindowFlags flags = shown.windowFlags();
    x_utils::SetStayOnTop(&shown, true);
    QCOMPARE(shown.windowFlags(), flags);
    QCOMPARE(shown.windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint), false);
    QVERIFY(shown.isVisible());

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
};

QTEST_MAIN(tst_XUtilsOffscreen)
#include "tst_x_utils_offscreen.moc"
