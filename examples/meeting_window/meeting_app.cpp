#include "meeting_app.h"

#include <malloc.h>
#include <unistd.h>
#include <QAccessible>
#include <QApplication>
#include <QCommandLineParser>
#include <QFile>
#include <QWidget>
#include <cstdio>

#include "base/singleton/scope_singleton.h"
#include "json_theme_manager.h"
#include "meeting_window.h"
#include "qt_util/accessibility/list_widget_accessible.h"
#include "qt_util/custom_event_util.h"
#include "qt_util/event_handler/event_hooker.h"
#include "qt_util/event_handler/event_observer.h"
#include "qt_util/qt_log_hooker.h"
#include "qt_util/qt_ui_custom_theme_helper.h"
#include "qt_util/qt_ui_monitor_helper.h"
#include "qt_util/ui_util.h"
#include "scenario.h"

#ifdef __SANITIZE_ADDRESS__
// From the sanitizer runtime's public interface (sanitizer/allocator_interface.h, which not
// every compiler installs).
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace meeting {

namespace {

// What a client does once its QApplication exists. Returns the injected theme engine (owned by
// the theme helper), or null when its theme file cannot be read.
example_theme::JsonThemeManager* StartLibrary() {
  CustomEventUtils::InitCustomEventHandler();
  EventHooker::InitGlobalEventHooker();
  qInstallMessageHandler(&QtLogHooker::HandleGlobalMessage);
  QAccessible::installFactory(QTAccessibleUtils::ListWidgetAccessibleFactory);
  VxQtUiUtil::InitUIUtil();

  example_theme::LoadResources();
  QString error;
  auto manager = example_theme::JsonThemeManager::FromFile(
      QStringLiteral(":/example_theme/theme.json"), &error);
  if (!manager) {
    std::fprintf(stderr, "qt_util_meeting: %s\n", qUtf8Printable(error));
    return nullptr;
  }
  example_theme::JsonThemeManager* engine = manager.get();
  QTUICustomThemeHelper::SharedInstance()->SetThemeManager(std::move(manager));
  return engine;
}

void ConnectThemeButton(MeetingWindow& window, example_theme::JsonThemeManager* engine) {
  QObject::connect(&window, &MeetingWindow::ThemeSwitchRequested, &window, [engine](bool dark) {
    engine->SetTheme(dark ? QStringLiteral("dark") : QStringLiteral("light"));
  });
}

void JoinDemoMeeting(MeetingWindow& window) {
  window.Join(QStringLiteral("Weekly design review"), QStringLiteral("Ada Lovelace"),
              {{QStringLiteral("grace"), QStringLiteral("Grace Hopper")},
               {QStringLiteral("alan"), QStringLiteral("Alan Turing")},
               {QStringLiteral("max"), QStringLiteral("Maximiliana Fernández-Oyelaran")}});
  window.ReceiveChat(QStringLiteral("Grace Hopper"),
                     QStringLiteral("<b>Welcome!</b> Agenda:<ul><li>budget review</li>"
                                    "<li>road map</li></ul>"));
}

// Resident memory of this process in KiB, from /proc (0 where there is none).
long ResidentKiB() {
  QFile statm(QStringLiteral("/proc/self/statm"));
  if (!statm.open(QIODevice::ReadOnly)) return 0;
  const QList<QByteArray> fields = statm.readAll().split(' ');
  if (fields.size() < 2) return 0;
  return fields.at(1).toLong() * (sysconf(_SC_PAGESIZE) / 1024);
}

// Heap memory handed out and not yet given back, in KiB. It grows with the first leaked
// allocation, where the resident memory stays flat until the allocator's pools of freed memory
// (or, with AddressSanitizer, its quarantine) are used up.
long HeapInUseKiB() {
#ifdef __SANITIZE_ADDRESS__
  // The sanitizer's own allocator, of which glibc's statistics know nothing.
  return static_cast<long>(__sanitizer_get_current_allocated_bytes() / 1024);
#else
  const struct mallinfo2 info = mallinfo2();
  return static_cast<long>((info.uordblks + info.hblkhd) / 1024);
#endif
}

// Objects reachable from the application object and the top-level widgets: what a client can
// count without Qt's private hooks. An object leaked without a parent escapes it and shows in
// the heap figure instead (the test tree's run counts every QObject through those hooks).
int LiveObjects() {
  int count = 1 + qApp->findChildren<QObject*>().size();
  for (QWidget* top : QApplication::topLevelWidgets()) {
    if (top->parent()) continue;
    count += 1 + top->findChildren<QObject*>().size();
  }
  return count;
}

// What the soak test compares between rounds.
struct Figures {
  int objects = 0;
  size_t pending_deletes = 0;
  size_t observers = 0;
  int monitor_widgets = 0;
};

Figures TakeFigures() {
  QTUIMonitorHelper* monitor = QTUIMonitorHelper::SharedInstance();
  return {LiveObjects(), CustomEventUtils::PendingDeleteListInstance()->size(),
          QtEventObserver::ObserverCount(),
          static_cast<int>(monitor->MonitorRectWidgets().size() +
                           monitor->MonitorRectWebWidgets().size())};
}

// One line per round, read by the soak test (a CMake script, so no semicolons): keep its
// words. First the figures once the round's window is gone (a harness's own last), then those
// of the meeting itself (taken before the window went).
void PrintRoundFigures(int round, int mismatches, const Figures& in_meeting, const QString& more) {
  const Figures after = TakeFigures();
  std::printf(
      "round %d: rss_kib=%ld heap_kib=%ld objects=%d pending_deletes=%zu observers=%zu "
      "monitor_widgets=%d mismatches=%d%s, in the meeting: objects=%d observers=%zu "
      "monitor_widgets=%d\n",
      round, ResidentKiB(), HeapInUseKiB(), after.objects, after.pending_deletes, after.observers,
      after.monitor_widgets, mismatches, qUtf8Printable(more), in_meeting.objects,
      in_meeting.observers, in_meeting.monitor_widgets);
  std::fflush(stdout);
}

// How the scripted run is played: where its screenshots go, how many rounds, and whether the
// window system leaves every window inactive.
struct ScriptOptions {
  QString out_dir;
  int rounds = 1;
  bool seatless = false;
};

int RunScript(example_theme::JsonThemeManager* engine, LogRecorder& log,
              const ScriptOptions& options, const Harness& harness) {
  const QString& out_dir = options.out_dir;
  const int rounds = options.rounds;
  int failed_rounds = 0;
  for (int round = 1; round <= rounds; ++round) {
    // Every round starts as the first did: light theme, a fresh window, an empty record.
    engine->SetTheme(QStringLiteral("light"));
    if (round > 1) log.Clear();
    int mismatches = 0;
    Figures in_meeting;
    {
      MeetingWindow window;
      ConnectThemeButton(window, engine);
      std::unique_ptr<Scenario> scenario =
          harness.make_scenario ? harness.make_scenario(window, out_dir, log, round)
                                : std::make_unique<Scenario>(window, out_dir, log, round);
      scenario->SetSeatless(options.seatless);
      mismatches = scenario->Run();
      in_meeting = TakeFigures();
    }
    // What the window asked to delete later goes now, before the figures are taken.
    WaitUntil([] { return CustomEventUtils::PendingDeleteListInstance()->empty(); });
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    failed_rounds += mismatches != 0;
    if (rounds > 1) {
      PrintRoundFigures(round, mismatches, in_meeting,
                        harness.more_figures ? harness.more_figures() : QString());
    }
  }
  return failed_rounds == 0 ? 0 : 1;
}

int Run(QApplication& app, bool script, const ScriptOptions& options, const Harness& harness) {
  // In a scenario the log is recorded from the start, so that the library's start-up lines
  // are checked too; level 6 keeps the hooker's click records.
  std::unique_ptr<LogRecorder> log;
  if (script) log = std::make_unique<LogRecorder>(base::log::kLevelInfo);

  example_theme::JsonThemeManager* engine = StartLibrary();
  if (!engine) return 2;
  if (script) return RunScript(engine, *log, options, harness);

  MeetingWindow window;
  ConnectThemeButton(window, engine);
  JoinDemoMeeting(window);
  QObject::connect(&window, &MeetingWindow::LeaveRequested, &app, &QApplication::quit);
  window.show();
  return app.exec();
}

}  // namespace

int RunMeetingApp(int argc, char** argv, const Harness& harness) {
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("qt_util_meeting"));
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("A meeting window built from qt_util."));
  parser.addHelpOption();
  const QCommandLineOption script_option(
      QStringLiteral("script"), QStringLiteral("Run the fixed scenario headless and exit."));
  const QCommandLineOption out_option(
      QStringLiteral("out"), QStringLiteral("Directory for the scenario's screenshots."),
      QStringLiteral("dir"), QStringLiteral("gallery-output/meeting"));
  const QCommandLineOption repeat_option(
      QStringLiteral("repeat"),
      QStringLiteral("With --script: play the scenario this many times, each round with a fresh "
                     "window, and print the process's figures after each (screenshots are "
                     "saved in the first round only)."),
      QStringLiteral("rounds"), QStringLiteral("1"));
  const QCommandLineOption seatless_option(
      QStringLiteral("no-seat"),
      QStringLiteral("With --script on Wayland: the compositor has no seat (no keyboard), so it "
                     "activates no window; expect every window to stay inactive."));
  parser.addOption(script_option);
  parser.addOption(out_option);
  parser.addOption(repeat_option);
  parser.addOption(seatless_option);
  parser.process(app);
  bool rounds_ok = false;
  const int rounds = parser.value(repeat_option).toInt(&rounds_ok);
  if (!rounds_ok || rounds < 1) {
    std::fprintf(stderr, "qt_util_meeting: --repeat wants a whole number of rounds, 1 or more\n");
    return 2;
  }

  const ScriptOptions options{parser.value(out_option), rounds, parser.isSet(seatless_option)};
  const int status = Run(app, parser.isSet(script_option), options, harness);
  // The helper singletons (theme, monitor) go before the application, as a client ends them.
  base::EndSingletonScope();
  return status;
}

}  // namespace meeting
