#include <QApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <QtTest>
#include <cmath>

#include "support/virtual_screen.h"
#include "ui/dpi_helper.h"
#include "ui/ui_helper.h"

namespace {

// The logical-to-device-pixel translation the library applies to a global point: the screen's
// origin stays, the offset from it is scaled by the ratio and truncated toward zero.
QPoint ToDevicePixels(const QPoint& point, const QRect& screen, double ratio) {
  return QPoint(static_cast<int>(screen.left() + (point.x() - screen.left()) * ratio),
                static_cast<int>(screen.top() + (point.y() - screen.top()) * ratio));
}

}  // namespace

class tst_DpiUiHelper : public QObject {
  Q_OBJECT

 private slots:
  // The start-up scale is taken once per process, when first asked. Asking here, with a 1.5
  // primary screen, makes it the same for every function, run alone or with the others.
  void initTestCase() {
    QScreen* startup = test_support::AddVirtualScreen(QRect(0, 3000, 800, 600), 1.5, "startup");
    QVERIFY(startup);
    test_support::SetPrimaryVirtualScreen(startup);
    QCOMPARE(DPIHelper::GetStartUpDPI(), 1.5f);
    test_support::RemoveVirtualScreen(startup);
  }

  void startUpDpi_staysWhenThePrimaryChangesOrGoes() {
    QCOMPARE(DPIHelper::GetStartUpDPI(), 1.5f);
    QScreen* later = test_support::AddVirtualScreen(QRect(0, 5000, 400, 300), 2.0, "later");
    test_support::SetPrimaryVirtualScreen(later);
    QCOMPARE(QGuiApplication::primaryScreen(), later);
    QCOMPARE(DPIHelper::GetStartUpDPI(), 1.5f);
    test_support::RemoveVirtualScreen(later);
    QCOMPARE(DPIHelper::GetStartUpDPI(), 1.5f);
  }

  void widgetScreenDpi_isTheRatioOfTheWidgetsScreen() {
    QScreen* big = test_support::AddVirtualScreen(QRect(4000, 0, 1280, 1024), 2.0, "big");
    QWidget widget;
    widget.setGeometry(4100, 100, 200, 100);
    widget.winId();  // gives the widget its window, which can then be moved to a screen
    widget.windowHandle()->setScreen(big);
    QCOMPARE(widget.screen(), big);
    QCOMPARE(DPIHelper::GetWidgetScreenDPI(&widget), 2.0f);
    widget.windowHandle()->setScreen(QGuiApplication::primaryScreen());
    QCOMPARE(DPIHelper::GetWidgetScreenDPI(&widget),
             static_cast<float>(QGuiApplication::primaryScreen()->devicePixelRatio()));
    test_support::RemoveVirtualScreen(big);
  }

  void widgetScreenDpi_ofANullWidget_isTheStartUpScale() {
    QScreen* other = test_support::AddVirtualScreen(QRect(4000, 0, 100, 100), 3.0, "other");
    test_support::SetPrimaryVirtualScreen(other);
    QCOMPARE(DPIHelper::GetWidgetScreenDPI(nullptr), DPIHelper::GetStartUpDPI());
    QCOMPARE(DPIHelper::GetWidgetScreenDPI(nullptr), 1.5f);
    test_support::RemoveVirtualScreen(other);
  }

  void qPointFromNative_roundTripsTheDevicePixelTranslation_data() {
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<double>("ratio");
    QTest::newRow("right of the primary, 1.5") << QRect(1920, 0, 1280, 1024) << 1.5;
    QTest::newRow("negative origin, 1.25") << QRect(-3000, -2000, 1600, 900) << 1.25;
    QTest::newRow("2.0") << QRect(1920, 2000, 640, 480) << 2.0;
    QTest::newRow("1.1 (inexact in binary)") << QRect(1920, 3000, 1000, 300) << 1.1;
    QTest::newRow("1.0") << QRect(1920, 4000, 300, 200) << 1.0;
  }
  void qPointFromNative_roundTripsTheDevicePixelTranslation() {
    QFETCH(QRect, geometry);
    QFETCH(double, ratio);
    QScreen* screen = test_support::AddVirtualScreen(geometry, ratio);
    QVERIFY(screen);
    QCOMPARE(screen->devicePixelRatio(), ratio);
    // Every column along the top edge and every row along the left edge, plus the far corner.
    for (int x = geometry.left(); x <= geometry.right(); ++x) {
      const QPoint logical(x, geometry.top());
      const QPoint native = ToDevicePixels(logical, geometry, ratio);
      if (UIHelper::QPointFromNative(native) != logical) {
        QFAIL(qPrintable(QStringLiteral("x %1 -> %2 -> %3")
                             .arg(x)
                             .arg(native.x())
                             .arg(UIHelper::QPointFromNative(native).x())));
      }
    }
    for (int y = geometry.top(); y <= geometry.bottom(); ++y) {
      const QPoint logical(geometry.left() + 7, y);
      QCOMPARE(UIHelper::QPointFromNative(ToDevicePixels(logical, geometry, ratio)), logical);
    }
    const QPoint corner = geometry.bottomRight();
    QCOMPARE(UIHelper::QPointFromNative(ToDevicePixels(corner, geometry, ratio)), corner);
    test_support::RemoveVirtualScreen(screen);
  }

  void qPointFromNative_knownValues() {
    QScreen* screen = test_support::AddVirtualScreen(QRect(1920, 0, 1280, 1024), 1.5);
    // (1921, 1) translates to (1920 + 1.5, 0 + 1.5) truncated = (1921, 1), and back.
    QCOMPARE(ToDevicePixels(QPoint(1921, 1), screen->geometry(), 1.5), QPoint(1921, 1));
    QCOMPARE(UIHelper::QPointFromNative(QPoint(1921, 1)), QPoint(1921, 1));
    // (1922, 2) translates to (1923, 3).
    QCOMPARE(UIHelper::QPointFromNative(QPoint(1923, 3)), QPoint(1922, 2));
    // The last device pixel of the stretched screen (1920 + 1280 * 1.5 - 1) is still on it and
    // belongs to its last logical column.
    QCOMPARE(UIHelper::QPointFromNative(QPoint(3839, 1535)), QPoint(3199, 1023));
    // One further is on no screen and comes back unchanged.
    QCOMPARE(UIHelper::QPointFromNative(QPoint(3840, 10)), QPoint(3840, 10));
    test_support::RemoveVirtualScreen(screen);
    // With the screen gone, its points are on no screen either.
    QCOMPARE(UIHelper::QPointFromNative(QPoint(1923, 3)), QPoint(1923, 3));
  }

  void qPointFromNative_belowRatioOne_givesAPointThatTranslatesBack() {
    const QRect geometry(6000, 0, 400, 100);
    QScreen* screen = test_support::AddVirtualScreen(geometry, 0.75);
    QCOMPARE(screen->devicePixelRatio(), 0.75);
    for (int x = geometry.left(); x <= geometry.right(); ++x) {
      const QPoint native = ToDevicePixels(QPoint(x, 10), geometry, 0.75);
      const QPoint back = UIHelper::QPointFromNative(native);
      QVERIFY(geometry.contains(back));
      QCOMPARE(ToDevicePixels(back, geometry, 0.75), native);
    }
    test_support::RemoveVirtualScreen(screen);
  }

  void qPointFromNative_onTheUnscaledPrimary_isTheIdentity() {
    const QScreen* primary = QGuiApplication::primaryScreen();
    QVERIFY(primary);
    QCOMPARE(primary->devicePixelRatio(), 1.0);
    const QPoint inside = primary->geometry().center();
    QCOMPARE(UIHelper::QPointFromNative(inside), inside);
  }

  void qPointFromNative_offEveryScreen_isUnchanged() {
    QCOMPARE(UIHelper::QPointFromNative(QPoint(-20000, -20000)), QPoint(-20000, -20000));
    QCOMPARE(UIHelper::QPointFromNative(QPoint(INT_MAX, INT_MIN)), QPoint(INT_MAX, INT_MIN));
  }
};

QTEST_MAIN(tst_DpiUiHelper)
#include "tst_dpi_ui_helper.moc"
