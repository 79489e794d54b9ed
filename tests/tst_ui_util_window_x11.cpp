// Window behaviour that only a real X server can show (xvfb, label x11): the input focus that
// ShowWindow gives, and the stay-on-top request of SetupTopMost as a second X client sees it.
// There is no window manager, so requests reach the root window and nobody acts on them.
#include <QApplication>
#include <QWidget>
#include <QWindow>
#include <QtTest>

#include "qt_util/ui_util.h"
#include "support/x11_watch.h"
#include "x_utils/x_utils.h"

using test_support::InputFocus;
using test_support::RootWatcher;

namespace {

// The X window that is on screen for `widget`; the widget's own id can be stale after Qt
// replaced the native window.
xcb_window_t LiveId(const QWidget& widget) {
  return static_cast<xcb_window_t>(widget.windowHandle()->winId());
}

// Shows a window at `geometry` and waits until the server has mapped it.
bool ShowAndWait(QWidget& widget, const QRect& geometry) {
  widget.setGeometry(geometry);
  widget.show();
  return QTest::qWaitForWindowExposed(&widget);
}

}  // namespace

class tst_UiUtilWindowX11 : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();

  void showWindow_activate_givesTheXInputFocus();
  void setupTopMost_withoutShow_sendsTheRequestForAShownWindow();
  void setupTopMost_ofAChild_sendsTheRequestForItsWindow();
  void setupTopMost_withoutShow_hidesAWindowWhoseFlagsChange();
  void setupTopMost_withShow_addressesTheNewWindowAndShowWindowFocusesIt();
};

void tst_UiUtilWindowX11::initTestCase() {
  QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
}

void tst_UiUtilWindowX11::showWindow_activate_givesTheXInputFocus() {
  QWidget first;
  QWidget second;
  QVERIFY(ShowAndWait(first, QRect(50, 50, 200, 100)));
  QVERIFY(ShowAndWait(second, QRect(300, 50, 200, 100)));
  x_utils::SetWindowInputFocus(&second);
  QCOMPARE(InputFocus(), LiveId(second));

  VxQtUiUtil::ShowWindow(&first, true);
  QTRY_COMPARE(InputFocus(), LiveId(first));
  VxQtUiUtil::ShowWindow(&second, true);
  QTRY_COMPARE(InputFocus(), LiveId(second));
  // Without activation the focus stays where it is.
  VxQtUiUtil::ShowWindow(&first, false);
  QCOMPARE(InputFocus(), LiveId(second));
}

void tst_UiUtilWindowX11::setupTopMost_withoutShow_sendsTheRequestForAShownWindow() {
  RootWatcher watcher;
  QVERIFY(watcher.IsValid());
  QWidget window;
  window.setWindowFlag(Qt::WindowStaysOnTopHint, true);
  QVERIFY(ShowAndWait(window, QRect(50, 200, 200, 100)));
  watcher.Sync();
  watcher.TakeStateMessages();  // whatever Qt sent while mapping

  // The hint is already set, so the flags do not change and the window stays as it is.
  VxQtUiUtil::SetupTopMost(&window, true, false);
  watcher.Sync();
  const auto messages = watcher.TakeStateMessages();
  QCOMPARE(messages.size(), 1);
  QCOMPARE(messages[0].window, LiveId(window));
  QCOMPARE(messages[0].action, 1u);  // add
  QCOMPARE(messages[0].first, watcher.Above());
  QCOMPARE(messages[0].source, 1u);
  QVERIFY(window.isVisible());
}

void tst_UiUtilWindowX11::setupTopMost_ofAChild_sendsTheRequestForItsWindow() {
  RootWatcher watcher;
  QVERIFY(watcher.IsValid());
  QWidget window;
  QWidget* child = new QWidget(&window);
  QVERIFY(ShowAndWait(window, QRect(50, 350, 200, 100)));
  watcher.Sync();
  watcher.TakeStateMessages();

  VxQtUiUtil::SetupTopMost(child, true, false);
  watcher.Sync();
  auto messages = watcher.TakeStateMessages();
  QCOMPARE(messages.size(), 1);
  QCOMPARE(messages[0].window, LiveId(window));
  QCOMPARE(messages[0].action, 1u);

  VxQtUiUtil::SetupTopMost(child, false, false);
  watcher.Sync();
  messages = watcher.TakeStateMessages();
  QCOMPARE(messages.size(), 1);
  QCOMPARE(messages[0].window, LiveId(window));
  QCOMPARE(messages[0].action, 0u);  // remove
}

void tst_UiUtilWindowX11::setupTopMost_withoutShow_hidesAWindowWhoseFlagsChange() {
  // Changing a shown window's flags makes Qt hide it and replace its native window; without
  // `show` it stays hidden, and the request becomes the hint Qt applies when it maps again.
  RootWatcher watcher;
  QVERIFY(watcher.IsValid());
  QWidget window;
  QVERIFY(ShowAndWait(window, QRect(50, 500, 200, 100)));
  watcher.Sync();
  watcher.TakeStateMessages();

  VxQtUiUtil::SetupTopMost(&window, true, false);
  QVERIFY(!window.isVisible());
  QVERIFY(window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  watcher.Sync();
  QCOMPARE(watcher.TakeStateMessages().size(), 0);
}

void tst_UiUtilWindowX11::setupTopMost_withShow_addressesTheNewWindowAndShowWindowFocusesIt() {
  RootWatcher watcher;
  QVERIFY(watcher.IsValid());
  QWidget other;
  QWidget window;
  QVERIFY(ShowAndWait(other, QRect(300, 650, 200, 100)));
  QVERIFY(ShowAndWait(window, QRect(50, 650, 200, 100)));
  const xcb_window_t first_id = LiveId(window);
  watcher.Sync();
  watcher.TakeStateMessages();

  VxQtUiUtil::SetupTopMost(&window, true, true);
  const xcb_window_t live_id = LiveId(window);
  QVERIFY(live_id != first_id);  // Qt replaced the native window
  watcher.Sync();
  const auto messages = watcher.TakeStateMessages();
  QCOMPARE(messages.size(), 1);
  QCOMPARE(messages[0].window, live_id);
  QCOMPARE(messages[0].action, 1u);
  QCOMPARE(messages[0].first, watcher.Above());

  QVERIFY(QTest::qWaitForWindowExposed(&window));
  x_utils::SetWindowInputFocus(&other);
  QCOMPARE(InputFocus(), LiveId(other));
  VxQtUiUtil::ShowWindow(&window, true);
  QTRY_COMPARE(InputFocus(), live_id);
}

QTEST_MAIN(tst_UiUtilWindowX11)
#include "tst_ui_util_window_x11.moc"
