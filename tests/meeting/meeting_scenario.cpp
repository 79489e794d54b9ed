// The meeting window's scenario with what a client cannot do on its own: a virtual screen
// plugged in and out (the screen observer's reports and the header that follows them), and on
// X11 a second client on the root window that sees the keep-above request of the mini window.
// The virtual screen enters through Qt's window-system interface, so it plugs in on every
// platform, Wayland included; the root-window watcher is X11's alone.
// Every other step and observation is the program's own (examples/meeting_window). With
// --repeat N each round's line of figures also carries the process's live QObjects as Qt's
// object hooks count them.
#include <QtCore/private/qhooks_p.h>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QWindow>
#include <atomic>
#include <memory>

#include "meeting_app.h"
#include "meeting_window.h"
#include "scenario.h"
#include "support/virtual_screen.h"
#include "support/x11_watch.h"

namespace {

// Every QObject of the process, of any thread, with or without a parent: the count the program
// cannot take on its own, since the hooks are Qt's private API. The hooks of another tool
// attached to the process keep being called.
std::atomic<long> g_live_qobjects{0};
QHooks::AddQObjectCallback g_next_add = nullptr;
QHooks::RemoveQObjectCallback g_next_remove = nullptr;

void QObjectAdded(QObject* object) {
  ++g_live_qobjects;
  if (g_next_add) g_next_add(object);
}

void QObjectRemoved(QObject* object) {
  --g_live_qobjects;
  if (g_next_remove) g_next_remove(object);
}

// Before the application object, so that the count starts at zero with the first QObject.
void CountQObjects() {
  g_next_add = reinterpret_cast<QHooks::AddQObjectCallback>(qtHookData[QHooks::AddQObject]);
  g_next_remove =
      reinterpret_cast<QHooks::RemoveQObjectCallback>(qtHookData[QHooks::RemoveQObject]);
  qtHookData[QHooks::AddQObject] = reinterpret_cast<quintptr>(&QObjectAdded);
  qtHookData[QHooks::RemoveQObject] = reinterpret_cast<quintptr>(&QObjectRemoved);
}

class HarnessScenario : public meeting::Scenario {
 public:
  using Scenario::Scenario;

 protected:
  void Screens() override {
    Scenario::Screens();
    meeting::MeetingWindow& window = Window();
    const int reports = window.ScreenReports().size();
    QScreen* primary = QGuiApplication::primaryScreen();
    const QRect right(primary->geometry().right() + 1, 0, 1280, 800);
    QScreen* added = test_support::AddVirtualScreen(right, 1.0, QStringLiteral("meeting-right"));
    QCoreApplication::processEvents();
    Say(QStringLiteral("  plugged in %1 at %2; header says \"%3\"")
            .arg(added->name(), meeting::RectText(right), window.ScreensLabel()->text()));
    const QRect work_area = right.adjusted(0, 0, 0, -48);
    test_support::SetVirtualScreenAvailableGeometry(added, work_area);
    QCoreApplication::processEvents();
    test_support::RemoveVirtualScreen(added);
    QCoreApplication::processEvents();
    const QList<meeting::ScreenReport> seen = window.ScreenReports().mid(reports);
    for (const meeting::ScreenReport& report : seen) {
      Say(QStringLiteral("  observer: %1 %2 %3")
              .arg(report.kind == meeting::ScreenReport::kListChanged      ? "screen list changed"
                   : report.kind == meeting::ScreenReport::kPrimaryChanged ? "primary screen is"
                                                                           : "work area of")
              .arg(report.screen,
                   report.work_area.isNull() ? QString() : meeting::RectText(report.work_area)));
    }
    Expect(seen.size() == 3 && seen.at(0).kind == meeting::ScreenReport::kListChanged &&
               seen.at(1).kind == meeting::ScreenReport::kWorkAreaChanged &&
               seen.at(1).screen == QLatin1String("meeting-right") &&
               seen.at(1).work_area == work_area &&
               seen.at(2).kind == meeting::ScreenReport::kListChanged,
           "the observer reported the new screen, its work area, and its removal");
    Expect(
        window.ScreensLabel()->text() ==
            meeting::MeetingWindow::tr("%n screen(s)", nullptr, QGuiApplication::screens().size()),
        QStringLiteral("the header follows: \"%1\"").arg(window.ScreensLabel()->text()));
  }

  void BeforeMinimise() override {
    // On X11 a second client watches the root window for the stay-on-top request.
    watcher_.reset();
    if (QGuiApplication::platformName() == QLatin1String("xcb")) {
      watcher_ = std::make_unique<test_support::RootWatcher>();
    } else if (QGuiApplication::platformName() == QLatin1String("wayland")) {
      Say("  no watcher of the keep-above request: Wayland has no root window a second client "
          "could watch, and no keep-above for a client to ask for");
    }
  }

  void CheckMiniWindow(QWidget* mini) override {
    if (!watcher_ || !watcher_->IsValid()) return;
    watcher_->Sync();
    bool asked = false;
    for (const auto& message : watcher_->TakeStateMessages()) {
      asked |= message.window == mini->windowHandle()->winId() && message.action == 1 &&
               message.first == watcher_->Above();
    }
    Expect(asked, "the X server got the request to keep the mini window above (_NET_WM_STATE)");
  }

 private:
  std::unique_ptr<test_support::RootWatcher> watcher_;
};

}  // namespace

int main(int argc, char** argv) {
  CountQObjects();
  meeting::Harness harness;
  harness.make_scenario = [](meeting::MeetingWindow& window, const QString& out_dir,
                             meeting::LogRecorder& log,
                             int round) -> std::unique_ptr<meeting::Scenario> {
    return std::make_unique<HarnessScenario>(window, out_dir, log, round);
  };
  harness.more_figures = [] { return QStringLiteral(" qobjects=%1").arg(g_live_qobjects.load()); };
  return meeting::RunMeetingApp(argc, argv, harness);
}
