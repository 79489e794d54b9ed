// The monitor helper asked for before the QApplication exists: its own process, because the
// instance must be created before the application object that QTEST_MAIN would make first.
#include <QApplication>
#include <QWidget>
#include <QtTest>
#include <memory>

#include "base/singleton/scope_singleton.h"
#include "qt_util/qt_ui_monitor_helper.h"
#include "support/log_capture.h"

namespace {

QTUIMonitorHelper* g_early = nullptr;
std::unique_ptr<LogCapture> g_early_log;

}  // namespace

class tst_QtUiMonitorHelperEarly : public QObject {
  Q_OBJECT

 private slots:
  void earlyInstance_logsAndIsKept();
  void earlyInstance_dropsDestroyedWidgetsOnceOneIsRegistered();
};

void tst_QtUiMonitorHelperEarly::earlyInstance_logsAndIsKept() {
  QVERIFY(g_early);
  QCOMPARE(QTUIMonitorHelper::SharedInstance(), g_early);
  QCOMPARE(g_early_log->Count(1,
                              "[qt ui monitor helper] created before the application object, "
                              "filtering from the first registration"),
           1);
}

void tst_QtUiMonitorHelperEarly::earlyInstance_dropsDestroyedWidgetsOnceOneIsRegistered() {
  auto panel = std::make_unique<QWidget>();
  auto web = std::make_unique<QWidget>();
  QVERIFY(g_early->AddMonitorRectWidget(panel.get()));
  QVERIFY(g_early->AddMonitorDontCreateNativeWidget(web.get(), QStringLiteral("web")));
  panel.reset();
  web.reset();
  // Without the filter the entries would dangle and the hit test would read freed widgets.
  QVERIFY(g_early->MonitorRectWidgets().isEmpty());
  QVERIFY(g_early->DontCreateNativeWidgets().isEmpty());
  QVERIFY(!g_early->IsInUIRectInMeeting(QPoint(1, 1)));
}

int main(int argc, char** argv) {
  g_early_log = std::make_unique<LogCapture>(6);
  g_early = QTUIMonitorHelper::SharedInstance();
  int result = 0;
  {
    QApplication app(argc, argv);
    tst_QtUiMonitorHelperEarly test;
    result = QTest::qExec(&test, argc, argv);
    base::EndSingletonScope();
  }
  g_early_log.reset();
  return result;
}

#include "tst_qt_ui_monitor_helper_early.moc"
