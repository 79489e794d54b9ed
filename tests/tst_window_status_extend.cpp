#include <QWidget>
#include <QtTest>
#include <memory>

#include "qt_util/event_handler/window_status_extend.h"

namespace {

// Records which notifications reach an override, to show they are dispatched virtually.
class RecordingExtend : public WindowStatusExtend {
 public:
  QStringList calls;
  void WindowWillEnterFullScreen(const WindowInfo*) override { calls << "willEnter"; }
  void WindowWillLeaveFullScreen(const WindowInfo*) override { calls << "willLeave"; }
  void WindowDidLeaveFullScreen(const WindowInfo*) override { calls << "didLeave"; }
  void WindowDidEnterFullScreen(const WindowInfo*) override { calls << "didEnter"; }
  void WindowDidResize(const WindowInfo*) override { calls << "resize"; }
  void WindowDidBecomeKey(const WindowInfo*) override { calls << "becomeKey"; }
  void WindowDidResignKey(const WindowInfo*) override { calls << "resignKey"; }
};

void NotifyAll(WindowStatusExtend& extend, const WindowInfo* info) {
  extend.WindowWillEnterFullScreen(info);
  extend.WindowWillLeaveFullScreen(info);
  extend.WindowDidLeaveFullScreen(info);
  extend.WindowDidEnterFullScreen(info);
  extend.WindowDidResize(info);
  extend.WindowDidBecomeKey(info);
  extend.WindowDidResignKey(info);
}

}  // namespace

class tst_WindowStatusExtend : public QObject {
  Q_OBJECT

 private slots:
  void isFullScreen_falseEvenForFullScreenWindow() {
    QWidget window;
    auto extend = std::make_shared<WindowStatusExtend>();
    extend->SetObserverWidget(&window);
    window.showFullScreen();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(window.isFullScreen());
    QVERIFY(!extend->IsFullScreen());
  }

  void handlersAndCompletion_areNeverCalledNorKept() {
    QWidget window;
    auto extend = std::make_shared<WindowStatusExtend>();
    extend->SetObserverWidget(&window);
    int calls = 0;
    std::weak_ptr<int> watch;
    {
      auto token = std::make_shared<int>(0);
      watch = token;
      const auto handler = [&calls, token] { ++calls; };
      extend->SetNativeWindowWillEnterFullScreenHandler(handler);
      extend->SetNativeWindowWillLeaveFullScreenHandler(handler);
      extend->SetNativeWindowDidEnterFullScreenHandler(handler);
      extend->SetNativeWindowDidLeaveFullScreenHandler(handler);
      extend->SetNativeWindowDidResizeHandler(handler);
      extend->SetNativeWindowDidBecomeKeyHandler(handler);
      extend->SetNativeWindowDidResignKeyHandler(handler);
      extend->LeaveFullScreen(handler);
    }
    // Nothing held on to a copy of the handler.
    QVERIFY(watch.expired());

    window.showFullScreen();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.showNormal();
    window.resize(300, 200);
    window.activateWindow();
    const WindowInfo info;
    NotifyAll(*extend, &info);
    NotifyAll(*extend, nullptr);
    extend->LeaveFullScreen([&calls] { ++calls; });
    QCoreApplication::processEvents();
    QCOMPARE(calls, 0);
    QVERIFY(!extend->IsFullScreen());
  }

  void notifications_areVirtual() {
    RecordingExtend recording;
    WindowStatusExtend& base = recording;
    const WindowInfo info;
    NotifyAll(base, &info);
    QCOMPARE(recording.calls, (QStringList{"willEnter", "willLeave", "didLeave", "didEnter",
                                           "resize", "becomeKey", "resignKey"}));
  }

  void sharedFromThis_givesTheOwningPointer() {
    auto extend = std::make_shared<WindowStatusExtend>();
    QCOMPARE(extend->shared_from_this(), extend);
    std::shared_ptr<WindowStatusExtend> subclass = std::make_shared<RecordingExtend>();
    QCOMPARE(subclass->shared_from_this(), subclass);
  }
};

QTEST_MAIN(tst_WindowStatusExtend)
#include "tst_window_status_extend.moc"
